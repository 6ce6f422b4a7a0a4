#include "simulator/accuracy.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace Simulator {

namespace {

struct Method {
    double aperture;  // wavelengths
    double deviation; // degrees, without noise
};

// In the order of `EZANMethod`: loops and small Adcock antennas, circular arrays, the same with a
// high-resolution algorithm, small arrays of whole vectors.
constexpr std::array<Method, 4> METHODS{{{0.2, 2.0}, {0.8, 0.7}, {0.8, 0.4}, {0.4, 1.2}}};

} // namespace

double Accuracy::GetDeviation(EZANMethod method, double signalToNoise, double count) {
    const Method& row = METHODS.at(static_cast<std::size_t>(method));
    const double radians = 1.0 / (std::numbers::pi * row.aperture * std::sqrt(2.0 * signalToNoise * count));
    const double byNoise = radians * 180.0 / std::numbers::pi;
    constexpr double ARBITRARY = 104.0; // degrees, of azimuths that are spread evenly over the circle
    return std::min(std::sqrt(row.deviation * row.deviation + byNoise * byNoise), ARBITRARY);
}

double Accuracy::GetQuality(double deviation) {
    constexpr double POOR = 12.0; // degrees
    return std::clamp(100.0 * std::exp(-deviation / POOR), 1.0, 100.0);
}

} // namespace Simulator
