#pragma once

#include "zanserver_export.h"

#include "zanserver/recordedbearing.h"

#include <QtGlobal>

#include <optional>
#include <random>

namespace ZANServer {

/// Computes the recording of an aircraft that transmits and passes a station on a ship at anchor, one row a
/// second.
///
/// The aircraft flies a racetrack at 3000 m and 100 m/s: straight past the station at 8 km to the north,
/// a half circle, back at 300 m beside the zenith, a half circle. Azimuth and elevation are those in the
/// plane tangent to the WGS84 ellipsoid at the station; Earth's curvature, less than 0.1 degrees here, is
/// left out. The first 600 rows hold both passes; a lap takes 722 rows and is repeated.
///
/// The ship swings through north at its anchor, rolls and pitches, and does so beyond 5 degrees for a stretch
/// of the first pass. For a few rows of each lap the attitude is missing, so that the azimuth is one from
/// north, and for others the position. The level is that of free-space propagation. The quality falls with
/// the range and at low elevation. Now and then the signal is lost: the quality is 0, the azimuth arbitrary,
/// and there is no elevation.
///
/// The same seed gives the same recording, to the byte when written by `RecordingWriter`.
class ZANSERVER_EXPORT PassSimulator {
public:
    static constexpr quint64 DEFAULT_ROW_COUNT = 600;

    explicit PassSimulator(quint64 seed, quint64 rowCount = DEFAULT_ROW_COUNT);

    /// The next row; nothing after the last one.
    std::optional<RecordedBearing> Next();

private:
    double Uniform();
    double Normal(double deviation);
    void AddPlatform(RecordedBearing& bearing, double time, double timeInLap) const;
    void AddSignal(RecordedBearing& bearing, double flown);

    std::mt19937_64 m_random;
    quint64 m_rowCount;
    quint64 m_row = 0;
    double m_rollPhase;
    double m_pitchPhase;
    double m_swingPhase;
};

} // namespace ZANServer
