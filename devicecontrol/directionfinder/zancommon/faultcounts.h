#pragma once

#include <QtGlobal>

#include <array>
#include <cstddef>
#include <numeric>

namespace KvZANCommon {

/// Counts what is wrong with what a device sends, by kind, and says when a kind is to be told: when its count
/// reaches 1, 10, 100 and so on, so that a flood of faults is no flood of messages.
/// \tparam Kind an enumeration from 0 to below `COUNT`
template <class Kind>
class FaultCounts {
public:
    /// Counts one fault. Whether its kind is to be told now.
    bool Add(Kind kind) {
        const auto place = static_cast<std::size_t>(kind);
        if (++m_counts[place] < m_next[place]) {
            return false;
        }
        constexpr quint64 LAST = 1'000'000'000'000'000'000;
        m_next[place] = m_next[place] < LAST ? m_next[place] * 10 : ~quint64{0};
        return true;
    }
    [[nodiscard]] quint64 Get(Kind kind) const { return m_counts[static_cast<std::size_t>(kind)]; }
    [[nodiscard]] quint64 GetTotal() const {
        return std::accumulate(m_counts.begin(), m_counts.end(), quint64{0});
    }
    void Reset() { *this = {}; }

private:
    static constexpr auto KINDS = static_cast<std::size_t>(Kind::COUNT);

    std::array<quint64, KINDS> m_counts{};
    std::array<quint64, KINDS> m_next = [] {
        std::array<quint64, KINDS> next{};
        next.fill(1);
        return next;
    }();
};

} // namespace KvZANCommon
