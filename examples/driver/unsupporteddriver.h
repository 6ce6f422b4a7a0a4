#pragma once

#include <zancommon/ilegacydriver.h>

/// A driver of the older kind that can do nothing. A real one derives from it, and overrides what its device
/// can do.
class UnsupportedDriver : public KvZANCommon::ILegacyDriver {
public:
    static constexpr long OK = 0;
    static constexpr long FAILED = -1;
    static constexpr long NOT_SUPPORTED = -2;

    // clang-format off
    int Initialize(std::string&, bool) override { return FAILED; }
    void GetGPSBuffer(KvZANCommon::GPSStruct& buffer) override { buffer = {}; }
    QString GetLastError() override { return {}; }
    void ClearLastError() override {}
    long SetMode(EMode) override { return NOT_SUPPORTED; }
    long Reset() override { return NOT_SUPPORTED; }
    long Calibrate(unsigned long) override { return NOT_SUPPORTED; }
    long BIT(long&, bool, bool) override { return NOT_SUPPORTED; }
    long SetTest(QString) override { return NOT_SUPPORTED; }
    long SetRfAttenuator(unsigned long, long) override { return NOT_SUPPORTED; }
    long SetFrequency(double) override { return NOT_SUPPORTED; }
    long SetGainControl(KvZANCommon::GainControlStruct) override { return NOT_SUPPORTED; }
    long SetFilterSettings(KvZANCommon::FilterSettingsStruct) override { return NOT_SUPPORTED; }
    long SetFilterSettings(KvZANCommon::FreqRangeDefinition*) override { return NOT_SUPPORTED; }
    long SetAverageTime(double) override { return NOT_SUPPORTED; }
    long ResetAverage() override { return NOT_SUPPORTED; }
    long AddFreqRange(KvZANCommon::FreqRangeDefinition*) override { return NOT_SUPPORTED; }
    long SetGPSTimeUsage(bool) override { return NOT_SUPPORTED; }
    long GetGPSTimeUsage(bool&) override { return NOT_SUPPORTED; }
    long SetAntennaSetup(KvZANCommon::AntennaSetupStruct) override { return NOT_SUPPORTED; }
    long SetConverterSetup(KvZANCommon::ConverterSetupStruct) override { return NOT_SUPPORTED; }
    long ReadCompass(unsigned long, unsigned long&) override { return NOT_SUPPORTED; }
    long SetAudioVolume(int) override { return NOT_SUPPORTED; }
    long SetExternalReference(bool) override { return NOT_SUPPORTED; }
    long SetHoldTime(int, int, int) override { return NOT_SUPPORTED; }
    long SearchHold() override { return NOT_SUPPORTED; }
    long SearchContinue(unsigned long) override { return NOT_SUPPORTED; }
    long GetFrequency(double&) override { return NOT_SUPPORTED; }
    long GetGainControl(KvZANCommon::GainControlStruct&) override { return NOT_SUPPORTED; }
    long GetMeasureSettings(double&, KvZANCommon::DFSettingsStruct&, KvZANCommon::DEMSettingsStruct&) override { return NOT_SUPPORTED; }
    long GetFilterSettings(KvZANCommon::FilterSettingsStruct&) override { return NOT_SUPPORTED; }
    long GetAverageTime(double&) override { return NOT_SUPPORTED; }
    long GetAntennaProperty(unsigned long, KvZANCommon::AntennaPropertyStruct&, KvZANCommon::AntennaSubRangeStruct&, int&) override { return NOT_SUPPORTED; }
    long GetAntennaSetup(unsigned long, KvZANCommon::AntennaSetupStruct&) override { return NOT_SUPPORTED; }
    long GetConverterProperty(unsigned long, KvZANCommon::ConverterSetupStruct&) override { return NOT_SUPPORTED; }
    long GetConverterSetup(unsigned long, KvZANCommon::ConverterSetupStruct&) override { return NOT_SUPPORTED; }
    long GetCompassProperty(unsigned long, KvZANCommon::CompassPropertyStruct&) override { return NOT_SUPPORTED; }
    long AlterMeasureSetting(double, KvZANCommon::DFSettingsStruct, KvZANCommon::DEMSettingsStruct) override { return NOT_SUPPORTED; }
    long AlterMeasureSetting(KvZANCommon::FreqRangeDefinition*) override { return NOT_SUPPORTED; }
    long DeleteAllChannels() override { return NOT_SUPPORTED; }
    long SetSkip(long, long, bool) override { return NOT_SUPPORTED; }
    void SetSimulationScan(unsigned, unsigned, unsigned, int, int, unsigned, KvZANCommon::ChannelRangeStruct*) override {}
    long GetMaxChannelCount(EMode) override { return 0; }
    long SetSRNumOfEmitters(bool, long) override { return NOT_SUPPORTED; }
    long SetScanAveraging(unsigned long) override { return NOT_SUPPORTED; }
    long GetReadCount() override { return 0; }
    long RequestHWStatus(QList<KvZANCommon::ComponentInfo*>*) override { return NOT_SUPPORTED; }
    long GetSweepTime(long&) override { return NOT_SUPPORTED; }
    long SetSyncTimes(unsigned long long&, long) override { return NOT_SUPPORTED; }
    long GetZANTime(unsigned long long&) override { return NOT_SUPPORTED; }
    long SetGSMSetting(double, KvZANCommon::FreqRangeDefinition*, KvZANCommon::GSMSettingsStruct&) override { return NOT_SUPPORTED; }
    long FcbSynch() override { return NOT_SUPPORTED; }
    void EnableTimeSync(bool) override {}
    long SendCompassCommand(unsigned long, const QString&, QString&) override { return NOT_SUPPORTED; }
    long SetCompassValue(unsigned long) override { return NOT_SUPPORTED; }
    // clang-format on

protected:
    ~UnsupportedDriver() = default; // deleted through its own type only
};
