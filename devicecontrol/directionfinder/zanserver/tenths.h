#pragma once

#include <cmath>

namespace ZANServer {

/// Converts degrees to tenths of a degree, without full circles; 0 for NaN and infinity.
inline int ToTenths(double degrees) {
    return std::isfinite(degrees) ? static_cast<int>(std::lround(std::fmod(degrees, 360.0) * 10.0)) : 0;
}

/// The same angle from 0 to 3599, in tenths of a degree.
inline int WithinCircle(int tenths) {
    constexpr int FULL_CIRCLE = 3600;
    const int remainder = tenths % FULL_CIRCLE;
    return remainder < 0 ? remainder + FULL_CIRCLE : remainder;
}

} // namespace ZANServer
