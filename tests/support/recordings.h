#pragma once

#include <QByteArray>

/// The first line of a recording of bearings.
inline const QByteArray RECORDING_HEADER =
    "time_ms,frequency_hz,azimuth_deg,elevation_deg,quality,level_db,heading_deg,pitch_deg,roll_deg,"
    "latitude_deg,longitude_deg,altitude_m\n";
