#pragma once

#include "zanserver/station.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

/// What a running station does at the moment, in one line: its mode, the frequency of its last bearing, how
/// many bearings come, and what is wrong, as in "scan, 121.5 MHz, 12.5 bearings/s; Could not open file ...".
/// It begins with "simulated device" when it is one.
class StatusLine {
public:
    using Clock = std::chrono::steady_clock;

    struct State {
        bool isSimulated = false;
        QString mode;
        std::optional<double> frequency; ///< Hz, of the last result; nothing when it is no bearing
        quint64 bearings = 0;            ///< published since the start
        QStringList problems;            ///< empty ones do not count
    };

    /// What the tree says of a running station; without its problems.
    [[nodiscard]] static State GetState(const ZANServer::Station& station);
    /// The line at a time. The rate is that since the call before.
    [[nodiscard]] QString Describe(const State& state, Clock::time_point now);

private:
    std::optional<Clock::time_point> m_lastTime; // of the call before
    quint64 m_lastBearings = 0;
};
