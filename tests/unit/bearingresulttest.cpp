#include "valueframework/bearingresult.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <vector>

namespace {

TEST(BearingResult, StartsWithoutAnyValue) {
    const BearingResult bearing;
    for (unsigned member = 0; member < BearingResult::MEMBER_COUNT; ++member) {
        EXPECT_FALSE(bearing.IsValueValid(member)) << member;
    }
    EXPECT_EQ(bearing.GetFrequency(), 0.0);
    EXPECT_EQ(bearing.GetLevel(), 0);
    EXPECT_EQ(bearing.GetAzimuth(), 0U);
    EXPECT_EQ(bearing.GetElevation(), 0);
    EXPECT_EQ(bearing.GetQuality(), 0);
    EXPECT_EQ(bearing.GetTimeStamp(), 0U);
}

TEST(BearingResult, SettingAMemberMakesThatOneValidAndNoOther) {
    struct Row {
        unsigned member;
        std::function<void(BearingResult&)> set;
    };
    const std::vector<Row> rows = {
        {BearingResult::FREQUENCY, [](BearingResult& bearing) { bearing.SetFrequency(0.0); }},
        {BearingResult::LEVEL, [](BearingResult& bearing) { bearing.SetLevel(0); }},
        {BearingResult::AZIMUTH, [](BearingResult& bearing) { bearing.SetAzimuth(0); }},
        {BearingResult::ELEVATION, [](BearingResult& bearing) { bearing.SetElevation(0); }},
        {BearingResult::QUALITY, [](BearingResult& bearing) { bearing.SetQuality(0); }},
        {BearingResult::TIME_STAMP, [](BearingResult& bearing) { bearing.SetTimeStamp(0); }},
    };
    for (const Row& row : rows) {
        BearingResult bearing;
        row.set(bearing);
        for (unsigned member = 0; member < BearingResult::MEMBER_COUNT; ++member) {
            EXPECT_EQ(bearing.IsValueValid(member), member == row.member);
        }
        EXPECT_NE(bearing, BearingResult());
    }
}

TEST(BearingResult, TheMembersKeepTheirWidth) {
    BearingResult bearing;
    bearing.SetFrequency(121.5e6);
    bearing.SetLevel(std::numeric_limits<qint16>::min());
    bearing.SetAzimuth(std::numeric_limits<quint16>::max());
    bearing.SetElevation(std::numeric_limits<qint16>::max());
    bearing.SetQuality(-4000);
    bearing.SetTimeStamp(std::numeric_limits<quint64>::max());
    EXPECT_EQ(bearing.GetFrequency(), 121.5e6);
    EXPECT_EQ(bearing.GetLevel(), -32768);
    EXPECT_EQ(bearing.GetAzimuth(), 65535U);
    EXPECT_EQ(bearing.GetElevation(), 32767);
    EXPECT_EQ(bearing.GetQuality(), -4000);
    EXPECT_EQ(bearing.GetTimeStamp(), std::numeric_limits<quint64>::max());
}

TEST(BearingResult, AnIndexThatNamesNoMemberHoldsNoValue) {
    BearingResult bearing;
    bearing.SetTimeStamp(1);
    for (const unsigned index : {6U, 31U, 32U, 33U, 0xFFFFFFFFU}) {
        EXPECT_FALSE(bearing.IsValueValid(index)) << index;
    }
}

TEST(BearingResult, BearingsAreEqualWhenAllMembersAre) {
    BearingResult one;
    BearingResult other;
    one.SetAzimuth(1234);
    other.SetAzimuth(1234);
    EXPECT_EQ(one, other);
    other.SetQuality(0); // holds a value now, although the number is the same
    EXPECT_NE(one, other);
}

} // namespace
