#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace ZANServer {

/// Keeps a log from being flooded: of lines that are equal it passes on the first one, and then, once a
/// minute, how often they came. Lines that differ in their numbers only (time, thread, port) are equal; a
/// line of more than 1000 bytes is cut, and of lines that differ, 64 a minute are passed on and the others
/// counted. One thread.
class RepeatedLines {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// What is to be written now that a line came: the line or nothing, behind the counts of the last minute
    /// if that is over.
    std::string Add(std::string_view line, Time now);
    /// The counts that have not been passed on yet; the lines are new again.
    std::string TakeCounts();

private:
    struct Repetition {
        std::string line;
        std::size_t count = 0; // of those that were not passed on
    };

    std::map<std::string, Repetition> m_repetitions;
    std::size_t m_omittedCount = 0;
    Time m_start;
};

} // namespace ZANServer
