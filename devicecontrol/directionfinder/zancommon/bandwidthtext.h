#pragma once

#include <QString>

/// Bandwidths as texts for people.
class BandwidthText {
public:
    /// See `ZANCharacteristics::FormatBandwidth`.
    [[nodiscard]] static QString Format(double bandwidth, int precision, bool keepTrailingZeros);
};
