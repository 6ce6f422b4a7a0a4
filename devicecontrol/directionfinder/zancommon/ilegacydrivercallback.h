#pragma once

#include "zancommon/bearing.h"
#include "zancommon/driverrecords.h"
#include "zancommon_export.h"

#include <QString>

namespace KvZANCommon {

/// What a legacy driver calls. The operations, their order, units, threads and lifetimes are those of
/// IDriverCallback; only the type differs, so that a driver of one kind cannot get the callback of the other.
/// Never destroyed by the driver, hence the protected destructor.
class ZANCOMMON_EXPORT ILegacyDriverCallback {
public:
    virtual void fillTDMABuffer(long range, unsigned long long& time, unsigned firstChannel, unsigned count,
                                Bearing* bearings, StatusStruct& status) = 0;
    virtual void fillScanBuffer(long range, unsigned long long& time, unsigned firstChannel, unsigned count,
                                Bearing* bearings, StatusStruct& status) = 0;
    virtual void fillFFMBuffer(const FFMData& data, StatusStruct& status, bool averaged) = 0;
    virtual void fillFFMSRBuffer(SuperResolutionStruct& data, StatusStruct& status) = 0;
    virtual void fillSpectrumBuffer(const short* values, int count) = 0;
    virtual void fillSRSpectrumBuffer(short* values, int count, unsigned long long& time) = 0;
    virtual void fillTestValuesBuffer(double* values, unsigned short count) = 0;
    virtual void fillAudioBuffer(void* samples, unsigned byteCount) = 0;
    virtual void fillAudioBufferTime(void* times, unsigned byteCount) = 0;
    virtual void fillAudioFormat(void* format, unsigned byteCount) = 0;
    virtual void fillAudioLevel(double level) = 0;
    virtual void fillGPSData(double latitude, double longitude, unsigned long long time, bool valid,
                             int satelliteCount, int quality) = 0;
    virtual void reportError(ErrorStruct& error) = 0;
    virtual void InitSimulation(INITStruct& setup, unsigned rangeCount, ChannelRangeStruct* ranges) = 0;
    virtual void setSearchFrequency(double frequency) = 0;
    virtual void getOperateMode(EMode& mode) = 0;
    virtual void ReportBITResult(ErrorStruct& result) = 0;
    virtual void SetCommandLog(QString& line) = 0;
    virtual QString GetDevAddress() = 0;
    virtual void CloseDataLink() = 0;
    virtual void SetEndOfScan(bool end) = 0;
    virtual void fillSyncTimestamp(long long time) = 0;

protected:
    ~ILegacyDriverCallback() = default;
};

} // namespace KvZANCommon
