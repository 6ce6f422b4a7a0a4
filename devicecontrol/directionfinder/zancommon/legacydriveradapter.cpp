#include "zancommon/legacydriveradapter.h"

#include "zancommon/idrivercallback.h"
#include "zancommon/ilegacydriver.h"

namespace KvZANCommon {

namespace {

ILegacyDriver& Required(ILegacyDriver* driver, [[maybe_unused]] const char* operation) {
    Q_ASSERT_X(driver, operation, "a legacy driver must have been set");
    return *driver;
}

} // namespace

LegacyDriverAdapter::~LegacyDriverAdapter() {
    // Driver and callback may have been destroyed already by their owners: they are not used here.
    m_pCallback = nullptr;
    m_pLegacyDriver = nullptr;
}

void LegacyDriverAdapter::SetCallback(IDriverCallback* callback) {
    m_pCallback = callback;
}

int LegacyDriverAdapter::Initialize(std::string& address, bool simulation) {
    return Required(m_pLegacyDriver, __func__).Initialize(address, simulation);
}

void LegacyDriverAdapter::GetGPSBuffer(GPSStruct& buffer) {
    if (m_pLegacyDriver) {
        m_pLegacyDriver->GetGPSBuffer(buffer);
    }
}

QString LegacyDriverAdapter::GetLastError() {
    return Required(m_pLegacyDriver, __func__).GetLastError();
}

void LegacyDriverAdapter::ClearLastError() {
    if (m_pLegacyDriver) {
        m_pLegacyDriver->ClearLastError();
    }
}

long LegacyDriverAdapter::SetMode(EMode mode) {
    return Required(m_pLegacyDriver, __func__).SetMode(mode);
}

long LegacyDriverAdapter::Reset() {
    return Required(m_pLegacyDriver, __func__).Reset();
}

long LegacyDriverAdapter::Calibrate(unsigned long converter) {
    return Required(m_pLegacyDriver, __func__).Calibrate(converter);
}

long LegacyDriverAdapter::BIT(long& result, bool full, bool repeat) {
    return Required(m_pLegacyDriver, __func__).BIT(result, full, repeat);
}

long LegacyDriverAdapter::SetTest(QString command) {
    return Required(m_pLegacyDriver, __func__).SetTest(command);
}

long LegacyDriverAdapter::SetRfAttenuator(unsigned long converter, long attenuation) {
    return Required(m_pLegacyDriver, __func__).SetRfAttenuator(converter, attenuation);
}

long LegacyDriverAdapter::SetFrequency(double frequency) {
    return Required(m_pLegacyDriver, __func__).SetFrequency(frequency);
}

long LegacyDriverAdapter::SetGainControl(GainControlStruct settings) {
    return Required(m_pLegacyDriver, __func__).SetGainControl(settings);
}

long LegacyDriverAdapter::SetFilterSettings(FilterSettingsStruct settings) {
    return Required(m_pLegacyDriver, __func__).SetFilterSettings(settings);
}

long LegacyDriverAdapter::SetFilterSettings(FreqRangeDefinition* range) {
    return Required(m_pLegacyDriver, __func__).SetFilterSettings(range);
}

long LegacyDriverAdapter::SetAverageTime(double time) {
    return Required(m_pLegacyDriver, __func__).SetAverageTime(time);
}

long LegacyDriverAdapter::ResetAverage() {
    return Required(m_pLegacyDriver, __func__).ResetAverage();
}

long LegacyDriverAdapter::AddFreqRange(FreqRangeDefinition* range) {
    return Required(m_pLegacyDriver, __func__).AddFreqRange(range);
}

long LegacyDriverAdapter::SetGPSTimeUsage(bool use) {
    return Required(m_pLegacyDriver, __func__).SetGPSTimeUsage(use);
}

long LegacyDriverAdapter::GetGPSTimeUsage(bool& use) {
    return Required(m_pLegacyDriver, __func__).GetGPSTimeUsage(use);
}

long LegacyDriverAdapter::SetAntennaSetup(AntennaSetupStruct setup) {
    return Required(m_pLegacyDriver, __func__).SetAntennaSetup(setup);
}

long LegacyDriverAdapter::SetConverterSetup(ConverterSetupStruct setup) {
    return Required(m_pLegacyDriver, __func__).SetConverterSetup(setup);
}

long LegacyDriverAdapter::ReadCompass(unsigned long compass, unsigned long& value) {
    return Required(m_pLegacyDriver, __func__).ReadCompass(compass, value);
}

long LegacyDriverAdapter::SetAudioVolume(int volume) {
    return Required(m_pLegacyDriver, __func__).SetAudioVolume(volume);
}

long LegacyDriverAdapter::SetExternalReference(bool use) {
    return Required(m_pLegacyDriver, __func__).SetExternalReference(use);
}

long LegacyDriverAdapter::SetHoldTime(int holdTime, int signalTime, int pauseTime) {
    return Required(m_pLegacyDriver, __func__).SetHoldTime(holdTime, signalTime, pauseTime);
}

long LegacyDriverAdapter::SearchHold() {
    return Required(m_pLegacyDriver, __func__).SearchHold();
}

long LegacyDriverAdapter::SearchContinue(unsigned long channel) {
    return Required(m_pLegacyDriver, __func__).SearchContinue(channel);
}

long LegacyDriverAdapter::GetFrequency(double& frequency) {
    return Required(m_pLegacyDriver, __func__).GetFrequency(frequency);
}

long LegacyDriverAdapter::GetGainControl(GainControlStruct& settings) {
    return Required(m_pLegacyDriver, __func__).GetGainControl(settings);
}

long LegacyDriverAdapter::GetMeasureSettings(double& frequency, DFSettingsStruct& dfSettings,
                                             DEMSettingsStruct& demSettings) {
    return Required(m_pLegacyDriver, __func__).GetMeasureSettings(frequency, dfSettings, demSettings);
}

long LegacyDriverAdapter::GetFilterSettings(FilterSettingsStruct& settings) {
    return Required(m_pLegacyDriver, __func__).GetFilterSettings(settings);
}

long LegacyDriverAdapter::GetAverageTime(double& time) {
    return Required(m_pLegacyDriver, __func__).GetAverageTime(time);
}

long LegacyDriverAdapter::GetAntennaProperty(unsigned long antenna, AntennaPropertyStruct& property,
                                             AntennaSubRangeStruct& subRange, int& subRangeCount) {
    return Required(m_pLegacyDriver, __func__).GetAntennaProperty(antenna, property, subRange, subRangeCount);
}

long LegacyDriverAdapter::GetAntennaSetup(unsigned long antenna, AntennaSetupStruct& setup) {
    return Required(m_pLegacyDriver, __func__).GetAntennaSetup(antenna, setup);
}

long LegacyDriverAdapter::GetConverterProperty(unsigned long converter, ConverterSetupStruct& property) {
    return Required(m_pLegacyDriver, __func__).GetConverterProperty(converter, property);
}

long LegacyDriverAdapter::GetConverterSetup(unsigned long converter, ConverterSetupStruct& setup) {
    return Required(m_pLegacyDriver, __func__).GetConverterSetup(converter, setup);
}

long LegacyDriverAdapter::GetCompassProperty(unsigned long compass, CompassPropertyStruct& property) {
    return Required(m_pLegacyDriver, __func__).GetCompassProperty(compass, property);
}

long LegacyDriverAdapter::AlterMeasureSetting(double frequency, DFSettingsStruct dfSettings,
                                              DEMSettingsStruct demSettings) {
    return Required(m_pLegacyDriver, __func__).AlterMeasureSetting(frequency, dfSettings, demSettings);
}

long LegacyDriverAdapter::AlterMeasureSetting(FreqRangeDefinition* range) {
    return Required(m_pLegacyDriver, __func__).AlterMeasureSetting(range);
}

long LegacyDriverAdapter::DeleteAllChannels() {
    return Required(m_pLegacyDriver, __func__).DeleteAllChannels();
}

long LegacyDriverAdapter::SetSkip(long firstChannel, long lastChannel, bool skip) {
    return Required(m_pLegacyDriver, __func__).SetSkip(firstChannel, lastChannel, skip);
}

void LegacyDriverAdapter::SetSimulationScan(unsigned range, unsigned firstChannel, unsigned lastChannel,
                                            int azimuth, int level, unsigned rangeCount,
                                            ChannelRangeStruct* ranges) {
    if (m_pLegacyDriver) {
        m_pLegacyDriver->SetSimulationScan(range, firstChannel, lastChannel, azimuth, level, rangeCount,
                                           ranges);
    }
}

void LegacyDriverAdapter::SetAudioFormat(int sampleRate, int sampleBits, int channelCount) {
    if (m_pLegacyDriver) {
        m_pLegacyDriver->SetAudioFormat(sampleRate, sampleBits, channelCount);
    }
}

long LegacyDriverAdapter::GetMaxChannelCount(EMode mode) {
    return Required(m_pLegacyDriver, __func__).GetMaxChannelCount(mode);
}

bool LegacyDriverAdapter::StartDRData(bool start, int channel) {
    return Required(m_pLegacyDriver, __func__).StartDRData(start, channel);
}

long LegacyDriverAdapter::SetSRNumOfEmitters(bool automatic, long count) {
    return Required(m_pLegacyDriver, __func__).SetSRNumOfEmitters(automatic, count);
}

long LegacyDriverAdapter::SetScanAveraging(unsigned long count) {
    return Required(m_pLegacyDriver, __func__).SetScanAveraging(count);
}

long LegacyDriverAdapter::GetReadCount() {
    return Required(m_pLegacyDriver, __func__).GetReadCount();
}

long LegacyDriverAdapter::GetBufferCount() {
    return Required(m_pLegacyDriver, __func__).GetBufferCount();
}

long LegacyDriverAdapter::RestartMassData() {
    return Required(m_pLegacyDriver, __func__).RestartMassData();
}

long LegacyDriverAdapter::RequestHWStatus(QList<ComponentInfo*>* components) {
    return Required(m_pLegacyDriver, __func__).RequestHWStatus(components);
}

long LegacyDriverAdapter::GetSweepTime(long& time) {
    return Required(m_pLegacyDriver, __func__).GetSweepTime(time);
}

long LegacyDriverAdapter::SetSyncTimes(unsigned long long& start, long interval) {
    return Required(m_pLegacyDriver, __func__).SetSyncTimes(start, interval);
}

long LegacyDriverAdapter::GetZANTime(unsigned long long& time) {
    return Required(m_pLegacyDriver, __func__).GetZANTime(time);
}

long LegacyDriverAdapter::SetGSMSetting(double frequency, FreqRangeDefinition* range,
                                        GSMSettingsStruct& settings) {
    return Required(m_pLegacyDriver, __func__).SetGSMSetting(frequency, range, settings);
}

long LegacyDriverAdapter::FcbSynch() {
    return Required(m_pLegacyDriver, __func__).FcbSynch();
}

void LegacyDriverAdapter::EnableTimeSync(bool enable) {
    if (m_pLegacyDriver) {
        m_pLegacyDriver->EnableTimeSync(enable);
    }
}

long LegacyDriverAdapter::SendCompassCommand(unsigned long compass, const QString& command, QString& answer) {
    return Required(m_pLegacyDriver, __func__).SendCompassCommand(compass, command, answer);
}

long LegacyDriverAdapter::SetSyncTrigger(bool on) {
    return Required(m_pLegacyDriver, __func__).SetSyncTrigger(on);
}

long LegacyDriverAdapter::SetCompassValue(unsigned long value) {
    return Required(m_pLegacyDriver, __func__).SetCompassValue(value);
}

long LegacyDriverAdapter::GetSyncMissedCount() const {
    return Required(m_pLegacyDriver, __func__).GetSyncMissedCount();
}

void LegacyDriverAdapter::fillTDMABuffer(long range, unsigned long long& time, unsigned firstChannel,
                                         unsigned count, Bearing* bearings, StatusStruct& status) {
    if (m_pCallback) {
        m_pCallback->fillTDMABuffer(range, time, firstChannel, count, bearings, status);
    }
}

void LegacyDriverAdapter::fillScanBuffer(long range, unsigned long long& time, unsigned firstChannel,
                                         unsigned count, Bearing* bearings, StatusStruct& status) {
    if (m_pCallback) {
        m_pCallback->fillScanBuffer(range, time, firstChannel, count, bearings, status);
    }
}

void LegacyDriverAdapter::fillFFMBuffer(const FFMData& data, StatusStruct& status, bool averaged) {
    if (m_pCallback) {
        m_pCallback->fillFFMBuffer(data, status, averaged);
    }
}

void LegacyDriverAdapter::fillFFMSRBuffer(SuperResolutionStruct& data, StatusStruct& status) {
    if (m_pCallback) {
        m_pCallback->fillFFMSRBuffer(data, status);
    }
}

void LegacyDriverAdapter::fillSpectrumBuffer(const short* values, int count) {
    if (m_pCallback) {
        m_pCallback->fillSpectrumBuffer(values, count);
    }
}

void LegacyDriverAdapter::fillSRSpectrumBuffer(short* values, int count, unsigned long long& time) {
    if (m_pCallback) {
        m_pCallback->fillSRSpectrumBuffer(values, count, time);
    }
}

void LegacyDriverAdapter::fillTestValuesBuffer(double* values, unsigned short count) {
    if (m_pCallback) {
        m_pCallback->fillTestValuesBuffer(values, count);
    }
}

void LegacyDriverAdapter::fillAudioBuffer(void* samples, unsigned byteCount) {
    if (m_pCallback) {
        m_pCallback->fillAudioBuffer(samples, byteCount);
    }
}

void LegacyDriverAdapter::fillAudioBufferTime(void* times, unsigned byteCount) {
    if (m_pCallback) {
        m_pCallback->fillAudioBufferTime(times, byteCount);
    }
}

void LegacyDriverAdapter::fillAudioFormat(void* format, unsigned byteCount) {
    if (m_pCallback) {
        m_pCallback->fillAudioFormat(format, byteCount);
    }
}

void LegacyDriverAdapter::fillAudioLevel(double level) {
    if (m_pCallback) {
        m_pCallback->fillAudioLevel(level);
    }
}

void LegacyDriverAdapter::fillGPSData(double latitude, double longitude, unsigned long long time, bool valid,
                                      int satelliteCount, int quality) {
    if (m_pCallback) {
        m_pCallback->fillGPSData(latitude, longitude, time, valid, satelliteCount, quality);
    }
}

void LegacyDriverAdapter::reportError(ErrorStruct& error) {
    if (m_pCallback) {
        m_pCallback->reportError(error);
    }
}

void LegacyDriverAdapter::InitSimulation(INITStruct& setup, unsigned rangeCount, ChannelRangeStruct* ranges) {
    if (m_pCallback) {
        m_pCallback->InitSimulation(setup, rangeCount, ranges);
    }
}

void LegacyDriverAdapter::setSearchFrequency(double frequency) {
    if (m_pCallback) {
        m_pCallback->setSearchFrequency(frequency);
    }
}

void LegacyDriverAdapter::getOperateMode(EMode& mode) {
    if (m_pCallback) {
        m_pCallback->getOperateMode(mode);
    }
}

void LegacyDriverAdapter::ReportBITResult(ErrorStruct& result) {
    if (m_pCallback) {
        m_pCallback->ReportBITResult(result);
    }
}

void LegacyDriverAdapter::SetCommandLog(QString& line) {
    if (m_pCallback) {
        m_pCallback->SetCommandLog(line);
    }
}

QString LegacyDriverAdapter::GetDevAddress() {
    Q_ASSERT_X(m_pCallback, __func__, "a callback must have been set");
    return m_pCallback->GetDevAddress();
}

void LegacyDriverAdapter::CloseDataLink() {
    if (m_pCallback) {
        m_pCallback->CloseDataLink();
    }
}

void LegacyDriverAdapter::SetEndOfScan(bool end) {
    if (m_pCallback) {
        m_pCallback->SetEndOfScan(end);
    }
}

void LegacyDriverAdapter::fillSyncTimestamp(long long time) {
    if (m_pCallback) {
        m_pCallback->fillSyncTimestamp(time);
    }
}

} // namespace KvZANCommon
