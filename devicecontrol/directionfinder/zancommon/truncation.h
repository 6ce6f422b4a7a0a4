#pragma once

#include <concepts>
#include <limits>

/// A number rounded towards zero. A number that does not fit the integer type becomes its lowest or highest
/// value, and NaN becomes 0.
template <std::signed_integral Integer>
constexpr Integer Truncate(double number) {
    using Limits = std::numeric_limits<Integer>;
    constexpr auto LOWEST = static_cast<double>(Limits::min()); // a power of two: exact
    if (number != number) {
        return 0;
    }
    if (number < LOWEST) {
        return Limits::min();
    }
    return number >= -LOWEST ? Limits::max() : static_cast<Integer>(number);
}
