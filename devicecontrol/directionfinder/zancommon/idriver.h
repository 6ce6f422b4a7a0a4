#pragma once

#include "zancommon/driverrecords.h"
#include "zancommon_export.h"

#include <QList>
#include <QObject>
#include <QString>

#include <string>

namespace KvZANCommon {

class FreqRangeDefinition;
class IDriverCallback;

/// Driver of a direction-finding device: what the application calls.
///
/// Order of use: create, `SetCallback`, `Initialize`, settings, measurement. Results arrive through the
/// callback. A `long` result is the driver's own code and is not interpreted. Records passed by value may be
/// kept by the driver; records passed by reference are filled in by the driver. Objects passed by pointer
/// still belong to the caller.
///
/// Frequencies are in Hz, 64-bit times in milliseconds since 1970-01-01 00:00:00 UTC. Converters, antennas,
/// compasses and channels are numbered by the device. Where no unit is stated, driver and application agree
/// on one.
///
/// An application calls its driver on one thread; results arrive on whatever thread the driver delivers on
/// (`IDriverCallback`). Nothing is thrown across the interface: a failure is a result
/// code, and its text is returned by `GetLastError`.
///
/// Drivers are built separately from the application: the order of the operations is part of the interface.
/// There is no Q_OBJECT, because it would add virtual operations before them. Operations with a body are
/// optional features; their defaults answer false, 0 (nothing buffered) or -1 (not supported).
class ZANCOMMON_EXPORT IDriver : public QObject {
public:
    ~IDriver() override;

    /// The callback must outlive the work of the driver. Set it before `Initialize`.
    virtual void SetCallback(IDriverCallback* callback) = 0;
    /// Opens the device at an address in the driver's notation; the driver may change the text. The result is
    /// the driver's own code, too; 0 usually means success.
    virtual int Initialize(std::string& address, bool simulation) = 0;
    /// The last position fix.
    virtual void GetGPSBuffer(GPSStruct& buffer) = 0;
    /// The text of the last failure, which is kept until `ClearLastError`.
    virtual QString GetLastError() = 0;
    virtual void ClearLastError() = 0;
    /// Starts delivering results in a mode. Standby stops it: when that call returns, nothing more is
    /// delivered.
    virtual long SetMode(EMode mode) = 0;
    virtual long Reset() = 0;
    virtual long Calibrate(unsigned long converter) = 0;
    /// Built-in test, short or full, once or repeatedly. Results come through
    /// `IDriverCallback::ReportBITResult` too.
    virtual long BIT(long& result, bool full, bool repeat) = 0;
    /// A test command of the driver's own.
    virtual long SetTest(QString command) = 0;
    /// Attenuation in dB.
    virtual long SetRfAttenuator(unsigned long converter, long attenuation) = 0;
    virtual long SetFrequency(double frequency) = 0;
    virtual long SetGainControl(GainControlStruct settings) = 0;
    virtual long SetFilterSettings(FilterSettingsStruct settings) = 0;
    /// The same with the filter settings of a range.
    virtual long SetFilterSettings(FreqRangeDefinition* range) = 0;
    /// Seconds (the average time of a `FreqRangeDefinition` is in milliseconds).
    virtual long SetAverageTime(double time) = 0;
    /// Starts the averaging again.
    virtual long ResetAverage() = 0;
    /// Adds a frequency range to the measurement.
    virtual long AddFreqRange(FreqRangeDefinition* range) = 0;
    /// Whether the device takes its time from GPS.
    virtual long SetGPSTimeUsage(bool use) = 0;
    virtual long GetGPSTimeUsage(bool& use) = 0;
    virtual long SetAntennaSetup(AntennaSetupStruct setup) = 0;
    virtual long SetConverterSetup(ConverterSetupStruct setup) = 0;
    virtual long ReadCompass(unsigned long compass, unsigned long& value) = 0;
    virtual long SetAudioVolume(int volume) = 0;
    /// Whether the device runs on an external reference frequency.
    virtual long SetExternalReference(bool use) = 0;
    /// Milliseconds.
    virtual long SetHoldTime(int holdTime, int signalTime, int pauseTime) = 0;
    /// Holds the search at the current channel.
    virtual long SearchHold() = 0;
    /// Continues the search at a channel.
    virtual long SearchContinue(unsigned long channel) = 0;
    /// Keeps a place in the order; does nothing.
    virtual void ReservedAfterSearch();
    virtual long GetFrequency(double& frequency) = 0;
    virtual long GetGainControl(GainControlStruct& settings) = 0;
    /// The frequency that is measured, and the settings for it.
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
    /// Changes the settings for a frequency that is measured.
    virtual long AlterMeasureSetting(double frequency, DFSettingsStruct dfSettings,
                                     DEMSettingsStruct demSettings) = 0;
    /// Changes the settings for a frequency range that is measured.
    virtual long AlterMeasureSetting(FreqRangeDefinition* range) = 0;
    virtual long DeleteAllChannels() = 0;
    /// Excludes the channels from the first to the last from the measurement, or includes them again.
    virtual long SetSkip(long firstChannel, long lastChannel, bool skip) = 0;
    /// \param ranges `rangeCount` of them
    virtual void SetSimulationScan(unsigned range, unsigned firstChannel, unsigned lastChannel, int azimuth,
                                   int level, unsigned rangeCount, ChannelRangeStruct* ranges) = 0;
    /// \param sampleRate samples per second
    virtual void SetAudioFormat(int sampleRate, int sampleBits, int channelCount);
    /// The largest number of channels that the device measures in a mode.
    virtual long GetMaxChannelCount(EMode mode) = 0;
    virtual bool StartDRData(bool start, int channel);
    /// Number of emitters for super resolution; `automatic`: the driver finds it.
    virtual long SetSRNumOfEmitters(bool automatic, long count) = 0;
    virtual long SetScanAveraging(unsigned long count) = 0;
    /// Number of blocks that have been read from the device.
    virtual long GetReadCount() = 0;
    /// Number of blocks that wait to be delivered.
    virtual long GetBufferCount();
    virtual long RestartMassData();
    /// Appends the components that the driver knows; the caller deletes them. Not null.
    virtual long RequestHWStatus(QList<ComponentInfo*>* components) = 0;
    /// Milliseconds.
    virtual long GetSweepTime(long& time) = 0;
    virtual long SetSyncTimes(unsigned long long& start, long interval) = 0;
    /// The time of the device.
    virtual long GetZANTime(unsigned long long& time) = 0;
    virtual long SetGSMSetting(double frequency, FreqRangeDefinition* range, GSMSettingsStruct& settings) = 0;
    virtual long FcbSynch() = 0;
    virtual void EnableTimeSync(bool enable) = 0;
    /// Sends a command to a compass, in the notation of the compass, and fills in the answer.
    virtual long SendCompassCommand(unsigned long compass, const QString& command, QString& answer) = 0;
    virtual long SetSyncTrigger(bool on);
    virtual long SetCompassValue(unsigned long value) = 0;
    /// The number of missed synchronisations.
    [[nodiscard]] virtual long GetSyncMissedCount() const;
    /// Keeps a place in the order; does nothing.
    virtual void ReservedAtEnd();
};

} // namespace KvZANCommon
