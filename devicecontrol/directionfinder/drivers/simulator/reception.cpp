#include "simulator/reception.h"

#include "simulator/platformmotion.h"
#include "simulator/propagation.h"

#include <algorithm>
#include <cmath>

namespace Simulator {

namespace {

bool IsOn(const Schedule& schedule, double time) {
    if (time < schedule.start || (schedule.stop && time >= *schedule.stop)) {
        return false;
    }
    return schedule.off <= 0.0 || std::fmod(time - schedule.start, schedule.on + schedule.off) < schedule.on;
}

} // namespace

std::span<const Reception::Signal> Reception::Receive(double time, const Place& station, double low,
                                                      double high) {
    m_signals.clear();
    for (const Emitter& emitter : m_scenario.emitters) {
        const double from = emitter.frequency - emitter.bandwidth / 2.0;
        const double to = emitter.frequency + emitter.bandwidth / 2.0;
        if (to <= low || from >= high || !IsOn(emitter.schedule, time)) {
            continue;
        }
        const Place place = PlatformMotion::GetPlace(emitter.track, time);
        const Sight sight = Propagation::Look(station, place);
        if (!Propagation::IsWithinHorizon(emitter.frequency, station, place, sight.distance)) {
            continue;
        }
        const double level = emitter.power - Propagation::GetPathLoss(sight.distance, emitter.frequency);
        // What comes from beyond the horizon does not come through the Earth.
        const bool mayBeBelow = emitter.frequency >= Propagation::BEYOND_HORIZON;
        m_signals.push_back({from, to, std::pow(10.0, level / 10.0), sight.azimuth,
                             mayBeBelow ? sight.elevation : std::max(sight.elevation, 0.0)});
    }
    return m_signals;
}

} // namespace Simulator
