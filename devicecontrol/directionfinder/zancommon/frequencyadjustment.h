#pragma once

#include "zancommon/antennadata.h"
#include "zancommon/frequencyrange.h"

/// How a requested frequency is adjusted, and why (`ZANCharacteristics::AdjustFrequency`). All in Hz.
///
/// The antenna belongs to the characteristics, and is valid until their antennas are read again.
struct FrequencyAdjustment {
    /// What is missing when a frequency is not served.
    enum class EMissing : int {
        NOTHING, ///< it is served
        MODE,    ///< an operation mode that serves a frequency
        ANTENNA, ///< an enabled antenna whose range contains the frequency
        WIDTH    ///< an antenna whose range is as wide as the band
    };

    double asked = 0.0;
    /// The lowest and highest frequency of the operation mode; equal or reversed when no antenna serves the
    /// mode.
    FrequencyRange limits;
    double bandwidth = 0.0;  ///< of the band around the frequency, in wideband FFM
    double intoLimits = 0.0; ///< the first move: into the limits; negative: downwards
    double intoRange = 0.0;  ///< the second move: so that the band lies in the range of the antenna
    double frequency = 0.0;  ///< the result: asked + intoLimits + intoRange
    /// Serves the frequency, though with `EMissing::WIDTH` not the whole band. Null when nothing serves it.
    const AntennaData* antenna = nullptr;
    EMissing missing = EMissing::NOTHING;

    [[nodiscard]] bool IsServed() const { return missing == EMissing::NOTHING; }
};
