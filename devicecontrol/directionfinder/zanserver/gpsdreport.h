#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace ZANServer {

/// One report of gpsd. Members that are missing, not a number or out of range hold nothing.
struct GpsdReport {
    enum class Kind {
        Version,    ///< gpsd's greeting
        Fix,        ///< TPV: `mode`, and with a fix the position
        Attitude,   ///< ATT
        Satellites, ///< SKY
        Other       ///< what the station does not use
    };

    Kind kind = Kind::Other;
    QString receiver;                ///< gpsd's name of the device, such as "/dev/ttyUSB0"
    std::optional<quint64> time;     ///< of the measurement, milliseconds since 1970-01-01 00:00:00 UTC
    int mode = 0;                    ///< 0 unknown, 1 no fix, 2 two dimensions, 3 three dimensions
    std::optional<double> latitude;  ///< degrees, north positive; only with a fix
    std::optional<double> longitude; ///< degrees, east positive; only with a fix
    std::optional<double> altitude;  ///< metres above mean sea level; only in mode 3
    std::optional<double> heading;   ///< degrees from true north
    std::optional<double> pitch;     ///< degrees
    std::optional<double> roll;      ///< degrees
    int satellitesUsed = 0;
    int satellitesSeen = 0;

    /// Whether the receiver knows where it is.
    [[nodiscard]] bool HasFix() const { return mode >= 2; }

    /// Reads one line, with or without its end. Nothing when it is not one whole JSON object with a class.
    [[nodiscard]] static std::optional<GpsdReport> Read(const QByteArray& line);
};

} // namespace ZANServer
