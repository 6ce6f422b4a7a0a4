#include "simulator/platformmotion.h"

#include "simulator/propagation.h"
#include "simulator/randomnumbers.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Simulator {

namespace {

constexpr double TURN = 2.0 * std::numbers::pi;

double FullCircle(double degrees) {
    // Cut twice: a tiny negative angle plus 360 is 360 again.
    return std::fmod(std::fmod(degrees, 360.0) + 360.0, 360.0);
}

Place Between(const WayPoint& a, const WayPoint& b, double time) {
    const double part = (time - a.at) / (b.at - a.at);
    const auto between = [part](double from, double to) { return from + part * (to - from); };
    const double turn = std::remainder(b.place.longitude - a.place.longitude, 360.0); // the short way round
    return {between(a.place.latitude, b.place.latitude),
            std::remainder(a.place.longitude + part * turn, 360.0),
            between(a.place.altitude, b.place.altitude)};
}

Place OnWay(const Track& track, double time) {
    const double begin = track.way.front().at;
    const double end = track.way.back().at;
    if (track.repeat && time > end) {
        time = begin + std::fmod(time - begin, end - begin);
    }
    const auto next = std::ranges::upper_bound(track.way, time, {}, &WayPoint::at);
    if (next == track.way.begin()) {
        return next->place;
    }
    return next == track.way.end() ? track.way.back().place : Between(*(next - 1), *next, time);
}

} // namespace

PlatformMotion::PlatformMotion(const Platform& platform, quint64 seed)
    : m_platform(platform) {
    RandomNumbers random(seed);
    for (double& phase : m_phases) {
        phase = TURN * random.Uniform();
    }
}

PlatformMotion::State PlatformMotion::GetState(double time) const {
    State state;
    state.place = GetPlace(m_platform.track, time);
    state.place.altitude += GetSwing(m_platform.heave, 3, time);
    state.heading =
        FullCircle(m_platform.heading.value_or(GetCourse(time)) + GetSwing(m_platform.yaw, 0, time));
    state.pitch = GetSwing(m_platform.pitch, 1, time);
    state.roll = GetSwing(m_platform.roll, 2, time);
    return state;
}

Place PlatformMotion::GetPlace(const Track& track, double time) {
    if (!track.way.empty()) {
        return OnWay(track, time);
    }
    Place place = track.start;
    if (track.speed > 0.0) {
        place = Propagation::Move(place, track.course, track.speed * time);
    }
    constexpr double HIGHEST = 100'000.0; // m
    place.altitude = std::clamp(place.altitude + track.climb * time, std::min(place.altitude, 0.0), HIGHEST);
    return place;
}

double PlatformMotion::GetSwing(const Swing& swing, std::size_t phase, double time) const {
    return swing.amplitude == 0.0
               ? 0.0
               : swing.amplitude * std::sin(TURN * time / swing.period + m_phases.at(phase));
}

/// The direction of the way around a moment: at the points of a way a ship turns, and does not jump.
double PlatformMotion::GetCourse(double time) const {
    if (m_platform.track.way.empty()) {
        return m_platform.track.course;
    }
    constexpr double HALF_TURN = 30.0; // s
    const double before = std::max(time - HALF_TURN, 0.0);
    const Place a = GetPlace(m_platform.track, before);
    const Place b = GetPlace(m_platform.track, before + 2.0 * HALF_TURN);
    const Sight sight = Propagation::Look(a, b);
    return sight.distance > 1.0 ? sight.azimuth : 0.0;
}

} // namespace Simulator
