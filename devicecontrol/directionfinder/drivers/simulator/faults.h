#pragma once

#include "simulator/scenario.h"

#include <array>
#include <atomic>
#include <chrono>
#include <vector>

namespace Simulator {

/// What is wrong with the device at a time: what the scenario says, and what is commanded. From any thread
/// once it is constructed.
class Faults {
public:
    Faults() = default;
    explicit Faults(std::vector<Fault> scheduled)
        : m_scheduled(std::move(scheduled)) {}

    static constexpr double DEFAULT_DELAY = 1.0; ///< seconds

    /// By the name of the fault in scenarios and test commands.
    static std::optional<EFault> FindByName(QStringView name);

    void SetCommanded(EFault kind, bool on) { m_commanded.at(static_cast<std::size_t>(kind)) = on; }
    [[nodiscard]] bool IsCommanded(EFault kind) const {
        return m_commanded.at(static_cast<std::size_t>(kind));
    }
    /// The fault of the scenario that is there at a time in seconds; null: none is.
    [[nodiscard]] const Fault* FindScheduled(EFault kind, double time) const;
    [[nodiscard]] bool IsThere(EFault kind, double time) const {
        return IsCommanded(kind) || FindScheduled(kind, time);
    }

    /// Seconds that an operation takes while the device is slow by command.
    void SetDelay(double delay) { m_delay = delay; }
    /// Seconds of the real clock that an operation takes at a time.
    [[nodiscard]] double GetDelay(double time) const;

private:
    std::vector<Fault> m_scheduled;
    std::array<std::atomic<bool>, static_cast<std::size_t>(EFault::COUNT)> m_commanded{};
    std::atomic<double> m_delay = DEFAULT_DELAY;
};

} // namespace Simulator
