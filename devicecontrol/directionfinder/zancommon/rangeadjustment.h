#pragma once

#include "zancommon/antennadata.h"
#include "zancommon/frequencyrange.h"

#include <optional>

/// What becomes of a frequency range that is asked for, and why (`ZANCharacteristics::AdjustFrequencyRange`).
/// All in Hz.
///
/// Antennas belong to the characteristics, and are good until their antennas are read again.
struct RangeAdjustment {
    /// What a range that is not served lacks.
    enum class EMissing : int {
        NOTHING,    ///< it is served
        ANTENNA,    ///< an enabled antenna whose range contains the whole range
        SAMPLE_MODE ///< a sample mode for the antenna in the operation mode, with the realtime bandwidth
    };

    /// The border of two antennas.
    struct Border {
        double frequency = 0.0;             ///< the end of the antenna below, or the start of the one above
        const AntennaData* below = nullptr; ///< serves the start of the range. Never null
        const AntennaData* above = nullptr; ///< serves the stop of the range. Never null
    };

    FrequencyRange asked;
    /// The lowest and highest frequency of the operation mode, which are equal or crossed where no antenna
    /// serves the mode.
    FrequencyRange limits;
    double intoLimits = 0.0; ///< the first move: into the limits; negative: downwards
    /// That the range straddles after the first move: the one that it is moved to by the second move.
    std::optional<Border> border;
    double offBorder = 0.0; ///< the second move; 0, too, when a range on a border shall stay where it is
    FrequencyRange range;   ///< what has become of it: asked, moved by intoLimits and offBorder
    /// Serves the whole range; null when nothing serves it.
    const AntennaData* antenna = nullptr;
    /// Serves the start between the two moves, whether the range is served or not; null for none.
    const AntennaData* antennaOfStart = nullptr;
    EMissing missing = EMissing::NOTHING;

    [[nodiscard]] bool IsServed() const { return missing == EMissing::NOTHING; }
};
