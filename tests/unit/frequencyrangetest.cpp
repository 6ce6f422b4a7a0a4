#include "zancommon/frequencyrange.h"

#include "zancommon/antennadata.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr FrequencyRange HF{300e3, 30e6};

} // namespace

TEST(FrequencyRange, ContainsBothOfItsEnds) {
    static_assert(HF.Contains(300e3) && HF.Contains(30e6) && HF.Contains(1e6));
    static_assert(!HF.Contains(299999.9) && !HF.Contains(30000000.1));
    static_assert(FrequencyRange{1e6, 1e6}.Contains(1e6));
    EXPECT_EQ(HF.GetWidth(), 29.7e6);
}

TEST(FrequencyRange, ContainsARangeOfWhichItContainsBothEnds) {
    static_assert(HF.Contains(HF));
    static_assert(HF.Contains(FrequencyRange{1e6, 2e6}));
    static_assert(!HF.Contains(FrequencyRange{299999.9, 2e6}));
    static_assert(!HF.Contains(FrequencyRange{1e6, 30000000.1}));
    static_assert(!HF.Contains(FrequencyRange{100e3, 40e6}));
}

TEST(FrequencyRange, ContainsNothingWhenItsEndsAreCrossedOrNotNumbers) {
    constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
    static_assert(!FrequencyRange{2e6, 1e6}.Contains(1.5e6));
    static_assert(!FrequencyRange::None().Contains(0.0) && !FrequencyRange::None().Contains(1e6));
    EXPECT_FALSE(HF.Contains(NOT_A_NUMBER));
    EXPECT_FALSE(HF.Contains(FrequencyRange{NOT_A_NUMBER, 1e6}));
    EXPECT_FALSE((FrequencyRange{NOT_A_NUMBER, 30e6}).Contains(1e6));
}

TEST(FrequencyRange, IsApartFromARangeWithWhichItSharesNoFrequency) {
    static_assert(HF.IsApartFrom({30000001.0, 1300e6}) && HF.IsApartFrom({9e3, 299999.0}));
    static_assert(!HF.IsApartFrom({30e6, 1300e6}) && !HF.IsApartFrom({9e3, 300e3}));
    static_assert(!HF.IsApartFrom({1e6, 2e6}) && !HF.IsApartFrom({9e3, 1300e6}));
}

TEST(FrequencyRange, IsFollowedByARangeThatBeginsAtItsEndOr1HzAbove) {
    static_assert(HF.IsFollowedBy({30e6, 1300e6}) && HF.IsFollowedBy({30000001.0, 1300e6}));
    static_assert(!HF.IsFollowedBy({30000000.5, 1300e6}) && !HF.IsFollowedBy({30000002.0, 1300e6}));
    static_assert(!HF.IsFollowedBy({20e6, 1300e6}) && !FrequencyRange{30e6, 1300e6}.IsFollowedBy(HF));
}

TEST(FrequencyRange, ClipsAFrequencyToItsNearestOne) {
    static_assert(HF.Clip(100e3) == 300e3 && HF.Clip(1e6) == 1e6 && HF.Clip(40e6) == 30e6);
    static_assert(FrequencyRange{30e6, 25e6}.Clip(27e6) == 25e6, "the high end counts");
}

TEST(FrequencyRange, JoinsWithAnotherRangeAndWhatLiesBetween) {
    static_assert(HF.Join({1300e6, 3000e6}) == FrequencyRange{300e3, 3000e6});
    static_assert(HF.Join({1e6, 2e6}) == HF && FrequencyRange{1e6, 2e6}.Join(HF) == HF);
    static_assert(FrequencyRange::None().Join(HF) == HF && HF.Join(FrequencyRange::None()) == HF);
}

TEST(FrequencyRange, MovesAsAWhole) {
    static_assert(FrequencyRange{25e6, 35e6}.MovedBy(-5e6) == FrequencyRange{20e6, 30e6});
    static_assert(FrequencyRange{25e6, 35e6}.MovedBy(0.0) == FrequencyRange{25e6, 35e6});
}

TEST(FrequencyRange, KnowsHowFarItIsFromItsLimits) {
    static_assert(FrequencyRange{1e6, 2e6}.GetShiftInto(HF) == 0.0 && HF.GetShiftInto(HF) == 0.0);
    static_assert(FrequencyRange{100e3, 200e3}.GetShiftInto(HF) == 200e3);
    static_assert(FrequencyRange{29e6, 31e6}.GetShiftInto(HF) == -1e6);
    static_assert(FrequencyRange{100e3, 40e6}.GetShiftInto(HF) == -10e6, "the high end counts");
}

TEST(FrequencyRange, OfAnAntennaIsItsCoverageOrWhatItIsUsedFor) {
    AntennaData antenna;
    antenna.minFreq = 20e6;
    antenna.maxFreq = 1300e6;
    SetRange(antenna, {30e6, 100e6});
    EXPECT_EQ(antenna.minRange, 30e6);
    EXPECT_EQ(antenna.maxRange, 100e6);
    EXPECT_EQ(RangeOf(antenna), (FrequencyRange{30e6, 100e6}));
    EXPECT_EQ(CoverageOf(antenna), (FrequencyRange{20e6, 1300e6}));
}
