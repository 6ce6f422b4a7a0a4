#include "simulator/propagation.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Simulator {

namespace {

constexpr double PI = std::numbers::pi;

// WGS84
constexpr double SEMI_MAJOR_AXIS = 6378137.0; // m
constexpr double FLATTENING = 1.0 / 298.257223563;
constexpr double SQUARED_ECCENTRICITY = FLATTENING * (2.0 - FLATTENING);
constexpr double MEAN_RADIUS = 6371008.8; // m

constexpr double SPEED_OF_LIGHT = 299792458.0; // m/s

double Radians(double degrees) {
    return degrees * PI / 180.0;
}

double Degrees(double radians) {
    return radians * 180.0 / PI;
}

/// Sines and cosines of a place.
struct Direction {
    explicit Direction(const Place& place)
        : sinLatitude(std::sin(Radians(place.latitude)))
        , cosLatitude(std::cos(Radians(place.latitude)))
        , sinLongitude(std::sin(Radians(place.longitude)))
        , cosLongitude(std::cos(Radians(place.longitude))) {}

    double sinLatitude;
    double cosLatitude;
    double sinLongitude;
    double cosLongitude;
};

/// Metres from the middle of the Earth.
struct Cartesian {
    Cartesian(const Direction& d, double altitude) {
        const double radius =
            SEMI_MAJOR_AXIS / std::sqrt(1.0 - SQUARED_ECCENTRICITY * d.sinLatitude * d.sinLatitude);
        x = (radius + altitude) * d.cosLatitude * d.cosLongitude;
        y = (radius + altitude) * d.cosLatitude * d.sinLongitude;
        z = (radius * (1.0 - SQUARED_ECCENTRICITY) + altitude) * d.sinLatitude;
    }

    double x;
    double y;
    double z;
};

} // namespace

Sight Propagation::Look(const Place& from, const Place& to) {
    const Direction here(from);
    const Cartesian a(here, from.altitude);
    const Cartesian b(Direction(to), to.altitude);
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const double dz = b.z - a.z;
    const double east = here.cosLongitude * dy - here.sinLongitude * dx;
    const double outward = here.cosLongitude * dx + here.sinLongitude * dy; // from the axis of the Earth
    const double north = here.cosLatitude * dz - here.sinLatitude * outward;
    const double up = here.cosLatitude * outward + here.sinLatitude * dz;
    const double azimuth = std::fmod(Degrees(std::atan2(east, north)) + 360.0, 360.0);
    return {std::sqrt(dx * dx + dy * dy + dz * dz), azimuth,
            Degrees(std::atan2(up, std::sqrt(east * east + north * north)))};
}

Place Propagation::Move(const Place& from, double course, double distance) {
    const Direction here(from);
    const double angle = distance / MEAN_RADIUS;
    const double sinLatitude =
        here.sinLatitude * std::cos(angle) + here.cosLatitude * std::sin(angle) * std::cos(Radians(course));
    const double turned = std::atan2(std::sin(Radians(course)) * std::sin(angle) * here.cosLatitude,
                                     std::cos(angle) - here.sinLatitude * sinLatitude);
    return {Degrees(std::asin(std::clamp(sinLatitude, -1.0, 1.0))),
            std::remainder(from.longitude + Degrees(turned), 360.0), from.altitude};
}

double Propagation::GetPathLoss(double distance, double frequency) {
    return std::max(0.0, 20.0 * std::log10(4.0 * PI * std::max(distance, 1.0) * frequency / SPEED_OF_LIGHT));
}

bool Propagation::IsWithinHorizon(double frequency, const Place& a, const Place& b, double distance) {
    constexpr double DIAMETER = 2.0 * 4.0 / 3.0 * MEAN_RADIUS;
    const auto toHorizon = [](double altitude) { return std::sqrt(DIAMETER * std::max(altitude, 0.0)); };
    return frequency < BEYOND_HORIZON || distance <= toHorizon(a.altitude) + toHorizon(b.altitude);
}

} // namespace Simulator
