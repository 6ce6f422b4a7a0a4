#include "simulator/faults.h"

#include <algorithm>

namespace Simulator {

namespace {

// In the order of `EFault`.
constexpr std::array<QStringView, static_cast<std::size_t>(EFault::COUNT)> NAMES{u"lostlink", u"silence",
                                                                                 u"slow", u"calibration"};

} // namespace

std::optional<EFault> Faults::FindByName(QStringView name) {
    const auto* const found = std::ranges::find(NAMES, name);
    return found == NAMES.end() ? std::nullopt : std::optional(static_cast<EFault>(found - NAMES.begin()));
}

const Fault* Faults::FindScheduled(EFault kind, double time) const {
    const auto found = std::ranges::find_if(m_scheduled, [kind, time](const Fault& fault) {
        return fault.kind == kind && time >= fault.at && time < fault.at + fault.duration;
    });
    return found == m_scheduled.end() ? nullptr : &*found;
}

double Faults::GetDelay(double time) const {
    if (IsCommanded(EFault::SLOW)) {
        return m_delay;
    }
    const Fault* const fault = FindScheduled(EFault::SLOW, time);
    return fault ? fault->delay : 0.0;
}

} // namespace Simulator
