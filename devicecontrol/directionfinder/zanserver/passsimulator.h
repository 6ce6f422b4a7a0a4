#pragma once

#include "zanserver_export.h"

#include "zancommon/recordedbearing.h"

#include <QtGlobal>

#include <optional>
#include <random>

namespace ZANServer {

/// Computes the recording of a transmitting aircraft that passes a station on a ship at anchor, one row per
/// second.
///
/// The aircraft flies a racetrack at 3000 m and 100 m/s: straight past the station at 8 km to the north, a
/// half circle, back at 300 m beside the zenith, a half circle. Azimuth and elevation are computed in the
/// plane tangent to the WGS84 ellipsoid at the station; Earth's curvature, less than 0.1 degrees here, is
/// ignored. The first 600 rows contain both passes; a lap takes 722 rows and is repeated.
///
/// The ship swings through north at its anchor, rolls and pitches, by more than 5 degrees during a part of
/// the first pass. In a few rows of each lap the attitude is missing, so that the azimuth counts from north,
/// and in others the position. The level is that of free-space propagation. The quality falls with the range
/// and at low elevation. In some rows the signal is lost: the quality is 0, the azimuth arbitrary, and there
/// is no elevation.
///
/// The same seed gives the same recording, to the byte when written by `RecordingWriter`.
class ZANSERVER_EXPORT PassSimulator {
public:
    static constexpr quint64 DEFAULT_ROW_COUNT = 600;

    explicit PassSimulator(quint64 seed, quint64 rowCount = DEFAULT_ROW_COUNT);

    /// The next row; nothing after the last one.
    std::optional<KvZANCommon::RecordedBearing> Next();

private:
    ZANSERVER_NO_EXPORT double Uniform();
    ZANSERVER_NO_EXPORT double Normal(double deviation);
    ZANSERVER_NO_EXPORT void AddPlatform(KvZANCommon::RecordedBearing& bearing, double time,
                                         double timeInLap) const;
    ZANSERVER_NO_EXPORT void AddSignal(KvZANCommon::RecordedBearing& bearing, double flown);

    std::mt19937_64 m_random;
    quint64 m_rowCount;
    quint64 m_row = 0;
    double m_rollPhase;
    double m_pitchPhase;
    double m_swingPhase;
};

} // namespace ZANServer
