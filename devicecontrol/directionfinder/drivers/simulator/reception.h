#pragma once

#include "simulator/scenario.h"

#include <span>
#include <vector>

namespace Simulator {

/// The signals that arrive at the station's antenna.
class Reception {
public:
    struct Signal {
        double low = 0.0;       ///< Hz
        double high = 0.0;      ///< Hz
        double power = 0.0;     ///< mW, over the whole bandwidth
        double azimuth = 0.0;   ///< degrees from true north
        double elevation = 0.0; ///< degrees
    };

    explicit Reception(const Scenario& scenario)
        : m_scenario(scenario) {}

    /// Those that are at least in part within a band, in the order of the scenario. Good until the next call.
    /// \param time seconds since the begin of the scenario
    std::span<const Signal> Receive(double time, const Place& station, double low, double high);

private:
    const Scenario& m_scenario;
    std::vector<Signal> m_signals;
};

} // namespace Simulator
