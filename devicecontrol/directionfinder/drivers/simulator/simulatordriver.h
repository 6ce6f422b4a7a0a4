#pragma once

#include "simulator/devicestate.h"
#include "simulator/measurement.h"
#include "simulator/scenario.h"
#include "zancommon/driverdescription.h"
#include "zancommon/nulldriver.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>

namespace Simulator {

/// A driver whose device is simulated: a direction finder in a scenario of emitters.
///
/// The address is a scenario: a file, or the name of one that is built in ("ship", "airfield", "overflight");
/// an empty one is "ship".
/// The device measures on a thread of its own, and all deliveries come on it, except for those that an
/// operation has caused (command log, results of built-in tests). It measures until it is set to standby.
///
/// The same scenario with the same settings gives the same deliveries to the byte, whatever the pace of the
/// clock. The clock of the scenario stands still in standby.
///
/// An operation returns `OK`, `FAILED` with a text in `GetLastError`, or `NOT_SUPPORTED` for what the device
/// does not have: TDMA, external reference, GSM, synchronisation of several devices, recorded audio. All
/// operations except the constructor need `Initialize` first. Each one that sets or starts something is
/// reported through `IDriverCallback::SetCommandLog`, whether it succeeds or not.
///
/// Test commands (`SetTest`):
///
///     speed realtime | speed max | speed N        pace of the clock, from the next start on
///     fault lostlink|silence|calibration on|off
///     fault slow on [SECONDS] | fault slow off    each operation takes a second, or as long as stated
///     seed N                                      the scenario begins again, with this seed; the device
///                                                 stands by, with all settings as after `Initialize`
///
/// A lost link ends the deliveries with a fatal error and `CloseDataLink`; operations fail until `Initialize`
/// succeeds, which it does when the fault is over; the scenario then goes on where the fault ends. It is
/// noticed by a measurement, or by an operation.
class SimulatorDriver final : public KvZANCommon::NullDriver {
public:
    static constexpr long OK = 0;
    static constexpr long FAILED = -2;

    SimulatorDriver() = default;
    SimulatorDriver(const SimulatorDriver&) = delete;
    SimulatorDriver& operator=(const SimulatorDriver&) = delete;
    ~SimulatorDriver() override;

    static KvZANCommon::DriverDescription Describe();

    void SetCallback(KvZANCommon::IDriverCallback* callback) override { m_callback = callback; }
    int Initialize(std::string& address, bool simulation) override;
    void GetGPSBuffer(KvZANCommon::GPSStruct& buffer) override;
    QString GetLastError() override { return m_lastError; }
    void ClearLastError() override { m_lastError.clear(); }
    long SetMode(EMode mode) override;
    /// All settings are again as after `Initialize`; the device stands by.
    long Reset() override;
    long Calibrate(unsigned long converter) override;
    /// \param result number of components that do not work
    long BIT(long& result, bool full, bool repeat) override;
    long SetTest(QString command) override;
    long SetRfAttenuator(unsigned long converter, long attenuation) override;
    long SetFrequency(double frequency) override;
    /// Modes "auto" and "manual"; in the latter the attenuation counts.
    long SetGainControl(KvZANCommon::GainControlStruct settings) override;
    /// Azimuths, elevations, quality and spread are judged; what is rejected has the quality 0.
    long SetFilterSettings(KvZANCommon::FilterSettingsStruct settings) override;
    long SetFilterSettings(KvZANCommon::FreqRangeDefinition* range) override;
    long SetAverageTime(double time) override;
    long ResetAverage() override;
    long AddFreqRange(KvZANCommon::FreqRangeDefinition* range) override;
    long SetGPSTimeUsage(bool use) override;
    long GetGPSTimeUsage(bool& use) override;
    long SetAntennaSetup(KvZANCommon::AntennaSetupStruct setup) override;
    long SetConverterSetup(KvZANCommon::ConverterSetupStruct setup) override;
    /// \param value tenths of a degree
    long ReadCompass(unsigned long compass, unsigned long& value) override;
    /// \param volume 0 to 100
    long SetAudioVolume(int volume) override;
    /// \param holdTime how long the search stays at a signal at most; 0: as long as it is there
    /// \param signalTime how long a signal has to be there to be told
    /// \param pauseTime how long the search waits for a signal that has gone
    long SetHoldTime(int holdTime, int signalTime, int pauseTime) override;
    long SearchHold() override;
    long SearchContinue(unsigned long channel) override;
    long GetFrequency(double& frequency) override;
    long GetGainControl(KvZANCommon::GainControlStruct& settings) override;
    /// What is not set is filled with what the device uses instead.
    long GetMeasureSettings(double& frequency, KvZANCommon::DFSettingsStruct& dfSettings,
                            KvZANCommon::DEMSettingsStruct& demSettings) override;
    long GetFilterSettings(KvZANCommon::FilterSettingsStruct& settings) override;
    long GetAverageTime(double& time) override;
    /// \param subRange the first one; the others are in the antenna's setup
    long GetAntennaProperty(unsigned long antenna, KvZANCommon::AntennaPropertyStruct& property,
                            KvZANCommon::AntennaSubRangeStruct& subRange, int& subRangeCount) override;
    long GetAntennaSetup(unsigned long antenna, KvZANCommon::AntennaSetupStruct& setup) override;
    long GetConverterProperty(unsigned long converter, KvZANCommon::ConverterSetupStruct& property) override;
    long GetConverterSetup(unsigned long converter, KvZANCommon::ConverterSetupStruct& setup) override;
    long GetCompassProperty(unsigned long compass, KvZANCommon::CompassPropertyStruct& property) override;
    long AlterMeasureSetting(double frequency, KvZANCommon::DFSettingsStruct dfSettings,
                             KvZANCommon::DEMSettingsStruct demSettings) override;
    long AlterMeasureSetting(KvZANCommon::FreqRangeDefinition* range) override;
    long DeleteAllChannels() override;
    long SetSkip(long firstChannel, long lastChannel, bool skip) override;
    long GetMaxChannelCount(EMode mode) override;
    /// \param count 1 to 4
    long SetSRNumOfEmitters(bool automatic, long count) override;
    long SetScanAveraging(unsigned long count) override;
    long GetReadCount() override;
    long RequestHWStatus(QList<KvZANCommon::ComponentInfo*>* components) override;
    long GetSweepTime(long& time) override;
    long GetZANTime(unsigned long long& time) override;
    /// "ID?" and "HDG?" are known.
    long SendCompassCommand(unsigned long compass, const QString& command, QString& answer) override;
    /// Aligns the first compass. \param value tenths of a degree that it is to show now
    long SetCompassValue(unsigned long value) override;

private:
    struct Session {
        explicit Session(Scenario which, KvZANCommon::IDriverCallback& callback)
            : scenario(std::move(which))
            , state(scenario)
            , measurement(scenario, state, callback) {}

        const Scenario scenario;
        DeviceState state;
        Measurement measurement;
        std::atomic<std::chrono::steady_clock::time_point> lostSince; // noticed on either thread
    };

    void Stop();
    /// Tells of a command. False, with the text of the failure, when the device does not take it.
    bool Takes(const QString& command);
    /// The same for what only asks.
    bool Answers();
    long Refuse(const QString& reason);
    bool IsLinkBack();
    void Log(QString line);
    long SetSpeed(const QString& speed);
    long SetFault(const QStringList& words);
    long SetSeed(const QString& seed);
    [[nodiscard]] bool HasChannelsFor(const KvZANCommon::FreqRangeDefinition& range) const;
    [[nodiscard]] QString FindFaultOf(const KvZANCommon::FreqRangeDefinition* range) const;
    [[nodiscard]] QString FindFaultOf(double frequency, EMode mode,
                                      const KvZANCommon::DFSettingsStruct& settings) const;
    template <class Function>
    long Change(Function function) {
        m_session->state.Change(function);
        return OK;
    }

    KvZANCommon::IDriverCallback* m_callback = nullptr;
    std::string m_address;
    std::unique_ptr<Session> m_session;
    double m_pace = 1.0;
    EMode m_mode = EMODE_STANDBY;
    QString m_lastError;
    std::thread m_thread;
};

} // namespace Simulator
