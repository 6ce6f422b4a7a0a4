#pragma once

#include "zancommon/antennadata.h"
#include "zancommon/frequencyrange.h"

#include <optional>

/// How a requested frequency range is adjusted, and why (`ZANCharacteristics::AdjustFrequencyRange`). All in
/// Hz.
///
/// Antennas belong to the characteristics, and are valid until their antennas are read again.
struct RangeAdjustment {
    /// What is missing when a range is not served.
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
    /// The lowest and highest frequency of the operation mode; equal or reversed when no antenna serves the
    /// mode.
    FrequencyRange limits;
    double intoLimits = 0.0; ///< the first move: into the limits; negative: downwards
    /// Set when the range straddles the border of two antennas after the first move. The second move, if any,
    /// moves the range to this border.
    std::optional<Border> border;
    double offBorder = 0.0; ///< the second move; 0 as well when a range on a border is to stay there
    FrequencyRange range;   ///< the result: asked, moved by intoLimits and offBorder
    /// Serves the whole range; null when nothing serves it.
    const AntennaData* antenna = nullptr;
    /// Serves the start after the first move, whether or not the range is served; null for none.
    const AntennaData* antennaOfStart = nullptr;
    EMissing missing = EMissing::NOTHING;

    [[nodiscard]] bool IsServed() const { return missing == EMissing::NOTHING; }
};
