#include "zanserver/repeatedlines.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using namespace ZANServer;

namespace {

const RepeatedLines::Time START{24h};

} // namespace

TEST(RepeatedLines, EqualLinesArePassedOnOnceAndCounted) {
    RepeatedLines lines;
    EXPECT_EQ(lines.Add("bad message\n", START), "bad message\n");
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(lines.Add("bad message\n", START + 59s), "");
    }
    EXPECT_EQ(lines.Add("other\n", START + 59s), "other\n");
    EXPECT_EQ(lines.TakeCounts(), "1000 more times: bad message\n");
    EXPECT_EQ(lines.TakeCounts(), "");
}

TEST(RepeatedLines, LinesThatDifferInTheirNumbersAreEqual) {
    RepeatedLines lines;
    EXPECT_EQ(lines.Add("(3) 12:59:59.1: From 127.0.0.1:49266\n", START),
              "(3) 12:59:59.1: From 127.0.0.1:49266\n");
    EXPECT_EQ(lines.Add("(12) 1:00:00.25: From 10.0.0.12:8\n", START), "");
    EXPECT_EQ(lines.Add("(3) 12:59:59.1: To 127.0.0.1:49266\n", START),
              "(3) 12:59:59.1: To 127.0.0.1:49266\n");
}

TEST(RepeatedLines, LinesThatDifferInTheirNumbersDifferWhereNumbersAreCompared) {
    RepeatedLines lines(RepeatedLines::Numbers::Compared);
    EXPECT_EQ(lines.Add("channel 3 is hot\n", START), "channel 3 is hot\n");
    EXPECT_EQ(lines.Add("channel 4 is hot\n", START), "channel 4 is hot\n");
    EXPECT_EQ(lines.Add("channel 4 is hot\n", START), "");
    EXPECT_EQ(lines.TakeCounts(), "1 more time: channel 4 is hot\n");
}

TEST(RepeatedLines, CountsAreWrittenWithTheFirstLineAfterAMinuteAndLinesAreNewAgain) {
    RepeatedLines lines;
    EXPECT_EQ(lines.Add("a\n", START), "a\n");
    EXPECT_EQ(lines.Add("a\n", START + 1s), "");
    EXPECT_EQ(lines.Add("a\n", START + 60s), "1 more time: a\na\n");
    EXPECT_EQ(lines.Add("a\n", START + 119s), "");
    EXPECT_EQ(lines.Add("b\n", START + 120s), "1 more time: a\nb\n");
}

TEST(RepeatedLines, LinesThatDifferAreBoundedInNumber) {
    RepeatedLines lines;
    for (std::size_t i = 1; i <= 64; ++i) {
        EXPECT_NE(lines.Add(std::string(i, 'x') + '\n', START), "");
    }
    EXPECT_EQ(lines.Add("y\n", START), "");
    EXPECT_EQ(lines.Add("z\n", START), "");
    EXPECT_EQ(lines.TakeCounts(), "2 other lines are left out\n");
    EXPECT_EQ(lines.Add("y\n", START), "y\n");
}

TEST(RepeatedLines, LongLineIsCut) {
    RepeatedLines lines;
    EXPECT_EQ(lines.Add(std::string(20000000, 'x') + '\n', START), std::string(1000, 'x') + '\n');
}
