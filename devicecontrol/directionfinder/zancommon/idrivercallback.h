#pragma once

#include "zancommon/bearing.h"
#include "zancommon/driverrecords.h"
#include "zancommon_export.h"

#include <QString>

namespace KvZANCommon {

/// What a driver calls: operations for measurement data, errors and requests.
///
/// The operations are called on any thread of the driver, maybe on several at a time, or from within an
/// operation that the application is calling; the driver waits until they return. Arrays, references and
/// pointers are valid only during the call: copy what is to be kept. Drivers are built separately from the
/// application, so the order of the operations is part of the interface. The driver does not own its callback
/// and never destroys it, hence the protected destructor.
///
/// Times are milliseconds since 1970-01-01 00:00:00 UTC; the units of records are stated there. Where no unit
/// is stated, driver and application agree on one.
class ZANCOMMON_EXPORT IDriverCallback {
public:
    /// A block of bearings: index of the frequency range, time stamp, first channel, number of bearings, the
    /// bearings, the state of the device during the block.
    virtual void fillTDMABuffer(long range, unsigned long long& time, unsigned firstChannel, unsigned count,
                                Bearing* bearings, StatusStruct& status) = 0;
    /// As `fillTDMABuffer`, in scan mode.
    virtual void fillScanBuffer(long range, unsigned long long& time, unsigned firstChannel, unsigned count,
                                Bearing* bearings, StatusStruct& status) = 0;
    /// One result in fixed frequency mode, and whether it is the mean of several.
    virtual void fillFFMBuffer(const FFMData& data, StatusStruct& status, bool averaged) = 0;
    /// One super-resolution result.
    virtual void fillFFMSRBuffer(SuperResolutionStruct& data, StatusStruct& status) = 0;
    virtual void fillSpectrumBuffer(const short* values, int count) = 0;
    virtual void fillSRSpectrumBuffer(short* values, int count, unsigned long long& time) = 0;
    virtual void fillTestValuesBuffer(double* values, unsigned short count) = 0;
    virtual void fillAudioBuffer(void* samples, unsigned byteCount) = 0;
    virtual void fillAudioBufferTime(void* times, unsigned byteCount) = 0;
    virtual void fillAudioFormat(void* format, unsigned byteCount) = 0;
    virtual void fillAudioLevel(double level) = 0;
    /// A position fix: degrees, north and east positive. When it is not valid, the other arguments hold no
    /// fix.
    virtual void fillGPSData(double latitude, double longitude, unsigned long long time, bool valid,
                             int satelliteCount, int quality) = 0;
    /// An error of the driver or its device, in any operation.
    virtual void reportError(ErrorStruct& error) = 0;
    /// \param ranges `rangeCount` of them
    virtual void InitSimulation(INITStruct& setup, unsigned rangeCount, ChannelRangeStruct* ranges) = 0;
    /// Hz.
    virtual void setSearchFrequency(double frequency) = 0;
    /// Fills in the current mode of the application.
    virtual void getOperateMode(EMode& mode) = 0;
    /// Result of a built-in test.
    virtual void ReportBITResult(ErrorStruct& result) = 0;
    /// One line for the command log.
    virtual void SetCommandLog(QString& line) = 0;
    /// Address of the device to which the driver is to connect.
    virtual QString GetDevAddress() = 0;
    /// The driver will deliver nothing more.
    virtual void CloseDataLink() = 0;
    /// Whether a scan has completed all its ranges.
    virtual void SetEndOfScan(bool end) = 0;
    virtual void fillSyncTimestamp(long long time) = 0;

protected:
    ~IDriverCallback() = default;
};

} // namespace KvZANCommon
