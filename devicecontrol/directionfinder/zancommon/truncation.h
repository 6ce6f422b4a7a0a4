#pragma once

#include <concepts>
#include <limits>

/// A number without its fraction, towards zero. What does not fit into the integer becomes its lowest or
/// highest value, and not-a-number becomes 0.
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
