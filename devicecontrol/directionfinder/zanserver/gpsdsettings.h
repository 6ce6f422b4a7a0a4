#pragma once

#include <QString>

#include <chrono>
#include <optional>

namespace ZANServer {

/// Where a gpsd listens.
struct GpsdAddress {
    QString host;
    quint16 port = 0;

    /// Reads "HOST", "HOST:PORT", "ADDRESS", "ADDRESS:PORT" or "[ADDRESS]:PORT" for an IPv6 address. Without
    /// a port it is gpsd's own, 2947. Nothing for any other text.
    [[nodiscard]] static std::optional<GpsdAddress> Read(const QString& text);

    /// As an operator writes it.
    [[nodiscard]] QString ToText() const;
};

/// The section `[Gpsd]` of the application's settings.
struct GpsdSettings {
    // The keys, with their section.
    static constexpr QStringView ADDRESS = u"Gpsd/Address";
    static constexpr QStringView MAX_AGE = u"Gpsd/MaxAge";
    static constexpr QStringView POSITION_RECEIVER = u"Gpsd/PositionReceiver";
    static constexpr QStringView HEADING_RECEIVER = u"Gpsd/HeadingReceiver";
    static constexpr QStringView PITCH_AND_ROLL = u"Gpsd/PitchAndRoll";

    /// The age limit where the settings have none, of what gpsd reports and of what the driver delivers,
    /// which comes from such receivers and compasses as well. Receivers report once a second: two reports may
    /// be lost before the position is. Within 3 s a ship at 30 knots covers 46 m, and one that turns by 3
    /// degrees a second turns by 9, which is what a bearing may be wrong by.
    static constexpr int DEFAULT_MAX_AGE_MS = 3000;
    static constexpr int SHORTEST_MAX_AGE_MS = 100;
    static constexpr int LONGEST_MAX_AGE_MS = 60000;

    GpsdAddress address{QStringLiteral("localhost"), 2947};
    std::chrono::milliseconds maxAge{DEFAULT_MAX_AGE_MS}; ///< also of what the driver delivers
    QString positionReceiver;    ///< whose positions count; empty: of the first one that has any
    QString headingReceiver;     ///< the same for heading, pitch and roll
    bool usePitchAndRoll = true; ///< the heading source gpsd brings pitch and roll, too

    /// Those of the application. What is not allowed has its default.
    [[nodiscard]] static GpsdSettings Read();
};

} // namespace ZANServer
