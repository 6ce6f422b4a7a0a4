#pragma once

#include "simulator/scenario.h"

#include <array>

namespace Simulator {

/// Where a platform is and how it lies in the water, by the time in seconds since the begin of the scenario.
class PlatformMotion {
public:
    struct State {
        Place place;
        double heading = 0.0; ///< degrees from true north, 0 to below 360
        double pitch = 0.0;
        double roll = 0.0;
    };

    /// The swings begin at phases that the seed gives.
    PlatformMotion(const Platform& platform, quint64 seed);

    [[nodiscard]] State GetState(double time) const;
    /// Where something is on its way.
    static Place GetPlace(const Track& track, double time);

private:
    [[nodiscard]] double GetSwing(const Swing& swing, std::size_t phase, double time) const;
    [[nodiscard]] double GetCourse(double time) const;

    const Platform& m_platform;
    std::array<double, 4> m_phases{};
};

} // namespace Simulator
