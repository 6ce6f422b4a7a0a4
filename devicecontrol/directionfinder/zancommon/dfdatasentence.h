#pragma once

#include "zancommon/fixedpoint.h"

#include <QtGlobal>

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

/// Builds the line of text that the DF data output sends for one bearing. Every number is printed as
/// QString::arg prints it in fixed-point notation. Call the operations in the order in which they are
/// declared, each at most once per sentence; the buffer is then always large enough.
class DFDataSentence {
public:
    /// Milliseconds since 1970-01-01 00:00:00 UTC; without a value the field is empty.
    using Time = std::optional<quint64>;

    /// The part that every sentence has. The defaults mark missing data.
    struct Head {
        int azimuth = -10;      ///< tenths of a degree
        double frequency = 0.0; ///< Hz
        int heading = -1;       ///< tenths of a degree
        int quality = 0;
        int level = -50; ///< hundredths
        Time time = {};
    };
    /// The part that follows while the file is open. The defaults mark missing data.
    struct Tail {
        int elevation = 0;  ///< tenths of a degree
        double pitch = 0.0; ///< degrees
        double roll = 0.0;  ///< degrees
        double altitude = 0.0;
        Time positionTime = {};
        double latitude = 0.0;  ///< degrees
        double longitude = 0.0; ///< degrees
    };

    /// Begins a new sentence with the head.
    void Begin(const Head& head);
    void AddTail(const Tail& tail);
    /// Adds the number of the element to a sentence that is one of several of the same time.
    void AddElementNumber(unsigned number);
    void EndLine();
    /// Valid until the next change.
    [[nodiscard]] std::string_view GetText() const { return {m_buffer.data(), m_length}; }

private:
    void Add(std::string_view text);
    void AddNumber(double value, std::size_t width, int precision);
    void AddTime(Time time);

    static constexpr std::size_t NUMBER_COUNT = 11;
    // All texts between and after the numbers are shorter than this.
    static constexpr std::size_t WIDEST_REST = 128;

    std::array<char, NUMBER_COUNT * FixedPoint::WIDEST + WIDEST_REST> m_buffer{};
    std::size_t m_length = 0;
};
