#pragma once

#include "zancommon/bearing.h"
#include "zancommon/driverrecords.h"
#include "zancommon_export.h"

#include <QString>

namespace KvZANCommon {

/// What a driver calls back with: measurement data, errors and requests.
///
/// The operations are called on whatever thread the driver delivers on. Arrays, references and pointers are
/// valid during the call only: what is to be kept must be copied. Drivers are built apart from the
/// application, so the order of the operations is part of the interface. The driver does not own its callback
/// and never destroys it, hence the protected destructor.
class ZANCOMMON_EXPORT IDriverCallback {
public:
    /// A block of bearings: index of the frequency range, time stamp, first channel, number of bearings, the
    /// bearings, the state of the device during the block.
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
    /// Degrees, north and east positive.
    virtual void fillGPSData(double latitude, double longitude, unsigned long long time, bool valid,
                             int satelliteCount, int quality) = 0;
    virtual void reportError(ErrorStruct& error) = 0;
    virtual void InitSimulation(INITStruct& setup, unsigned rangeCount, ChannelRangeStruct* ranges) = 0;
    /// Hz.
    virtual void setSearchFrequency(double frequency) = 0;
    /// Fills in the mode that the application is in.
    virtual void getOperateMode(EMode& mode) = 0;
    /// Result of a built-in test.
    virtual void ReportBITResult(ErrorStruct& result) = 0;
    /// One line for the command log.
    virtual void SetCommandLog(QString& line) = 0;
    /// Address of the device that the driver is to connect to.
    virtual QString GetDevAddress() = 0;
    virtual void CloseDataLink() = 0;
    virtual void SetEndOfScan(bool end) = 0;
    virtual void fillSyncTimestamp(long long time) = 0;

protected:
    ~IDriverCallback() = default;
};

} // namespace KvZANCommon
