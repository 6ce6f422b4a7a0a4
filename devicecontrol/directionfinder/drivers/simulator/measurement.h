#pragma once

#include "simulator/bearingmeter.h"
#include "simulator/devicestate.h"
#include "simulator/platformmotion.h"
#include "simulator/randomnumbers.h"
#include "simulator/reception.h"
#include "simulator/scanplan.h"
#include "zancommon/idrivercallback.h"

#include <optional>
#include <vector>

namespace Simulator {

/// Measures in a mode, block by block, and delivers.
///
/// Every block is a matter of scenario, seed, settings and the blocks before it, and not of the real clock.
class Measurement {
public:
    /// \param scenario, state, callback outlive it
    Measurement(const Scenario& scenario, DeviceState& state, KvZANCommon::IDriverCallback& callback);
    Measurement(const Measurement&) = delete;
    Measurement& operator=(const Measurement&) = delete;

    /// Delivers on the calling thread until the clock is interrupted, or the link is lost.
    void Run(EMode mode);
    /// Tells that the link is lost: `Run` does so, unless that was told already.
    void TellLostLink();

    /// Hz, as long as no resolution bandwidth is set.
    static double GetDefaultResolution(EMode mode);
    /// What a compass shows, degrees, at the time of the clock.
    [[nodiscard]] double ReadCompass(const DeviceSettings& settings, std::size_t compass) const;
    [[nodiscard]] quint64 GetTimeStamp() const;

private:
    using Time = SimulatedClock::Time;

    /// A signal that the search has found, or the operator holds.
    struct Held {
        double frequency = 0.0;
        unsigned long channel = 0;
        double since = 0.0; // seconds
        double lastHeard = 0.0;
        bool isTold = false;
    };

    [[nodiscard]] Time GetDuration();
    void Deliver();
    bool LoseLink();
    void TakeSettings();
    void CarryOutWishes();
    void ReportPosition();

    void DeliverFixed();
    void DeliverWideband();
    void DeliverHop();
    void Search();
    /// One result at a frequency. Whether something is heard there.
    bool MeasureFixed(double frequency, const KvZANCommon::DFSettingsStruct& df,
                      const KvZANCommon::FilterSettingsStruct& filter);
    void MeasureHop(const ScanPlan::Hop& hop);
    void SearchInHop();
    void HoldAt(const ScanPlan::Hop& hop, unsigned channel);
    void GoOnFrom(unsigned long channel);
    void NextHop();
    void DeliverSpectrum(const ReceivePath& path, double frequency);
    void DeliverSuperResolution(std::span<const Reception::Signal> signals, double frequency,
                                const BearingMeter::Setup& setup, KvZANCommon::StatusStruct& status);
    void DeliverAudioLevel(const Bearing& bearing, double noiseLevel);

    [[nodiscard]] double GetCompassHeading(const PlatformMotion::State& platform,
                                           const DeviceSettings& settings, std::size_t compass) const;
    KvZANCommon::StatusStruct MakeStatus(const ReceivePath& path, double frequency);
    BearingMeter::Setup MakeSetup(const ReceivePath& path, double resolution,
                                  const KvZANCommon::DFSettingsStruct& df,
                                  const KvZANCommon::FilterSettingsStruct& filter, double averageCount);
    [[nodiscard]] double GetGain(const ReceivePath& path) const;
    /// mW in 1 Hz
    [[nodiscard]] double GetNoiseDensity(const ReceivePath& path) const;

    const Scenario& m_scenario;
    DeviceState& m_state;
    KvZANCommon::IDriverCallback& m_callback;
    const PlatformMotion m_motion;
    Reception m_reception;
    RandomNumbers m_random;
    BearingMeter m_meter{m_random};

    EMode m_mode = EMODE_STANDBY;
    quint64 m_version = 0;
    DeviceSettings m_settings;
    ScanPlan m_plan;
    std::size_t m_hop = 0;
    std::size_t m_nextWish = 0;
    std::optional<quint64> m_lastFix; // seconds
    double m_averagedSince = 0.0;     // seconds
    double m_time = 0.0;              // seconds since the begin of the scenario
    PlatformMotion::State m_platform;

    std::optional<Held> m_held;
    bool m_isPassingOver = false; // the signal that was held is still in the channels ahead
    unsigned long m_searchFrom = 0;
    quint64 m_searchContinues = 0;

    std::vector<Bearing> m_bearings;
    std::vector<double> m_powers;
    std::vector<short> m_spectrum;
};

} // namespace Simulator
