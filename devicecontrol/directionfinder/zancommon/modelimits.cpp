#include "zancommon/modelimits.h"

#include <algorithm>

namespace {

double ToPlausibleLimit(double frequency, EZANType type) {
    if (type == ZANTYPE_ZANFERN) {
        constexpr FrequencyRange FERN{1e8, 4.5e8};
        return FERN.Clip(frequency);
    }
    constexpr FrequencyRange PLAUSIBLE{9000.0, 3.6e9};
    constexpr double WITHOUT_ANTENNA = 2.5e7;
    return frequency > PLAUSIBLE.high || frequency < PLAUSIBLE.low ? WITHOUT_ANTENNA : frequency;
}

} // namespace

void ModeLimits::Extend(EOperationMode mode, const FrequencyRange& range) {
    FrequencyRange& limits = m_limits[static_cast<std::size_t>(mode)];
    limits = limits.Join(range);
}

void ModeLimits::Copy(EOperationMode from, EOperationMode to) {
    m_limits[static_cast<std::size_t>(to)] = Get(from);
}

double ModeLimits::GetLowest(EOperationMode mode, EZANType type) const {
    return ToPlausibleLimit(Get(mode).low, type);
}

double ModeLimits::GetHighest(EOperationMode mode, EZANType type) const {
    return ToPlausibleLimit(Get(mode).high, type);
}

FrequencyRange ModeLimits::Get(EOperationMode mode) const {
    const auto index = static_cast<std::size_t>(mode);
    return index < MODE_COUNT ? m_limits[index] : FrequencyRange::None();
}
