#pragma once

#include "zancommon/bearing.h"

#include <random>

/// A bearing of which every member is any number.
inline Bearing RandomBearing(std::mt19937& random) {
    const auto any = [&random] { return static_cast<quint16>(random()); };
    const auto anySigned = [&random] { return static_cast<qint16>(random()); };
    return {.channel = any(),
            .azimuth = any(),
            .elevation = anySigned(),
            .level = anySigned(),
            .marker = anySigned(),
            .azimuthSpread = any(),
            .averageCount = any(),
            .quality = any()};
}
