#pragma once

#include "simulator/scenario.h"

namespace Simulator {

/// Where something is seen from somewhere else.
struct Sight {
    double distance = 0.0;  ///< metres, straight
    double azimuth = 0.0;   ///< degrees from true north, clockwise, 0 to below 360
    double elevation = 0.0; ///< degrees above the horizontal plane of the one who looks
};

/// How a signal comes from one place to another.
class Propagation {
public:
    /// Where a target is seen from a place on the WGS84 ellipsoid. Straight lines: refraction is left out.
    static Sight Look(const Place& from, const Place& to);
    /// The place that is reached straight on along a great circle. \param distance metres
    static Place Move(const Place& from, double course, double distance);
    /// The loss in free space, dB, 0 or more.
    static double GetPathLoss(double distance, double frequency);
    /// Whether two stations can hear each other over the curved Earth. Below 30 MHz ground and sky carry
    /// the signal beyond the horizon; above it ends at the horizon of an Earth that is 4/3 times as large,
    /// which stands for refraction.
    static bool IsWithinHorizon(double frequency, const Place& a, const Place& b, double distance);
    /// Below it a signal reaches beyond the horizon. Hz
    static constexpr double BEYOND_HORIZON = 30e6;
};

} // namespace Simulator
