#pragma once

#include <algorithm>
#include <limits>

/// The frequencies from `low` to `high` in Hz, both ends included.
///
/// A plain value that checks nothing: a range whose low end is above its high end contains no frequency, and
/// NaN is in no range.
struct FrequencyRange {
    /// Hz between adjacent ranges that share no frequency.
    static constexpr double STEP = 1.0;

    double low = 0.0;
    double high = 0.0;

    /// The range that contains nothing; joined with another range it gives the other range.
    [[nodiscard]] static constexpr FrequencyRange None() { return {std::numeric_limits<double>::max(), 0.0}; }

    [[nodiscard]] constexpr double GetWidth() const { return high - low; }
    [[nodiscard]] constexpr bool Contains(double frequency) const {
        return low <= frequency && frequency <= high;
    }
    /// Whether the other range begins and ends within this one; also true for a range with reversed ends that
    /// lie within it.
    [[nodiscard]] constexpr bool Contains(const FrequencyRange& other) const {
        return low <= other.low && other.high <= high;
    }
    /// Whether the ranges have no frequency in common.
    [[nodiscard]] constexpr bool IsApartFrom(const FrequencyRange& other) const {
        return low > other.high || other.low > high;
    }
    /// Whether the next range begins at the end of this one, or one step above.
    [[nodiscard]] constexpr bool IsFollowedBy(const FrequencyRange& next) const {
        return high == next.low || high + STEP == next.low;
    }
    /// The frequency of this range that is nearest to a given one. When the low end is above the high end,
    /// the high end is used.
    [[nodiscard]] constexpr double Clip(double frequency) const {
        return std::min(std::max(frequency, low), high);
    }
    /// The smallest range that contains both ranges and any gap between them.
    [[nodiscard]] constexpr FrequencyRange Join(const FrequencyRange& other) const {
        return {std::min(low, other.low), std::max(high, other.high)};
    }
    /// This range, moved as a whole (Hz; negative: downwards).
    [[nodiscard]] constexpr FrequencyRange MovedBy(double shift) const { return {low + shift, high + shift}; }
    /// How far this range must be moved (Hz) to lie within limits. A range that is wider than the limits is
    /// moved so that the high ends are equal.
    [[nodiscard]] constexpr double GetShiftInto(const FrequencyRange& limits) const {
        if (high > limits.high) {
            return limits.high - high;
        }
        return limits.low > low ? limits.low - low : 0.0;
    }

    constexpr bool operator==(const FrequencyRange&) const = default;
};
