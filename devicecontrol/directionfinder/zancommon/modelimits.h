#pragma once

#include "zancommon/frequencyrange.h"
#include "zancommon/zandomain.h"

#include <array>
#include <cstddef>

/// The lowest and highest frequency (Hz) of each operation mode, over the antennas that serve it.
class ModeLimits {
public:
    ModeLimits() { Clear(); }

    /// Forgets all antennas.
    void Clear() { m_limits.fill(FrequencyRange::None()); }
    /// Adds the range of an antenna that serves the mode.
    void Extend(EOperationMode mode, const FrequencyRange& range) {
        FrequencyRange& limits = m_limits[static_cast<std::size_t>(mode)];
        limits = limits.Join(range);
    }
    /// Gives a mode the limits of another one.
    void Copy(EOperationMode from, EOperationMode to) { m_limits[static_cast<std::size_t>(to)] = Get(from); }

    /// The lowest frequency of a mode as a device of this type reports it: that of a ZANFERN is within 100
    /// MHz to 450 MHz; for other types a limit that is missing or outside 9 kHz to 3.6 GHz becomes 25 MHz.
    [[nodiscard]] double GetLowest(EOperationMode mode, EZANType type) const {
        return ToPlausible(Get(mode).low, type);
    }
    /// See `GetLowest`.
    [[nodiscard]] double GetHighest(EOperationMode mode, EZANType type) const {
        return ToPlausible(Get(mode).high, type);
    }

private:
    static constexpr std::size_t MODE_COUNT = 15; // the operation modes 0 to 14
    static constexpr FrequencyRange FERN{1e8, 4.5e8};
    static constexpr FrequencyRange PLAUSIBLE{9000.0, 3.6e9};
    static constexpr double WITHOUT_ANTENNA = 2.5e7;

    [[nodiscard]] FrequencyRange Get(EOperationMode mode) const {
        const auto index = static_cast<std::size_t>(mode);
        return index < MODE_COUNT ? m_limits[index] : FrequencyRange::None();
    }
    [[nodiscard]] static double ToPlausible(double frequency, EZANType type) {
        if (type == ZANTYPE_ZANFERN) {
            return FERN.Clip(frequency);
        }
        return frequency > PLAUSIBLE.high || frequency < PLAUSIBLE.low ? WITHOUT_ANTENNA : frequency;
    }

    std::array<FrequencyRange, MODE_COUNT> m_limits{};
};
