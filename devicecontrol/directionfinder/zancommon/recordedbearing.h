#pragma once

#include <QtGlobal>

#include <array>
#include <limits>
#include <optional>
#include <string_view>

namespace KvZANCommon {

/// One row of a bearing recording. Optional members without a value were not measured.
struct RecordedBearing {
    quint64 timeMs = 0;     ///< milliseconds since 1970-01-01 00:00:00 UTC
    double frequency = 0.0; ///< Hz, above 0
    /// Degrees clockwise, 0 to below 360: from the platform's bow when `heading` has a value, else from true
    /// north.
    double azimuth = 0.0;
    std::optional<double> elevation; ///< degrees, -90 to 90
    double quality = 0.0;            ///< 0 to 100, 0: no signal
    std::optional<double> level;     ///< dB
    std::optional<double> heading;   ///< of the platform, degrees clockwise from true north, 0 to below 360
    std::optional<double> pitch;     ///< of the platform, degrees, -90 to 90
    std::optional<double> roll;      ///< of the platform, degrees, -180 to 180
    std::optional<double> latitude;  ///< of the platform, WGS84, degrees north
    std::optional<double> longitude; ///< of the platform, WGS84, degrees east
    std::optional<double> altitude;  ///< of the platform, metres
    std::optional<double> mode = {}; ///< in which the device measured, a number of `EMode`
    /// Of super resolution: the number of the emitter, counted from 0, or `NO_EMITTER`.
    std::optional<double> emitter = {};
    /// Of the position: milliseconds since 1970-01-01 00:00:00 UTC, a whole number.
    std::optional<double> positionTimeMs = {};

    /// Super resolution has found no emitter. Azimuth and quality are 0, and level and elevation have no
    /// value.
    static constexpr double NO_EMITTER = -1.0;

    bool operator==(const RecordedBearing&) const = default;
};

/// How much earlier than the latest row before it a row of a recording may be: the channels of a device
/// deliver their bearings independently of one another.
inline constexpr quint64 LARGEST_STEP_BACK_MS = 10'000;

/// Whether the order of time of a recording does not allow a row behind rows of up to a time.
[[nodiscard]] constexpr bool IsTooEarly(quint64 timeMs, quint64 latestTimeMs) {
    return timeMs < latestTimeMs && latestTimeMs - timeMs > LARGEST_STEP_BACK_MS;
}

/// One column of a bearing recording: its name in the header line and the values it can hold.
struct RecordingColumn {
    std::string_view name;
    double minimum = 0.0;
    double maximum = 0.0;
    bool circular = false; ///< the maximum means the same as the minimum, and is not allowed
    int decimals = 0;      ///< as written; `AS_NEEDED`: as many as are needed to read the same value back
    /// The member that the column fills: one of these two, except for the column of the time.
    double RecordedBearing::*required = nullptr;
    std::optional<double> RecordedBearing::*optional = nullptr;

    static constexpr int AS_NEEDED = -1;

    [[nodiscard]] constexpr bool IsTime() const { return !required && !optional; }
    /// False for NaN, too.
    [[nodiscard]] constexpr bool Holds(double value) const {
        return value >= minimum && (circular ? value < maximum : value <= maximum);
    }
};

/// The columns in the order of the file. A recording is a CSV file: a header line with the column names, then
/// one row per bearing in the order of time (`IsTooEarly`). An empty field means that the value was not
/// measured; fields of members that are not optional are never empty. Further columns may follow
/// (`FURTHER_RECORDING_COLUMNS`).
inline constexpr std::array<RecordingColumn, 12> RECORDING_COLUMNS = [] {
    using B = RecordedBearing;
    constexpr double LAST_TIME = 253402300799999.0; // the end of the year 9999
    constexpr double ABOVE_ZERO = std::numeric_limits<double>::denorm_min();
    constexpr double RADIO_LIMIT = 3e12; // 3000 GHz, the upper end of radio waves
    constexpr int AS_NEEDED = RecordingColumn::AS_NEEDED;
    // The level becomes a 16-bit number of hundredths.
    return std::array<RecordingColumn, 12>{{
        {"time_ms", 0.0, LAST_TIME, false, 0, nullptr, nullptr},
        {"frequency_hz", ABOVE_ZERO, RADIO_LIMIT, false, AS_NEEDED, &B::frequency, nullptr},
        {"azimuth_deg", 0.0, 360.0, true, 1, &B::azimuth, nullptr},
        {"elevation_deg", -90.0, 90.0, false, 1, nullptr, &B::elevation},
        {"quality", 0.0, 100.0, false, 0, &B::quality, nullptr},
        {"level_db", -327.68, 327.67, false, 2, nullptr, &B::level},
        {"heading_deg", 0.0, 360.0, true, 1, nullptr, &B::heading},
        {"pitch_deg", -90.0, 90.0, false, 1, nullptr, &B::pitch},
        {"roll_deg", -180.0, 180.0, false, 1, nullptr, &B::roll},
        {"latitude_deg", -90.0, 90.0, false, 7, nullptr, &B::latitude},
        {"longitude_deg", -180.0, 180.0, false, 7, nullptr, &B::longitude},
        {"altitude_m", -12000.0, 100000.0, false, 1, nullptr, &B::altitude},
    }};
}();

/// The columns that a recording may have behind those, in this order; each may be left out. A recording with
/// the time of the position holds what a station has used: its position and heading count whatever the
/// sources of position and heading are.
inline constexpr std::array<RecordingColumn, 3> FURTHER_RECORDING_COLUMNS = [] {
    using B = RecordedBearing;
    constexpr double LAST_TIME = RECORDING_COLUMNS.front().maximum;
    constexpr double LAST_MODE = 6.0; // EMODE_TDMA
    constexpr double MOST_EMITTERS = 65535.0;
    return std::array<RecordingColumn, 3>{{
        {"mode", 0.0, LAST_MODE, false, 0, nullptr, &B::mode},
        {"emitter", B::NO_EMITTER, MOST_EMITTERS, false, 0, nullptr, &B::emitter},
        {"position_time_ms", 0.0, LAST_TIME, false, 0, nullptr, &B::positionTimeMs},
    }};
}();

} // namespace KvZANCommon
