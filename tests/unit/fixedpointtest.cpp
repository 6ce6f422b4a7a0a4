#include "zancommon/fixedpoint.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

using namespace Qt::StringLiterals;

namespace {

constexpr double LARGEST = std::numeric_limits<double>::max();

std::string Print(double value, int decimals) {
    std::array<char, FixedPoint::WIDEST> buffer{};
    return {buffer.data(), FixedPoint::Print(buffer.data(), value, decimals)};
}

/// Whether a number is printed as by Qt with each number of decimals.
testing::AssertionResult IsPrintedAsByQt(double value) {
    for (int decimals = 0; decimals <= FixedPoint::MOST_DECIMALS; ++decimals) {
        const std::string expected = u"%1"_s.arg(value, 0, 'f', decimals).toStdString();
        if (Print(value, decimals) != expected) {
            return testing::AssertionFailure()
                   << std::hexfloat << value << " reads " << Print(value, decimals) << ", not " << expected;
        }
    }
    return testing::AssertionSuccess();
}

} // namespace

TEST(FixedPoint, HasTheDecimalsThatAreWanted) {
    EXPECT_EQ(Print(48.1, 5), "48.10000");
    EXPECT_EQ(Print(11.5, 7), "11.5000000");
    EXPECT_EQ(Print(121'500'000.0, 0), "121500000");
    EXPECT_EQ(Print(0.04, 1), "0.0");
    EXPECT_EQ(Print(-0.1, 1), "-0.1");
    EXPECT_EQ(Print(1.0000001, 7), "1.0000001");
}

TEST(FixedPoint, HalvesAreRoundedAwayFromZero) {
    EXPECT_EQ(Print(0.5, 0), "1");
    EXPECT_EQ(Print(2.5, 0), "3");
    EXPECT_EQ(Print(-2.5, 0), "-3");
    EXPECT_EQ(Print(0.25, 1), "0.3");
    EXPECT_EQ(Print(0.125, 2), "0.13");
}

TEST(FixedPoint, WhatIsRoundedUpCarries) {
    EXPECT_EQ(Print(9.96, 1), "10.0");
    EXPECT_EQ(Print(99.999999, 5), "100.00000");
}

TEST(FixedPoint, TheWidestNumberFits) {
    EXPECT_EQ(Print(-LARGEST, FixedPoint::MOST_DECIMALS).size(), FixedPoint::WIDEST);
}

TEST(FixedPoint, SpecialNumbersAreThoseOfQt) {
    for (const double value :
         {0.0, -0.0, LARGEST, -LARGEST, std::numeric_limits<double>::min(),
          std::numeric_limits<double>::denorm_min(), std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN(),
          -std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_TRUE(IsPrintedAsByQt(value));
    }
}

TEST(FixedPoint, NumbersAroundTheMiddleOfTwoDigitsAreThoseOfQt) {
    for (int eighths = -4000; eighths <= 4000; ++eighths) {
        const double middle = eighths / 8.0;
        for (const double value : {middle, std::nextafter(middle, LARGEST), std::nextafter(middle, -LARGEST),
                                   eighths / 100.0, eighths / 1000.0}) {
            EXPECT_TRUE(IsPrintedAsByQt(value));
        }
    }
}

TEST(FixedPoint, NumbersOfAllSizesAreThoseOfQt) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 20'000; ++i) {
        const double anything = std::bit_cast<double>(std::uint64_t{random()});
        EXPECT_TRUE(std::isnan(anything) || IsPrintedAsByQt(anything));
        const double usual = std::uniform_real_distribution<double>(-1e6, 1e6)(random);
        EXPECT_TRUE(IsPrintedAsByQt(usual));
    }
}

TEST(FixedPoint, NumbersAroundTheBoundOfTheShortWayAreThoseOfQt) {
    for (const double bound : {1e5, 1e7, 1e11, 1e12, 9007199254740992.0}) {
        for (const double value :
             {bound, bound - 0.5, bound + 0.5, std::nextafter(bound, 0.0), bound - 0.05}) {
            EXPECT_TRUE(IsPrintedAsByQt(value));
        }
    }
}
