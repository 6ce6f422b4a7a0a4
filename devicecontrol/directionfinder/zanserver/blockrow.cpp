#include "zanserver/blockrow.h"

#include "zanserver/tenths.h"

namespace ZANServer {

using KvZANCommon::RecordedBearing;

namespace {

constexpr double TENTHS = 10.0;
constexpr double HUNDREDTHS = 100.0;

std::optional<double> Measured(qint16 value, double unit) {
    return value == Bearing::NOT_MEASURED ? std::nullopt : std::optional(static_cast<double>(value) / unit);
}

EMode ModeOf(const BearingBlock& block) {
    if (block.kind != BearingBlock::Kind::Scan) {
        return EMODE_FFM;
    }
    return block.range == BearingBlock::WIDEBAND ? EMODE_WIDEBAND_FFM : EMODE_SCAN;
}

} // namespace

RecordedBearing BlockRow::Begin(const BearingBlock& block) {
    RecordedBearing row;
    row.timeMs = block.time;
    row.frequency = block.status.frequency;
    row.mode = ModeOf(block);
    return row;
}

void BlockRow::Put(const BearingBlock& block, std::size_t bearing, RecordedBearing& row) {
    const Bearing& measured = block.bearings[bearing];
    row.azimuth = WithinCircle(measured.azimuth) / TENTHS;
    row.elevation = Measured(measured.elevation, TENTHS);
    row.level = Measured(measured.level, HUNDREDTHS);
    row.quality = measured.quality;
    if (block.kind == BearingBlock::Kind::SuperResolution) {
        row.emitter = static_cast<double>(bearing);
    }
}

} // namespace ZANServer
