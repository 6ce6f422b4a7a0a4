#include "zancommon/truncation.h"

#include <gtest/gtest.h>

#include <QtGlobal>

#include <cmath>
#include <limits>

namespace {

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

template <class Integer>
struct Case {
    double number;
    Integer truncated;
};

template <class Integer>
void ExpectTruncated(std::initializer_list<Case<Integer>> cases) {
    for (const auto& [number, truncated] : cases) {
        EXPECT_EQ(Truncate<Integer>(number), truncated) << number;
    }
}

TEST(Truncation, FractionIsDroppedTowardsZero) {
    ExpectTruncated<qint64>({{0.0, 0},
                             {-0.0, 0},
                             {0.999, 0},
                             {-0.999, 0},
                             {std::numeric_limits<double>::denorm_min(), 0},
                             {35.9, 35},
                             {-12.7, -12},
                             {123456789.9, 123456789},
                             {3e9, 3'000'000'000},
                             {9007199254740993.0, 9'007'199'254'740'992}});
}

TEST(Truncation, WhatDoesNotFitIsTheNearestBound) {
    ExpectTruncated<qint16>({{32767.99, 32767}, {32768.0, 32767}, {-32768.99, -32768}, {-32769.0, -32768}});
    ExpectTruncated<qint32>({{2147483647.5, 2'147'483'647},
                             {2147483648.0, 2'147'483'647},
                             {-2147483648.0, -2'147'483'647 - 1},
                             {-2147483648.5, -2'147'483'647 - 1},
                             {1e300, 2'147'483'647},
                             {-1e300, -2'147'483'647 - 1}});
    constexpr qint64 LOWEST = std::numeric_limits<qint64>::min();
    constexpr qint64 HIGHEST = std::numeric_limits<qint64>::max();
    constexpr double END = 9223372036854775808.0;
    ExpectTruncated<qint64>({{std::nextafter(END, 0.0), 9'223'372'036'854'774'784},
                             {END, HIGHEST},
                             {INF, HIGHEST},
                             {-END, LOWEST},
                             {std::nextafter(-END, -INF), LOWEST},
                             {-INF, LOWEST}});
}

TEST(Truncation, NotANumberIsZero) {
    ExpectTruncated<qint64>({{NOT_A_NUMBER, 0}, {-NOT_A_NUMBER, 0}});
    ExpectTruncated<qint16>({{NOT_A_NUMBER, 0}});
}

TEST(Truncation, IsKnownToTheCompiler) {
    static_assert(Truncate<qint64>(-12.7) == -12);
    static_assert(Truncate<qint16>(1e9) == 32767);
}

} // namespace
