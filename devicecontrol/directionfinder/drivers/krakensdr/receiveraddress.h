#pragma once

#include <QString>
#include <QUrl>

#include <chrono>
#include <optional>

namespace KrakenSdr {

/// Where a receiver serves its bearings, and how they are taken:
/// "http://HOST:8081/DOA_value.html?interval=200". Port and path may be left out; the settings behind "?" are
/// not sent.
struct ReceiverAddress {
    QUrl url; ///< without the settings

    /// From request to request, 10 to 60,000 ms. A receiver keeps only its newest bearings, so it is asked at
    /// least as often as it renews them: in a recording of a moving one every 407 ms in the middle and never
    /// within less than 102 ms.
    std::chrono::milliseconds interval{100};
    /// For the whole answer, 10 to 10,000 ms. It has 2 to 36 kilobytes, which take some ms in a local
    /// network, and a second over a radio link that repeats.
    std::chrono::milliseconds timeout{1000};
    /// Percent of quality for each unit of confidence. Confidences of real receivers are from 0.5 to 5.5,
    /// with a median of 1.3, so that ten of them make a quality of 5 to 55, and those above 10 are all the
    /// best.
    double qualityFactor = 10.0;
    /// dB that are added to the level. Receivers tell it relative to their full scale at their gain (-22 to
    /// -84 in real records); what that is at the antenna is known to the operator only.
    double levelOffset = 0.0;

    static constexpr int DEFAULT_PORT = 8081;

    /// Nothing, with the reason, when a text is not such an address.
    static std::optional<ReceiverAddress> Parse(const QString& text, QString& reason);
};

} // namespace KrakenSdr
