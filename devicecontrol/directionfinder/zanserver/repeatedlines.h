#pragma once

#include "zanserver_export.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace ZANServer {

/// Keeps a log from being flooded: of equal lines it passes on the first one and then, once a minute, the
/// number of repetitions. A line of more than 1000 bytes is cut. Of different lines 64 per minute are passed
/// on, and the others are counted. One thread.
class ZANSERVER_EXPORT RepeatedLines {
public:
    using Time = std::chrono::steady_clock::time_point;
    /// Whether lines that differ only in their numbers are equal: a number may be the time, thread or port of
    /// a message, or say which channel it is about.
    enum class Numbers { Ignored, Compared };

    explicit RepeatedLines(Numbers numbers = Numbers::Ignored)
        : m_numbers(numbers) {}

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

    Numbers m_numbers;
    std::map<std::string, Repetition> m_repetitions;
    std::size_t m_omittedCount = 0;
    Time m_start;
};

} // namespace ZANServer
