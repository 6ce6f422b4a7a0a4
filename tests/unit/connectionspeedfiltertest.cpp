#include "zancommon/connectionspeedfilter.h"

#include "support/bearings.h"
#include "support/printing.h"
#include "support/treevalues.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <random>
#include <vector>

using namespace Qt::StringLiterals;
using KvZANCommon::ConnectionSpeedFilter;

namespace {

constexpr qint16 UNUSABLE = -4000;

std::vector<Bearing> RandomBearings(std::size_t count) {
    std::mt19937 random(static_cast<unsigned>(count));
    std::vector<Bearing> bearings(count);
    for (Bearing& bearing : bearings) {
        bearing = RandomBearing(random);
        if (random() % 2 == 0) {
            bearing.quality = 0;
        }
    }
    return bearings;
}

std::vector<Bearing> Marked(std::vector<Bearing> bearings, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (bearings[i].quality == 0) {
            bearings[i].marker = UNUSABLE;
        }
    }
    return bearings;
}

class ConnectionSpeedFilterTest : public testing::Test {
protected:
    void SetUp() override { Tree::Instance()->Clear(); }

    void BindSpeed(int speed) {
        InsertInTree<ValueInt>(u"/Test/Speed"_s, speed);
        m_filter.SetConnectionSpeedValuePath(u"/Test/Speed"_s);
    }
    /// Whether a block with a rejected bearing is marked.
    [[nodiscard]] bool Marks() const {
        Bearing bearing;
        m_filter.Apply(1, &bearing);
        return bearing.marker == UNUSABLE;
    }

    ConnectionSpeedFilter m_filter;
};

TEST_F(ConnectionSpeedFilterTest, BlockStaysUntouchedWhileTheSpeedIsUnbound) {
    const std::vector<Bearing> before = RandomBearings(100);
    std::vector<Bearing> bearings = before;
    m_filter.Apply(100, bearings.data());
    EXPECT_EQ(bearings, before);
}

TEST_F(ConnectionSpeedFilterTest, BlockStaysUntouchedWhileTheSpeedIsLessThanOne) {
    BindSpeed(0);
    auto* speed = Tree::Instance()->Find<ValueInt>(u"/Test/Speed"_s);
    const std::vector<Bearing> before = RandomBearings(100);
    for (const int each : {0, -1, std::numeric_limits<int>::min()}) {
        SCOPED_TRACE(each);
        speed->SetValue(each, nullptr);
        std::vector<Bearing> bearings = before;
        m_filter.Apply(100, bearings.data());
        EXPECT_EQ(bearings, before);
    }
}

TEST_F(ConnectionSpeedFilterTest, ExactlyTheBearingsOfQualityZeroAreMarkedFromSpeedOneOn) {
    BindSpeed(1);
    auto* speed = Tree::Instance()->Find<ValueInt>(u"/Test/Speed"_s);
    for (const int each : {1, 2, std::numeric_limits<int>::max()}) {
        SCOPED_TRACE(each);
        speed->SetValue(each, nullptr);
        std::vector<Bearing> bearings(4);
        bearings[1].quality = 1;
        bearings[3].quality = 0xFFFF;
        m_filter.Apply(4, bearings.data());
        EXPECT_EQ(bearings[0], Bearing{.marker = UNUSABLE});
        EXPECT_EQ(bearings[1], Bearing{.quality = 1});
        EXPECT_EQ(bearings[2], Bearing{.marker = UNUSABLE});
        EXPECT_EQ(bearings[3], Bearing{.quality = 0xFFFF});
    }
}

TEST_F(ConnectionSpeedFilterTest, EveryQualityButZeroKeepsEveryMarker) {
    BindSpeed(1);
    std::vector<Bearing> bearings(0x10000);
    for (std::size_t i = 0; i < bearings.size(); ++i) {
        bearings[i].quality = static_cast<quint16>(i);
        bearings[i].marker = static_cast<qint16>(i * 40503);
    }
    const std::vector<Bearing> expected = Marked(bearings, bearings.size());
    m_filter.Apply(0x10000, bearings.data());
    EXPECT_EQ(bearings, expected);
}

TEST_F(ConnectionSpeedFilterTest, EveryMarkerIsReplacedWhereTheQualityIsZero) {
    BindSpeed(1);
    std::vector<Bearing> bearings(0x10000);
    for (std::size_t i = 0; i < bearings.size(); ++i) {
        bearings[i].marker = static_cast<qint16>(i);
    }
    m_filter.Apply(0x10000, bearings.data());
    EXPECT_EQ(bearings, std::vector<Bearing>(0x10000, Bearing{.marker = UNUSABLE}));
}

TEST_F(ConnectionSpeedFilterTest, BlocksOfAnySizeEqualTheRuleAppliedToEachBearing) {
    BindSpeed(1);
    for (const std::size_t count : {1U, 2U, 7U, 8U, 9U, 15U, 64U, 1000U, 60000U}) {
        SCOPED_TRACE(count);
        // Two more than the block: what is behind it is not the filter's.
        std::vector<Bearing> bearings = RandomBearings(count + 2);
        const std::vector<Bearing> expected = Marked(bearings, count);
        m_filter.Apply(static_cast<unsigned>(count), bearings.data());
        EXPECT_EQ(bearings, expected);
    }
}

TEST_F(ConnectionSpeedFilterTest, EmptyBlockMayBeNull) {
    BindSpeed(1);
    m_filter.Apply(0, nullptr);
    Bearing bearing;
    m_filter.Apply(0, &bearing);
    EXPECT_EQ(bearing, Bearing{});
}

TEST_F(ConnectionSpeedFilterTest, IntegerWithARangeIsASpeedToo) {
    InsertInTree<ValueNumericInt>(u"/Test/Speed"_s, 3, 0, 10, 1);
    m_filter.SetConnectionSpeedValuePath(u"/Test/Speed"_s);
    EXPECT_TRUE(Marks());
}

TEST_F(ConnectionSpeedFilterTest, PathWithoutValueOrOfAnotherTypeLeavesItUnboundForALaterCall) {
    InsertInTree<ValueNumericDouble>(u"/Test/Double"_s, 5.0, 0.0, 10.0, 1.0);
    m_filter.SetConnectionSpeedValuePath(u"/Test/Double"_s);
    m_filter.SetConnectionSpeedValuePath(u"/Test/Missing"_s);
    EXPECT_FALSE(Marks());
    BindSpeed(1);
    EXPECT_TRUE(Marks());
}

TEST_F(ConnectionSpeedFilterTest, FirstSuccessfulBindingHolds) {
    BindSpeed(1);
    InsertInTree<ValueInt>(u"/Test/Other"_s, 0);
    m_filter.SetConnectionSpeedValuePath(u"/Test/Other"_s);
    EXPECT_TRUE(Marks());
}

TEST_F(ConnectionSpeedFilterTest, ValueThatTheTreeDestroyedIsUnboundAndCanBeBoundAgain) {
    BindSpeed(1);
    ASSERT_TRUE(Marks());
    Tree::Instance()->Clear();
    EXPECT_FALSE(Marks());
    BindSpeed(1);
    EXPECT_TRUE(Marks());
}

TEST_F(ConnectionSpeedFilterTest, CopiesAreBoundToTheSameValue) {
    BindSpeed(1);
    const ConnectionSpeedFilter copy = m_filter;
    Bearing bearing;
    copy.Apply(1, &bearing);
    EXPECT_EQ(bearing.marker, UNUSABLE);
}

} // namespace
