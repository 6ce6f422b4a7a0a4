#include "zancommon/rowblock.h"

#include <algorithm>
#include <cmath>

namespace KvZANCommon {

namespace {

/// Whether a row belongs to the block of the row before: it was measured at the same moment, in the same
/// mode, on the same frequency, from the same platform, and is the next one of the same emitters, if these
/// are numbered.
bool BelongTogether(const RecordedBearing& a, const RecordedBearing& b) {
    if (a.timeMs != b.timeMs) {
        return false;
    }
    if (a.emitter ? b.emitter != *a.emitter + 1.0 || *a.emitter == RecordedBearing::NO_EMITTER
                  : b.emitter || a.mode == EMODE_FFM) {
        return false;
    }
    RecordedBearing sameBearing = b;
    sameBearing.azimuth = a.azimuth;
    sameBearing.elevation = a.elevation;
    sameBearing.quality = a.quality;
    sameBearing.level = a.level;
    sameBearing.emitter = a.emitter;
    return sameBearing == a;
}

Bearing ToBearing(const RecordedBearing& row) {
    constexpr int FULL_CIRCLE = 3600;
    Bearing bearing;
    bearing.azimuth = static_cast<quint16>(std::lround(row.azimuth * 10.0) % FULL_CIRCLE);
    if (row.elevation) {
        bearing.elevation = static_cast<qint16>(std::lround(*row.elevation * 10.0));
    }
    if (row.level) {
        // The lowest 16-bit number means that there is no level.
        bearing.level = static_cast<qint16>(std::max(std::lround(*row.level * 100.0), -32767L));
    }
    bearing.averageCount = 1;
    bearing.quality = static_cast<quint16>(std::lround(row.quality));
    return bearing;
}

} // namespace

bool RowBlock::Add(const RecordedBearing& row) {
    if (!m_last) {
        m_first = row;
    } else if (m_bearings.size() >= MAX_BEARINGS || !BelongTogether(*m_last, row)) {
        return false;
    }
    m_last = row;
    if (row.emitter != RecordedBearing::NO_EMITTER) {
        m_bearings.push_back(ToBearing(row));
    }
    return true;
}

void RowBlock::Clear() {
    m_last.reset();
    m_bearings.clear();
}

FFMData RowBlock::GetResult() const {
    const Bearing& bearing = m_bearings.front();
    return {.time = m_first.timeMs,
            .frequency = m_first.frequency,
            .azimuth = bearing.azimuth,
            .elevation = bearing.elevation,
            .level = bearing.level,
            .averageCount = bearing.averageCount,
            .quality = bearing.quality};
}

StatusStruct RowBlock::GetStatus() const {
    StatusStruct status;
    status.frequency = m_first.frequency;
    status.heading = m_first.heading;
    status.pitch = m_first.pitch;
    status.roll = m_first.roll;
    status.latitude = m_first.latitude;
    status.longitude = m_first.longitude;
    status.altitude = m_first.altitude;
    return status;
}

} // namespace KvZANCommon
