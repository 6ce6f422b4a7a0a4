#include "zanserver/passsimulator.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace ZANServer {

using KvZANCommon::RecordedBearing;

namespace {

constexpr double PI = std::numbers::pi;

constexpr quint64 START_TIME_MS = 1767268800000; // 2026-01-01 12:00:00 UTC
constexpr quint64 ROW_INTERVAL_MS = 1000;

// At anchor in the open sea.
constexpr double LATITUDE = 55.0;
constexpr double LONGITUDE = 5.0;
constexpr double ANTENNA_HEIGHT = 15.0; // m

// The aircraft
constexpr double FREQUENCY = 127.5e6;                      // Hz
constexpr double RADIATED_POWER = 40.0;                    // dBm
constexpr double FLIGHT_HEIGHT = 3000.0;                   // m
constexpr double SPEED = 100.0;                            // m/s
constexpr double LEG = 24000.0;                            // m, flown straight
constexpr double FAR_LEG = 8000.0;                         // m north of the station
constexpr double NEAR_LEG = 300.0;                         // m north of the station
constexpr double TURN_RADIUS = (FAR_LEG - NEAR_LEG) / 2.0; // m
constexpr double TURN = PI * TURN_RADIUS;                  // m
constexpr double LAP = 2.0 * (LEG + TURN);                 // m

// The station
constexpr double MEAN_HEADING = 355.0; // degrees
constexpr double NOISE_LEVEL = -105.0; // dBm
constexpr double BEARING_NOISE = 0.6;  // degrees; this and the following are standard deviations
constexpr double LEVEL_NOISE = 0.5;    // dB
constexpr double QUALITY_NOISE = 3.0;
constexpr double LOSS_PROBABILITY = 0.01;

/// A part of each lap, in seconds from its beginning.
struct Stretch {
    double begin;
    double end;
    [[nodiscard]] constexpr bool Holds(double time) const { return time >= begin && time < end; }
};
constexpr Stretch NO_ATTITUDE{60.0, 68.0};
constexpr Stretch NO_SIGNAL{296.0, 304.0}; // the wing of the turning aircraft is in the way
constexpr Stretch NO_POSITION{400.0, 412.0};

/// Metres from the station in its tangent plane.
struct Position {
    double east;
    double north;
};

/// The position of the aircraft after a distance of the lap.
Position OnTrack(double distance) {
    constexpr double CENTRE = (FAR_LEG + NEAR_LEG) / 2.0; // north of the station
    if (distance < LEG) {
        return {distance - LEG / 2.0, FAR_LEG};
    }
    distance -= LEG;
    if (distance < TURN) {
        const double angle = distance / TURN_RADIUS;
        return {LEG / 2.0 + TURN_RADIUS * std::sin(angle), CENTRE + TURN_RADIUS * std::cos(angle)};
    }
    distance -= TURN;
    if (distance < LEG) {
        return {LEG / 2.0 - distance, NEAR_LEG};
    }
    const double angle = (distance - LEG) / TURN_RADIUS;
    return {-LEG / 2.0 - TURN_RADIUS * std::sin(angle), CENTRE - TURN_RADIUS * std::cos(angle)};
}

double Degrees(double radians) {
    return radians * 180.0 / PI;
}

double Wave(double time, double period, double phase) {
    return std::sin(2.0 * PI * time / period + phase);
}

double FullCircle(double degrees) {
    // `fmod` twice, because a tiny negative angle plus 360 rounds to 360.
    return std::fmod(std::fmod(degrees, 360.0) + 360.0, 360.0);
}

/// A group of high waves that passes in each lap, 0 to 1.
double WaveGroup(double timeInLap) {
    const double x = (timeInLap - 180.0) / 25.0;
    return std::exp(-x * x / 2.0);
}

} // namespace

PassSimulator::PassSimulator(quint64 seed, quint64 rowCount)
    : m_random(seed)
    , m_rowCount(rowCount)
    , m_rollPhase(2.0 * PI * Uniform())
    , m_pitchPhase(2.0 * PI * Uniform())
    , m_swingPhase(2.0 * PI * Uniform()) {}

std::optional<RecordedBearing> PassSimulator::Next() {
    if (m_row == m_rowCount) {
        return {};
    }
    RecordedBearing bearing;
    bearing.timeMs = START_TIME_MS + m_row * ROW_INTERVAL_MS;
    bearing.frequency = FREQUENCY;
    const double time = static_cast<double>(m_row * ROW_INTERVAL_MS) / 1000.0;
    const double flown = std::fmod(time * SPEED, LAP);
    ++m_row;
    AddPlatform(bearing, time, flown / SPEED);
    AddSignal(bearing, flown);
    return bearing;
}

void PassSimulator::AddPlatform(RecordedBearing& bearing, double time, double timeInLap) const {
    if (!NO_ATTITUDE.Holds(timeInLap)) {
        const double group = WaveGroup(timeInLap);
        bearing.heading = FullCircle(MEAN_HEADING + 12.0 * Wave(time, 900.0, m_swingPhase));
        bearing.pitch = (1.5 + 4.5 * group) * Wave(time, 7.3, m_pitchPhase);
        bearing.roll = (2.5 + 5.5 * group) * Wave(time, 11.7, m_rollPhase);
    }
    if (!NO_POSITION.Holds(timeInLap)) {
        bearing.latitude = LATITUDE;
        bearing.longitude = LONGITUDE;
        bearing.altitude = ANTENNA_HEIGHT;
    }
}

/// Only one random number is drawn per statement, because the order within an expression depends on the
/// compiler.
void PassSimulator::AddSignal(RecordedBearing& bearing, double flown) {
    const bool isLost = Uniform() < LOSS_PROBABILITY || NO_SIGNAL.Holds(flown / SPEED);
    if (isLost) {
        bearing.azimuth = 360.0 * Uniform();
        bearing.level = NOISE_LEVEL + Normal(LEVEL_NOISE);
        return;
    }
    const Position position = OnTrack(flown);
    const double distance = std::hypot(position.east, position.north);
    const double height = FLIGHT_HEIGHT - ANTENNA_HEIGHT;
    const double range = std::hypot(distance, height);
    const double elevation = Degrees(std::atan2(height, distance));
    const double trueBearing = Degrees(std::atan2(position.east, position.north));

    // Near the zenith a small error in direction is a large one in azimuth.
    const double azimuthError = Normal(BEARING_NOISE * range / distance);
    bearing.azimuth = FullCircle(trueBearing - bearing.heading.value_or(0.0) + azimuthError);
    bearing.elevation = elevation + Normal(BEARING_NOISE);
    const double pathLoss = 20.0 * std::log10(range) + 20.0 * std::log10(FREQUENCY) - 147.55; // free space
    bearing.level = RADIATED_POWER - pathLoss + Normal(LEVEL_NOISE);
    const double lowElevation = std::max(0.0, 20.0 - elevation);
    const double quality = 100.0 - 3.5 * range / 1000.0 - lowElevation + Normal(QUALITY_NOISE);
    bearing.quality = std::clamp(quality, 1.0, 100.0);
}

/// 0 to below 1. The distributions of the standard library are not used, because they differ between
/// implementations.
double PassSimulator::Uniform() {
    return static_cast<double>(m_random() >> 11U) * 0x1p-53;
}

/// The sum of twelve uniform numbers is close enough to a normal distribution, bounded by 6 deviations, and
/// the same everywhere.
double PassSimulator::Normal(double deviation) {
    constexpr int COUNT = 12;
    double sum = -COUNT / 2.0;
    for (int i = 0; i < COUNT; ++i) {
        sum += Uniform();
    }
    return sum * deviation;
}

} // namespace ZANServer
