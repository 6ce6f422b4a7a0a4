#pragma once

/// \file
/// What a scenario holds: plain values, checked by `ScenarioReader`. Times are seconds since the begin of the
/// scenario, angles degrees, true, clockwise from north.

#include "zancommon/driverrecords.h"
#include "zancommon/zandomain.h"

#include <QString>

#include <optional>
#include <vector>

namespace Simulator {

/// A place on or above the WGS84 ellipsoid.
struct Place {
    double latitude = 0.0;  ///< degrees, north positive
    double longitude = 0.0; ///< degrees, east positive
    double altitude = 0.0;  ///< metres
};

struct WayPoint {
    double at = 0.0; ///< seconds
    Place place;
};

/// Where something is: it stands, runs straight on from its start, or follows a way.
struct Track {
    Place start;
    double course = 0.0;
    double speed = 0.0;        ///< m/s over ground
    double climb = 0.0;        ///< m/s
    std::vector<WayPoint> way; ///< in the order of their times; when there is one, the rest does not count
    bool repeat = false;       ///< the way begins again when it ends
};

/// A sine.
struct Swing {
    double amplitude = 0.0; ///< degrees, or metres
    double period = 10.0;   ///< seconds
};

struct Compass {
    QString type;
    double resolution = 0.1;
    bool magnetic = false;
    bool pitchRoll = true;
};

struct Platform {
    Track track;
    std::optional<double> heading; ///< of a platform that does not follow its course
    Swing yaw;
    Swing pitch;
    Swing roll;
    Swing heave;
    double declination = 0.0;
    std::vector<Compass> compasses;
    int satellites = 9; ///< that the GPS receiver sees; fewer than 4 make no fix
    int gpsQuality = 1;
};

struct Antenna {
    QString name;                  ///< of the catalogue
    int converter = 0;             ///< place in the list of converters
    int compass = -1;              ///< place in the list of compasses; -1: none
    double mechanicalOffset = 0.0; ///< how it is mounted
};

struct HardwareComponent {
    QString name;
    QString serialNumber;
    QString version;
    bool operational = true;
};

/// Channels from a start to a stop frequency, Hz.
struct ScanRange {
    double start = 0.0;
    double step = 0.0;
    double stop = 0.0;
};

struct Device {
    EZANType type = ZANTYPE_ZANTIDE;
    std::vector<EZANOptions> options;
    double noiseDensity = -160.0;  ///< dBm in 1 Hz, of the receiver and what surrounds it
    double frequency = 121.5e6;    ///< Hz, to which it is tuned at first
    std::vector<ScanRange> ranges; ///< that it measures until it is given others
    std::vector<EZANConverter> converters;
    std::vector<Antenna> antennas; ///< the first one that fits a frequency serves it
    std::vector<HardwareComponent> components;
};

/// When an emitter transmits.
struct Schedule {
    double start = 0.0;
    std::optional<double> stop; ///< empty: never
    double on = 0.0;            ///< seconds of transmission, then `off` seconds of silence, again and again
    double off = 0.0;           ///< 0: no silence
};

struct Emitter {
    QString name;
    double frequency = 0.0; ///< Hz, of the middle
    double bandwidth = 0.0; ///< Hz
    double power = 0.0;     ///< dBm, radiated in the direction of the station (EIRP)
    Schedule schedule;
    Track track;
};

/// What the device is to do from a moment on, without being told by the application.
struct Wish {
    double at = 0.0;
    std::optional<EMode> mode;
    std::optional<double> frequency;           ///< Hz
    std::optional<double> averageTime;         ///< seconds
    std::optional<double> resolutionBandwidth; ///< Hz
    std::optional<bool> superResolution;
    std::optional<std::vector<ScanRange>> ranges;
};

enum class EFault : int { LOST_LINK, SILENCE, SLOW, CALIBRATION, COUNT };

struct Fault {
    EFault kind = EFault::SILENCE;
    double at = 0.0;
    double duration = 0.0; ///< seconds
    double delay = 1.0;    ///< seconds of the real clock that each operation takes while the device is slow
};

struct Scenario {
    QString name;
    quint64 seed = 1;
    quint64 startTime = 1767268800000; ///< milliseconds since 1970-01-01 00:00:00 UTC
    Platform platform;
    Device device;
    std::vector<Emitter> emitters;
    std::vector<Wish> wishes; ///< in the order of their times
    std::vector<Fault> faults;
};

} // namespace Simulator
