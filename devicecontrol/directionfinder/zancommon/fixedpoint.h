#pragma once

#include <QString>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>

/// \file
/// Prints numbers in fixed-point notation exactly as `QString::arg` does, but faster.

namespace FixedPoint {

inline constexpr int MOST_DECIMALS = 7;
/// The largest number of characters: sign, all digits of the largest double, point and decimals.
inline constexpr std::size_t WIDEST = 1 + 309 + 1 + MOST_DECIMALS;

/// Prints a number by integer arithmetic if its last digit is certain. Null, with nothing printed, when the
/// number is too large or too close to the middle between two digits. Parameters as for `Print`.
inline char* PrintCertain(char* begin, double value, int decimals) {
    constexpr std::array<quint64, MOST_DECIMALS + 1> UNITS{1,      10,      100,       1'000,
                                                           10'000, 100'000, 1'000'000, 10'000'000};
    // Below the bound the rounding error of the product is less than the margin.
    constexpr double BOUND = 1e12;
    constexpr double MARGIN = 1e-3;
    const quint64 unit = UNITS[static_cast<std::size_t>(decimals)];
    const double product = std::fabs(value) * static_cast<double>(unit);
    if (!(product < BOUND)) {
        return nullptr;
    }
    const auto cut = static_cast<quint64>(product);
    const double rest = product - static_cast<double>(cut);
    if (std::fabs(rest - 0.5) < MARGIN) {
        return nullptr;
    }
    const quint64 rounded = cut + (rest > 0.5 ? 1 : 0);
    if (value < 0.0) {
        *begin++ = '-';
    }
    char* const point = std::to_chars(begin, begin + WIDEST, rounded / unit).ptr;
    if (decimals == 0) {
        return point;
    }
    *point = '.';
    auto behind = static_cast<unsigned>(rounded % unit);
    for (char* digit = point + decimals; digit > point; --digit) {
        *digit = static_cast<char>('0' + behind % 10);
        behind /= 10;
    }
    return point + 1 + decimals;
}

/// Prints a number.
/// \param begin    a buffer of `WIDEST` characters
/// \param decimals 0 to `MOST_DECIMALS`
/// \return the position after the last character
inline char* Print(char* begin, double value, int decimals) {
    if (char* const end = PrintCertain(begin, value, decimals)) {
        return end;
    }
    const QString text = QString::number(value, 'f', decimals);
    return std::transform(text.begin(), text.end(), begin, [](QChar c) { return c.toLatin1(); });
}

} // namespace FixedPoint
