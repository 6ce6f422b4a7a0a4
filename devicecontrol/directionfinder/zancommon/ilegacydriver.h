#pragma once

#include "zancommon/driverrecords.h"
#include "zancommon_export.h"

#include <QList>
#include <QString>

#include <string>

namespace KvZANCommon {

class FreqRangeDefinition;

/// A driver of the older interface. The operations mean what those of the same name in IDriver mean, with the
/// same units, owners, threads and defaults; their order differs, and it is part of the interface. A
/// LegacyDriverAdapter makes such a driver usable as IDriver. There is no `SetCallback`: each driver class
/// has its own way to set its `ILegacyDriverCallback`.
///
/// There is no virtual destructor: it would take places in the order. The code that created a legacy driver
/// destroys it, through its own type, after the adapter that uses it.
class ZANCOMMON_EXPORT ILegacyDriver {
public:
    /// Keep two places in the order; do nothing.
    virtual void ReservedFirst();
    virtual void ReservedSecond();
    virtual int Initialize(std::string& address, bool simulation) = 0;
    virtual void GetGPSBuffer(GPSStruct& buffer) = 0;
    virtual QString GetLastError() = 0;
    virtual void ClearLastError() = 0;
    virtual long SetMode(EMode mode) = 0;
    virtual long Reset() = 0;
    virtual long Calibrate(unsigned long converter) = 0;
    /// Built-in test.
    virtual long BIT(long& result, bool full, bool repeat) = 0;
    virtual long SetTest(QString command) = 0;
    /// Attenuation in dB.
    virtual long SetRfAttenuator(unsigned long converter, long attenuation) = 0;
    virtual long SetFrequency(double frequency) = 0;
    virtual long SetGainControl(GainControlStruct settings) = 0;
    virtual long SetFilterSettings(FilterSettingsStruct settings) = 0;
    virtual long SetFilterSettings(FreqRangeDefinition* range) = 0;
    /// Seconds.
    virtual long SetAverageTime(double time) = 0;
    virtual long ResetAverage() = 0;
    virtual long AddFreqRange(FreqRangeDefinition* range) = 0;
    virtual long SetGPSTimeUsage(bool use) = 0;
    virtual long GetGPSTimeUsage(bool& use) = 0;
    virtual long SetAntennaSetup(AntennaSetupStruct setup) = 0;
    virtual long SetConverterSetup(ConverterSetupStruct setup) = 0;
    virtual long ReadCompass(unsigned long compass, unsigned long& value) = 0;
    virtual long SetAudioVolume(int volume) = 0;
    virtual long SetExternalReference(bool use) = 0;
    /// Milliseconds.
    virtual long SetHoldTime(int holdTime, int signalTime, int pauseTime) = 0;
    virtual long SearchHold() = 0;
    virtual long SearchContinue(unsigned long channel) = 0;
    /// Keeps a place in the order; does nothing.
    virtual void ReservedAfterSearch();
    virtual long GetFrequency(double& frequency) = 0;
    virtual long GetGainControl(GainControlStruct& settings) = 0;
    virtual long GetMeasureSettings(double& frequency, DFSettingsStruct& dfSettings,
                                    DEMSettingsStruct& demSettings) = 0;
    virtual long GetFilterSettings(FilterSettingsStruct& settings) = 0;
    /// Seconds.
    virtual long GetAverageTime(double& time) = 0;
    virtual long GetAntennaProperty(unsigned long antenna, AntennaPropertyStruct& property,
                                    AntennaSubRangeStruct& subRange, int& subRangeCount) = 0;
    virtual long GetAntennaSetup(unsigned long antenna, AntennaSetupStruct& setup) = 0;
    virtual long GetConverterProperty(unsigned long converter, ConverterSetupStruct& property) = 0;
    virtual long GetConverterSetup(unsigned long converter, ConverterSetupStruct& setup) = 0;
    virtual long GetCompassProperty(unsigned long compass, CompassPropertyStruct& property) = 0;
    virtual long AlterMeasureSetting(double frequency, DFSettingsStruct dfSettings,
                                     DEMSettingsStruct demSettings) = 0;
    virtual long AlterMeasureSetting(FreqRangeDefinition* range) = 0;
    virtual long DeleteAllChannels() = 0;
    virtual long SetSkip(long firstChannel, long lastChannel, bool skip) = 0;
    virtual void SetSimulationScan(unsigned range, unsigned firstChannel, unsigned lastChannel, int azimuth,
                                   int level, unsigned rangeCount, ChannelRangeStruct* ranges) = 0;
    virtual void SetAudioFormat(int sampleRate, int sampleBits, int channelCount);
    virtual long GetMaxChannelCount(EMode mode) = 0;
    virtual bool StartDRData(bool start, int channel);
    virtual long SetSRNumOfEmitters(bool automatic, long count) = 0;
    virtual long SetScanAveraging(unsigned long count) = 0;
    virtual long GetReadCount() = 0;
    virtual long GetBufferCount();
    virtual long RestartMassData();
    /// Appends the components that the driver knows; the caller deletes them. Not null.
    virtual long RequestHWStatus(QList<ComponentInfo*>* components) = 0;
    /// Milliseconds.
    virtual long GetSweepTime(long& time) = 0;
    virtual long SetSyncTimes(unsigned long long& start, long interval) = 0;
    virtual long GetZANTime(unsigned long long& time) = 0;
    virtual long SetGSMSetting(double frequency, FreqRangeDefinition* range, GSMSettingsStruct& settings) = 0;
    virtual long FcbSynch() = 0;
    virtual void EnableTimeSync(bool enable) = 0;
    virtual long SendCompassCommand(unsigned long compass, const QString& command, QString& answer) = 0;
    virtual long SetCompassValue(unsigned long value) = 0;
    [[nodiscard]] virtual long GetSyncMissedCount() const;
    virtual long SetSyncTrigger(bool on);

protected:
    ~ILegacyDriver() = default;
};

} // namespace KvZANCommon
