#include "zanserver/repeatedlines.h"

#include <algorithm>
#include <utility>

namespace ZANServer {

namespace {

constexpr std::chrono::minutes PERIOD{1};
constexpr std::size_t MAX_LINE_COUNT = 64;
constexpr std::size_t MAX_LINE_SIZE = 1000;

std::string WithoutNumbers(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }, '0');
    const auto isZero = [](char a, char b) { return a == '0' && b == '0'; };
    text.erase(std::unique(text.begin(), text.end(), isZero), text.end());
    return text;
}

} // namespace

std::string RepeatedLines::Add(std::string_view line, Time now) {
    std::string text;
    if (now - m_start >= PERIOD) {
        text = TakeCounts();
        m_start = now;
    }
    std::string whole(line.substr(0, MAX_LINE_SIZE));
    while (!whole.empty() && whole.back() == '\n') {
        whole.pop_back();
    }
    std::string key = m_numbers == Numbers::Ignored ? WithoutNumbers(whole) : whole;
    if (const auto known = m_repetitions.find(key); known != m_repetitions.end()) {
        ++known->second.count;
    } else if (m_repetitions.size() == MAX_LINE_COUNT) {
        ++m_omittedCount;
    } else {
        text += whole + '\n';
        m_repetitions.emplace(std::move(key), Repetition{std::move(whole), 0});
    }
    return text;
}

std::string RepeatedLines::TakeCounts() {
    std::string text;
    for (const auto& [key, repetition] : m_repetitions) {
        if (repetition.count > 0) {
            text += std::to_string(repetition.count) +
                    (repetition.count == 1 ? " more time: " : " more times: ") + repetition.line + '\n';
        }
    }
    if (m_omittedCount > 0) {
        text += std::to_string(m_omittedCount) +
                (m_omittedCount == 1 ? " other line is left out\n" : " other lines are left out\n");
    }
    m_repetitions.clear();
    m_omittedCount = 0;
    return text;
}

} // namespace ZANServer
