#pragma once

#include "zancommon/idriver.h"
#include "zancommon/ilegacydrivercallback.h"
#include "zancommon_export.h"

namespace KvZANCommon {

class ILegacyDriver;

/// Lets a driver of the older interface be used where the application expects an IDriver.
///
/// Every operation calls the operation of the same name on the other side, with arguments and results
/// unchanged. The application gives the adapter the legacy driver (`SetLegacyDriver`), and gives the legacy
/// driver the adapter as its callback. Driver and callback are not owned and must outlive the adapter.
///
/// Without a legacy driver, operations without a result do nothing (their output arguments stay as they
/// were); without a callback the data of the driver is dropped. Operations with a result need the driver or
/// callback, because the adapter has no answer of its own: calling one without it is an error of the caller.
/// A debug build stops with the name of the operation; a build with QT_NO_DEBUG (also RelWithDebInfo) does
/// not check and uses the null pointer.
///
/// No locks: a callback is passed on in the thread in which the driver calls it. Set driver and callback
/// before the driver starts, and do not change them while it runs.
class ZANCOMMON_EXPORT LegacyDriverAdapter : public IDriver, public ILegacyDriverCallback {
public:
    LegacyDriverAdapter() = default;
    ~LegacyDriverAdapter() override;

    /// Replaces any earlier driver without notice; null: none.
    void SetLegacyDriver(ILegacyDriver* driver) { m_pLegacyDriver = driver; }
    /// Replaces any earlier callback without notice; null: none.
    void SetCallback(IDriverCallback* callback) override;

protected:
    // From the application to the legacy driver. The application calls them as an IDriver.
    int Initialize(std::string& address, bool simulation) override;
    void GetGPSBuffer(GPSStruct& buffer) override;
    QString GetLastError() override;
    void ClearLastError() override;
    long SetMode(EMode mode) override;
    long Reset() override;
    long Calibrate(unsigned long converter) override;
    long BIT(long& result, bool full, bool repeat) override;
    long SetTest(QString command) override;
    long SetRfAttenuator(unsigned long converter, long attenuation) override;
    long SetFrequency(double frequency) override;
    long SetGainControl(GainControlStruct settings) override;
    long SetFilterSettings(FilterSettingsStruct settings) override;
    long SetFilterSettings(FreqRangeDefinition* range) override;
    long SetAverageTime(double time) override;
    long ResetAverage() override;
    long AddFreqRange(FreqRangeDefinition* range) override;
    long SetGPSTimeUsage(bool use) override;
    long GetGPSTimeUsage(bool& use) override;
    long SetAntennaSetup(AntennaSetupStruct setup) override;
    long SetConverterSetup(ConverterSetupStruct setup) override;
    long ReadCompass(unsigned long compass, unsigned long& value) override;
    long SetAudioVolume(int volume) override;
    long SetExternalReference(bool use) override;
    long SetHoldTime(int holdTime, int signalTime, int pauseTime) override;
    long SearchHold() override;
    long SearchContinue(unsigned long channel) override;
    long GetFrequency(double& frequency) override;
    long GetGainControl(GainControlStruct& settings) override;
    long GetMeasureSettings(double& frequency, DFSettingsStruct& dfSettings,
                            DEMSettingsStruct& demSettings) override;
    long GetFilterSettings(FilterSettingsStruct& settings) override;
    long GetAverageTime(double& time) override;
    long GetAntennaProperty(unsigned long antenna, AntennaPropertyStruct& property,
                            AntennaSubRangeStruct& subRange, int& subRangeCount) override;
    long GetAntennaSetup(unsigned long antenna, AntennaSetupStruct& setup) override;
    long GetConverterProperty(unsigned long converter, ConverterSetupStruct& property) override;
    long GetConverterSetup(unsigned long converter, ConverterSetupStruct& setup) override;
    long GetCompassProperty(unsigned long compass, CompassPropertyStruct& property) override;
    long AlterMeasureSetting(double frequency, DFSettingsStruct dfSettings,
                             DEMSettingsStruct demSettings) override;
    long AlterMeasureSetting(FreqRangeDefinition* range) override;
    long DeleteAllChannels() override;
    long SetSkip(long firstChannel, long lastChannel, bool skip) override;
    void SetSimulationScan(unsigned range, unsigned firstChannel, unsigned lastChannel, int azimuth,
                           int level, unsigned rangeCount, ChannelRangeStruct* ranges) override;
    void SetAudioFormat(int sampleRate, int sampleBits, int channelCount) override;
    long GetMaxChannelCount(EMode mode) override;
    bool StartDRData(bool start, int channel) override;
    long SetSRNumOfEmitters(bool automatic, long count) override;
    long SetScanAveraging(unsigned long count) override;
    long GetReadCount() override;
    long GetBufferCount() override;
    long RestartMassData() override;
    long RequestHWStatus(QList<ComponentInfo*>* components) override;
    long GetSweepTime(long& time) override;
    long SetSyncTimes(unsigned long long& start, long interval) override;
    long GetZANTime(unsigned long long& time) override;
    long SetGSMSetting(double frequency, FreqRangeDefinition* range, GSMSettingsStruct& settings) override;
    long FcbSynch() override;
    void EnableTimeSync(bool enable) override;
    long SendCompassCommand(unsigned long compass, const QString& command, QString& answer) override;
    long SetSyncTrigger(bool on) override;
    long SetCompassValue(unsigned long value) override;
    [[nodiscard]] long GetSyncMissedCount() const override;

    // From the legacy driver to the application. The driver calls them as its ILegacyDriverCallback.
    void fillTDMABuffer(long range, unsigned long long& time, unsigned firstChannel, unsigned count,
                        Bearing* bearings, StatusStruct& status) override;
    void fillScanBuffer(long range, unsigned long long& time, unsigned firstChannel, unsigned count,
                        Bearing* bearings, StatusStruct& status) override;
    void fillFFMBuffer(const FFMData& data, StatusStruct& status, bool averaged) override;
    void fillFFMSRBuffer(SuperResolutionStruct& data, StatusStruct& status) override;
    void fillSpectrumBuffer(const short* values, int count) override;
    void fillSRSpectrumBuffer(short* values, int count, unsigned long long& time) override;
    void fillTestValuesBuffer(double* values, unsigned short count) override;
    void fillAudioBuffer(void* samples, unsigned byteCount) override;
    void fillAudioBufferTime(void* times, unsigned byteCount) override;
    void fillAudioFormat(void* format, unsigned byteCount) override;
    void fillAudioLevel(double level) override;
    void fillGPSData(double latitude, double longitude, unsigned long long time, bool valid,
                     int satelliteCount, int quality) override;
    void reportError(ErrorStruct& error) override;
    void InitSimulation(INITStruct& setup, unsigned rangeCount, ChannelRangeStruct* ranges) override;
    void setSearchFrequency(double frequency) override;
    void getOperateMode(EMode& mode) override;
    void ReportBITResult(ErrorStruct& result) override;
    void SetCommandLog(QString& line) override;
    QString GetDevAddress() override;
    void CloseDataLink() override;
    void SetEndOfScan(bool end) override;
    void fillSyncTimestamp(long long time) override;

private:
    IDriverCallback* m_pCallback = nullptr;
    ILegacyDriver* m_pLegacyDriver = nullptr;
};

} // namespace KvZANCommon
