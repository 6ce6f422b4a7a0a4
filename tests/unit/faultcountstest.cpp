#include "zancommon/faultcounts.h"

#include <gtest/gtest.h>

#include <vector>

using namespace KvZANCommon;

namespace {

enum class Fault { Left, Right, COUNT };

} // namespace

TEST(FaultCounts, KindIsToldWhenItsCountReachesAPowerOfTen) {
    FaultCounts<Fault> counts;
    std::vector<quint64> told;
    for (quint64 i = 1; i <= 1234; ++i) {
        if (counts.Add(Fault::Left)) {
            told.push_back(i);
        }
    }
    EXPECT_EQ(told, (std::vector<quint64>{1, 10, 100, 1000}));
}

TEST(FaultCounts, EachKindIsCountedByItself) {
    FaultCounts<Fault> counts;
    EXPECT_TRUE(counts.Add(Fault::Left));
    EXPECT_TRUE(counts.Add(Fault::Right));
    EXPECT_FALSE(counts.Add(Fault::Right));
    EXPECT_EQ(counts.Get(Fault::Left), 1U);
    EXPECT_EQ(counts.Get(Fault::Right), 2U);
    EXPECT_EQ(counts.GetTotal(), 3U);
}

TEST(FaultCounts, ResetBeginsAnew) {
    FaultCounts<Fault> counts;
    counts.Add(Fault::Left);
    counts.Reset();
    EXPECT_EQ(counts.GetTotal(), 0U);
    EXPECT_TRUE(counts.Add(Fault::Left));
}
