#include "zancommon/dfdatasentence.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace {

/// Whether the correctly rounded digits of a number, whose ties go to the even digit, are one too small in
/// the last place for QString::arg, whose ties go away from zero.
bool IsTieRoundedDown(double value, int precision) {
    // The ties are the odd multiples m of 2^-(precision + 1). The digit before the half is
    // (m * 5^precision - 1) / 2; it is even, and so was left as it is, when m leaves 1 divided by 4.
    constexpr double NONE_FROM = 9007199254740992.0; // 2^53: all multiples are even
    const double multiple = std::fabs(value) * static_cast<double>(2U << static_cast<unsigned>(precision));
    if (!(multiple < NONE_FROM)) {
        return false;
    }
    const auto whole = static_cast<quint64>(multiple);
    return whole % 4 == 1 && static_cast<double>(whole) == multiple;
}

/// Prints a number whose last digit is beyond doubt with integers, which is several times as fast as the
/// exact arithmetic of std::to_chars. Returns the place behind the last character; null when the number is
/// too large or too near to the middle of two digits.
char* PrintCertain(char* begin, char* end, double value, int precision) {
    constexpr std::array UNITS{1.0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7};
    // Below the bound the product is off by less than the margin.
    constexpr double BOUND = 1e12;
    constexpr double MARGIN = 1e-3;
    const double unit = UNITS[static_cast<std::size_t>(precision)];
    const double product = std::fabs(value) * unit;
    if (!(product < BOUND)) {
        return nullptr;
    }
    const auto cut = static_cast<quint64>(product);
    const double rest = product - static_cast<double>(cut);
    if (std::fabs(rest - 0.5) < MARGIN) {
        return nullptr;
    }
    const quint64 rounded = cut + (rest > 0.5 ? 1 : 0);
    const auto divisor = static_cast<quint64>(unit);
    if (value < 0.0) {
        *begin++ = '-';
    }
    char* const point = std::to_chars(begin, end, rounded / divisor).ptr;
    if (precision == 0) {
        return point;
    }
    // The one in front keeps the zeros behind the point, and gives its place to it.
    char* const last = std::to_chars(point, end, divisor + rounded % divisor).ptr;
    *point = '.';
    return last;
}

/// Prints a number in fixed-point notation to its last digit as QString::arg does.
/// \return behind the last character
char* Print(char* begin, char* end, double value, int precision) {
    if (char* const last = PrintCertain(begin, end, value, precision)) {
        return last;
    }
    if (std::isnan(value)) {
        value = std::fabs(value); // Qt prints no sign
    }
    end = std::to_chars(begin, end, value, std::chars_format::fixed, precision).ptr;
    if (IsTieRoundedDown(value, precision)) {
        ++end[-1];
    }
    return end;
}

} // namespace

void DFDataSentence::Begin(const Head& head) {
    m_length = 0;
    Add("$PLG,");
    AddNumber(head.azimuth / 10.0, 5, 1);
    Add(",FRQ,");
    AddNumber(head.frequency, 10, 0);
    Add(",CMP,");
    AddNumber(head.heading / 10.0, 5, 1);
    Add(",QUA,");
    AddNumber(head.quality, 5, 1);
    Add(",LEV,");
    AddNumber(head.level / 100.0, 5, 1);
    Add(",TIM,");
    AddTime(head.time);
}

void DFDataSentence::AddTail(const Tail& tail) {
    Add(",ELV,");
    AddNumber(tail.elevation / 10.0, 3, 1);
    Add(",PTC,");
    AddNumber(tail.pitch, 3, 1);
    Add(",RLL,");
    AddNumber(tail.roll, 3, 1);
    Add(",ALT,");
    AddNumber(tail.altitude, 3, 1);
    Add(",PTM,");
    AddTime(tail.positionTime);
    Add(",LAT,");
    AddNumber(tail.latitude, 9, 5);
    // More decimals than the latitude: readers of the line rely on both.
    Add(",LON,");
    AddNumber(tail.longitude, 9, 7);
}

void DFDataSentence::AddElementNumber(unsigned number) {
    Add(",SR,");
    char* const begin = m_buffer.data() + m_length;
    m_length = static_cast<std::size_t>(std::to_chars(begin, m_buffer.data() + m_buffer.size(), number).ptr -
                                        m_buffer.data());
}

void DFDataSentence::EndLine() {
    Add("\r\n");
}

void DFDataSentence::Add(std::string_view text) {
    std::copy(text.begin(), text.end(), m_buffer.begin() + static_cast<std::ptrdiff_t>(m_length));
    m_length += text.size();
}

void DFDataSentence::AddNumber(double value, std::size_t width, int precision) {
    char* const begin = m_buffer.data() + m_length;
    const char* const end = Print(begin, begin + WIDEST_NUMBER, value, precision);
    auto length = static_cast<std::size_t>(end - begin);
    if (length < width) {
        std::copy_backward(begin, begin + length, begin + width);
        std::fill_n(begin, width - length, ' ');
        length = width;
    }
    m_length += length;
}

void DFDataSentence::AddTime(Time time) {
    // What a calendar cannot show leaves the field empty, as Tolm::DateTime does.
    if (!time || *time > static_cast<quint64>(std::numeric_limits<qint64>::max())) {
        return;
    }
    const auto second = static_cast<unsigned>(*time / 1000 % 86400);
    for (const unsigned part : {second / 3600, second / 60 % 60, second % 60}) {
        m_buffer[m_length++] = static_cast<char>('0' + part / 10);
        m_buffer[m_length++] = static_cast<char>('0' + part % 10);
    }
}
