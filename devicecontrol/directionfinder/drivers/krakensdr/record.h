#pragma once

#include <QtGlobal>

#include <array>
#include <optional>
#include <string_view>

namespace KrakenSdr {

/// One line of a receiver: the newest bearing on one frequency.
struct Record {
    /// Of the spectrum: one value for each degree, in the direction in which the bearing counts.
    static constexpr std::size_t DIRECTIONS = 360;

    quint64 timeMs = 0;   ///< milliseconds since 1970-01-01 00:00:00 UTC
    double bearing = 0.0; ///< degrees clockwise, 0 to below 360: from the front of the array
    double confidence = 0.0;
    double frequency = 0.0;          ///< Hz
    std::optional<double> level;     ///< dB
    std::string_view station;        ///< its name; empty: none. Part of the line
    std::optional<double> latitude;  ///< degrees north
    std::optional<double> longitude; ///< degrees east
    /// Of the array's front, degrees clockwise from north; without it the front looks north.
    std::optional<double> heading;
    bool hasSpectrum = false;
    std::array<float, DIRECTIONS> spectrum{};
};

} // namespace KrakenSdr
