#pragma once

#include "zancommon/driverrecords.h"

#include <QList>
#include <QString>

#include <string>

namespace KvZANCommon {

class FreqRangeDefinition;

/// The operations that both driver interfaces require, as a device that can do nothing answers them.
/// `NullDriver` and `NullLegacyDriver` are what drivers derive from.
///
/// A request returns `NOT_SUPPORTED` and leaves its output arguments unchanged. There are no channels, no
/// blocks, no position and no failures. The destructor is virtual when that of the interface is.
/// \tparam Interface `IDriver` or `ILegacyDriver`
template <class Interface>
class NullDriverOf : public Interface { // NOLINT(cppcoreguidelines-virtual-class-destructor): as said above
public:
    /// The answer of the optional operations of the interface.
    static constexpr long NOT_SUPPORTED = -1;

    int Initialize(std::string&, bool) override { return NOT_SUPPORTED; }
    void GetGPSBuffer(GPSStruct& buffer) override { buffer = {}; }
    QString GetLastError() override { return {}; }
    void ClearLastError() override {}
    long SetMode(EMode) override { return NOT_SUPPORTED; }
    long Reset() override { return NOT_SUPPORTED; }
    long Calibrate(unsigned long) override { return NOT_SUPPORTED; }
    long BIT(long&, bool, bool) override { return NOT_SUPPORTED; }
    long SetTest(QString) override { return NOT_SUPPORTED; }
    long SetRfAttenuator(unsigned long, long) override { return NOT_SUPPORTED; }
    long SetFrequency(double) override { return NOT_SUPPORTED; }
    long SetGainControl(GainControlStruct) override { return NOT_SUPPORTED; }
    long SetFilterSettings(FilterSettingsStruct) override { return NOT_SUPPORTED; }
    long SetFilterSettings(FreqRangeDefinition*) override { return NOT_SUPPORTED; }
    long SetAverageTime(double) override { return NOT_SUPPORTED; }
    long ResetAverage() override { return NOT_SUPPORTED; }
    long AddFreqRange(FreqRangeDefinition*) override { return NOT_SUPPORTED; }
    long SetGPSTimeUsage(bool) override { return NOT_SUPPORTED; }
    long GetGPSTimeUsage(bool&) override { return NOT_SUPPORTED; }
    long SetAntennaSetup(AntennaSetupStruct) override { return NOT_SUPPORTED; }
    long SetConverterSetup(ConverterSetupStruct) override { return NOT_SUPPORTED; }
    long ReadCompass(unsigned long, unsigned long&) override { return NOT_SUPPORTED; }
    long SetAudioVolume(int) override { return NOT_SUPPORTED; }
    long SetExternalReference(bool) override { return NOT_SUPPORTED; }
    long SetHoldTime(int, int, int) override { return NOT_SUPPORTED; }
    long SearchHold() override { return NOT_SUPPORTED; }
    long SearchContinue(unsigned long) override { return NOT_SUPPORTED; }
    long GetFrequency(double&) override { return NOT_SUPPORTED; }
    long GetGainControl(GainControlStruct&) override { return NOT_SUPPORTED; }
    long GetMeasureSettings(double&, DFSettingsStruct&, DEMSettingsStruct&) override { return NOT_SUPPORTED; }
    long GetFilterSettings(FilterSettingsStruct&) override { return NOT_SUPPORTED; }
    long GetAverageTime(double&) override { return NOT_SUPPORTED; }
    long GetAntennaProperty(unsigned long, AntennaPropertyStruct&, AntennaSubRangeStruct&, int&) override {
        return NOT_SUPPORTED;
    }
    long GetAntennaSetup(unsigned long, AntennaSetupStruct&) override { return NOT_SUPPORTED; }
    long GetConverterProperty(unsigned long, ConverterSetupStruct&) override { return NOT_SUPPORTED; }
    long GetConverterSetup(unsigned long, ConverterSetupStruct&) override { return NOT_SUPPORTED; }
    long GetCompassProperty(unsigned long, CompassPropertyStruct&) override { return NOT_SUPPORTED; }
    long AlterMeasureSetting(double, DFSettingsStruct, DEMSettingsStruct) override { return NOT_SUPPORTED; }
    long AlterMeasureSetting(FreqRangeDefinition*) override { return NOT_SUPPORTED; }
    long DeleteAllChannels() override { return NOT_SUPPORTED; }
    long SetSkip(long, long, bool) override { return NOT_SUPPORTED; }
    void SetSimulationScan(unsigned, unsigned, unsigned, int, int, unsigned, ChannelRangeStruct*) override {}
    long GetMaxChannelCount(EMode) override { return 0; }
    long SetSRNumOfEmitters(bool, long) override { return NOT_SUPPORTED; }
    long SetScanAveraging(unsigned long) override { return NOT_SUPPORTED; }
    long GetReadCount() override { return 0; }
    long RequestHWStatus(QList<ComponentInfo*>*) override { return NOT_SUPPORTED; }
    long GetSweepTime(long&) override { return NOT_SUPPORTED; }
    long SetSyncTimes(unsigned long long&, long) override { return NOT_SUPPORTED; }
    long GetZANTime(unsigned long long&) override { return NOT_SUPPORTED; }
    long SetGSMSetting(double, FreqRangeDefinition*, GSMSettingsStruct&) override { return NOT_SUPPORTED; }
    long FcbSynch() override { return NOT_SUPPORTED; }
    void EnableTimeSync(bool) override {}
    long SendCompassCommand(unsigned long, const QString&, QString&) override { return NOT_SUPPORTED; }
    long SetCompassValue(unsigned long) override { return NOT_SUPPORTED; }
};

} // namespace KvZANCommon
