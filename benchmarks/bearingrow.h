#pragma once

#include "zancommon/recordedbearing.h"

#include <QtGlobal>

/// A row with all values, each with as many digits as usual.
inline KvZANCommon::RecordedBearing MakeBearingRow(quint64 number) {
    const auto at = static_cast<double>(number % 1000);
    KvZANCommon::RecordedBearing row;
    row.timeMs = 1767268800000 + number * 100;
    row.frequency = 127.5e6;
    row.azimuth = at * 0.3;
    row.elevation = at * 0.08;
    row.quality = 10.0 + at * 0.09;
    row.level = -90.0 + at * 0.05;
    row.heading = 355.0 - at * 0.01;
    row.pitch = at * 0.004 - 2.0;
    row.roll = 5.0 - at * 0.01;
    row.latitude = 55.0;
    row.longitude = 5.0;
    row.altitude = 15.0;
    return row;
}
