#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace Simulator {

/// The clock of the scenario: it runs while the device measures, at a pace, and stands still otherwise.
/// May be used from any thread.
class SimulatedClock {
public:
    using Time = std::chrono::microseconds; ///< since the begin of the scenario
    /// The pace that waits for nothing.
    static constexpr double AS_FAST_AS_POSSIBLE = 0.0;

    /// How many times faster than the real clock, above 0; or `AS_FAST_AS_POSSIBLE`. From the next `Resume`
    /// on.
    void SetPace(double pace);
    /// The clock runs from where it stands.
    void Resume();
    void Interrupt();
    /// Waits until it is a time. False, with the time as it was, when the clock is interrupted.
    bool AdvanceTo(Time time);
    void Set(Time time);
    [[nodiscard]] Time GetTime() const;

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_interruption;
    double m_pace = 1.0;
    bool m_isInterrupted = false;
    Time m_time{};
    // Where clock and real clock began to run.
    Time m_simulatedBegin{};
    std::chrono::steady_clock::time_point m_realBegin;
};

} // namespace Simulator
