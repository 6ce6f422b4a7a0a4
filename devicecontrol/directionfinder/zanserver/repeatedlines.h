#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace ZANServer {

/// Keeps a log from being flooded: of equal lines it passes on the first one and then, once a minute, the
/// number of repetitions. Lines that differ only in their numbers (time, thread, port) are equal. A line of
/// more than 1000 bytes is cut. Of different lines 64 per minute are passed on, and the others are counted.
/// One thread.
class RepeatedLines {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Takes a line and returns what is to be written: the counts of the last minute if that is over, then
    /// the line if it is to be passed on.
    std::string Add(std::string_view line, Time now);
    /// The counts that have not been passed on yet. All lines count as new afterwards.
    std::string TakeCounts();

private:
    struct Repetition {
        std::string line;
        std::size_t count = 0; // of repetitions that were not passed on
    };

    std::map<std::string, Repetition> m_repetitions;
    std::size_t m_omittedCount = 0;
    Time m_start;
};

} // namespace ZANServer
