#pragma once

#include "zancommon/idrivercallback.h"

namespace KvZANCommon {

/// A callback that uses nothing: what a driver delivers is dropped, there is no device address, and the
/// application is in standby. Derive a receiver from it and override what it takes.
class NullDriverCallback : public IDriverCallback {
public:
    void fillTDMABuffer(long, unsigned long long&, unsigned, unsigned, Bearing*, StatusStruct&) override {}
    void fillScanBuffer(long, unsigned long long&, unsigned, unsigned, Bearing*, StatusStruct&) override {}
    void fillFFMBuffer(const FFMData&, StatusStruct&, bool) override {}
    void fillFFMSRBuffer(SuperResolutionStruct&, StatusStruct&) override {}
    void fillSpectrumBuffer(const short*, int) override {}
    void fillSRSpectrumBuffer(short*, int, unsigned long long&) override {}
    void fillTestValuesBuffer(double*, unsigned short) override {}
    void fillAudioBuffer(void*, unsigned) override {}
    void fillAudioBufferTime(void*, unsigned) override {}
    void fillAudioFormat(void*, unsigned) override {}
    void fillAudioLevel(double) override {}
    void fillGPSData(double, double, unsigned long long, bool, int, int) override {}
    void reportError(ErrorStruct&) override {}
    void InitSimulation(INITStruct&, unsigned, ChannelRangeStruct*) override {}
    void setSearchFrequency(double) override {}
    void getOperateMode(EMode& mode) override { mode = EMODE_STANDBY; }
    void ReportBITResult(ErrorStruct&) override {}
    void SetCommandLog(QString&) override {}
    QString GetDevAddress() override { return {}; }
    void CloseDataLink() override {}
    void SetEndOfScan(bool) override {}
    void fillSyncTimestamp(long long) override {}

protected:
    ~NullDriverCallback() = default; // a driver never destroys its callback
};

} // namespace KvZANCommon
