#include "simulator/simulatedclock.h"

#include <algorithm>

namespace Simulator {

void SimulatedClock::SetPace(double pace) {
    const std::lock_guard lock(m_mutex);
    m_pace = pace;
}

void SimulatedClock::Resume() {
    const std::lock_guard lock(m_mutex);
    m_isInterrupted = false;
    m_simulatedBegin = m_time;
    m_realBegin = std::chrono::steady_clock::now();
}

void SimulatedClock::Interrupt() {
    {
        const std::lock_guard lock(m_mutex);
        m_isInterrupted = true;
    }
    m_interruption.notify_all();
}

bool SimulatedClock::AdvanceTo(Time time) {
    std::unique_lock lock(m_mutex);
    if (m_pace != AS_FAST_AS_POSSIBLE) {
        using Real = std::chrono::steady_clock::duration;
        constexpr double LONGEST = 1e9; // s; the real clock counts no further than some hundred years
        const std::chrono::duration<double> sinceBegin = time - m_simulatedBegin;
        const std::chrono::duration<double> real(std::min(sinceBegin.count() / m_pace, LONGEST));
        m_interruption.wait_until(lock, m_realBegin + std::chrono::duration_cast<Real>(real),
                                  [this] { return m_isInterrupted; });
    }
    if (m_isInterrupted) {
        return false;
    }
    m_time = time;
    return true;
}

void SimulatedClock::Set(Time time) {
    const std::lock_guard lock(m_mutex);
    m_time = time;
}

SimulatedClock::Time SimulatedClock::GetTime() const {
    const std::lock_guard lock(m_mutex);
    return m_time;
}

} // namespace Simulator
