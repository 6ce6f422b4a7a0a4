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
    void Extend(EOperationMode mode, const FrequencyRange& range);
    /// Gives a mode the limits of another one.
    void Copy(EOperationMode from, EOperationMode to);
    /// The frequencies of a mode as the device of a type reports them: a ZANFERN stays within 100 MHz to 450
    /// MHz; for any other one a limit that is missing or outside 9 kHz to 3.6 GHz is 25 MHz.
    [[nodiscard]] double GetLowest(EOperationMode mode, EZANType type) const;
    /// See `GetLowest`.
    [[nodiscard]] double GetHighest(EOperationMode mode, EZANType type) const;

private:
    [[nodiscard]] FrequencyRange Get(EOperationMode mode) const;

    static constexpr std::size_t MODE_COUNT = 15; // the operation modes 0 to 14

    std::array<FrequencyRange, MODE_COUNT> m_limits{};
};
