#include "zancommon/overheadpassfilter.h"

#include "valueframework/bearingresult.h"
#include "zancommon/overheadpassparams.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

using KvZANCommon::OverheadPassFilter;
using KvZANCommon::OverheadPassParams;

namespace {

BearingResult ResultAt(qint16 elevation) {
    BearingResult result;
    result.SetFrequency(433.92e6);
    result.SetLevel(2550);
    result.SetAzimuth(1800);
    result.SetElevation(elevation);
    result.SetQuality(90);
    result.SetTimeStamp(1700000000000);
    return result;
}

struct Case {
    int threshold;
    qint16 elevation;
    bool isRejected;
};

constexpr qint16 LOWEST = std::numeric_limits<qint16>::min();
constexpr qint16 HIGHEST = std::numeric_limits<qint16>::max();

constexpr auto CASES = std::to_array<Case>({
    {600, 600, true},
    {600, 599, false},
    {600, 601, true},
    {600, HIGHEST, true},
    {600, -600, false},
    {600, LOWEST, false},
    {0, 0, true},
    {0, -1, false},
    {-100, -100, true},
    {-100, -101, false},
    {std::numeric_limits<int>::max(), HIGHEST, false},
    {std::numeric_limits<int>::min(), LOWEST, true},
    {0x10000 + 5, 10, false},
});

class OverheadPassFilterTest : public testing::TestWithParam<Case> {};

TEST_P(OverheadPassFilterTest, ElevationFromTheThresholdOnIsRejectedWithAllOtherMembersUntouched) {
    OverheadPassParams params;
    params.SetThreshold(GetParam().threshold, nullptr);
    params.SetValid(true, nullptr);
    BearingResult result = ResultAt(GetParam().elevation);
    BearingResult expected = result;
    if (GetParam().isRejected) {
        expected.SetQuality(-200);
    }
    OverheadPassFilter(params).Apply(result);
    EXPECT_EQ(result, expected);
}

INSTANTIATE_TEST_SUITE_P(Elevations, OverheadPassFilterTest, testing::ValuesIn(CASES));

TEST(OverheadPassFilter, FreshParametersRejectNothing) {
    OverheadPassParams params;
    const OverheadPassFilter filter(params);
    BearingResult result = ResultAt(900);
    filter.Apply(result);
    EXPECT_EQ(result, ResultAt(900));
}

TEST(OverheadPassFilter, ResultWithoutAzimuthStaysAsItIs) {
    OverheadPassParams params;
    params.SetValid(true, nullptr);
    const OverheadPassFilter filter(params);
    BearingResult result;
    result.SetElevation(900);
    result.SetQuality(90);
    const BearingResult before = result;
    filter.Apply(result);
    EXPECT_EQ(result, before);
}

TEST(OverheadPassFilter, ResultWithoutElevationStaysAsItIs) {
    OverheadPassParams params;
    params.SetThreshold(0, nullptr);
    params.SetValid(true, nullptr);
    const OverheadPassFilter filter(params);
    BearingResult result;
    result.SetAzimuth(900);
    result.SetQuality(90);
    const BearingResult before = result;
    filter.Apply(result);
    EXPECT_EQ(result, before);
}

TEST(OverheadPassFilter, ChangesOfTheParametersAreInForceAtOnce) {
    OverheadPassParams params;
    const OverheadPassFilter filter(params);
    params.SetValid(true, nullptr);
    params.SetThreshold(300, nullptr);
    BearingResult result = ResultAt(300);
    filter.Apply(result);
    EXPECT_EQ(result.GetQuality(), -200);
    params.SetThreshold(301, nullptr);
    result = ResultAt(300);
    filter.Apply(result);
    EXPECT_EQ(result.GetQuality(), 90);
}

} // namespace
