#include "zancommon/rowblock.h"
#include "zancommon/nulldrivercallback.h"

#include <gtest/gtest.h>

using namespace KvZANCommon;

namespace {

/// Keeps the last scan block.
class ScanCallback final : public NullDriverCallback {
public:
    void fillScanBuffer(long range, unsigned long long& blockTime, unsigned firstChannel, unsigned count,
                        Bearing* first, StatusStruct& blockStatus) override {
        EXPECT_EQ(range, 0);
        EXPECT_EQ(firstChannel, 0U);
        time = blockTime;
        status = blockStatus;
        bearings.assign(first, first + count);
    }

    quint64 time = 0;
    StatusStruct status;
    std::vector<Bearing> bearings;
};

const RecordedBearing ROW{1000, 121.5e6, 71.55, -10.04, 90.4, -52.046, 12.3, 1.5, -2.5, 52.5, 5.5, -4.0};

} // namespace

TEST(RowBlock, RowsOfOneMomentAreDeliveredTogetherInTheUnitsOfTheInterface) {
    RowBlock block;
    RecordedBearing other = ROW;
    other.azimuth = 359.97;
    other.elevation.reset();
    other.level = -327.68;
    other.quality = 0.0;
    EXPECT_TRUE(block.Add(ROW));
    EXPECT_TRUE(block.Add(other));
    ScanCallback callback;
    block.Deliver(callback);
    EXPECT_EQ(callback.time, 1000U);
    const StatusStruct status{121.5e6, false, false, false, 12.3, 1.5, -2.5, 52.5, 5.5, -4.0};
    EXPECT_EQ(callback.status, status);
    ASSERT_EQ(callback.bearings.size(), 2U);
    const Bearing first{0, 716, -100, -5205, 0, 0, 1, 90};
    EXPECT_EQ(callback.bearings[0], first);
    const Bearing second{0, 0, Bearing::NOT_MEASURED, -32767, 0, 0, 1, 0};
    EXPECT_EQ(callback.bearings[1], second);
    EXPECT_TRUE(block.IsEmpty());
}

TEST(RowBlock, TakesNoRowOfAnotherMomentFrequencyOrPlace) {
    RowBlock block;
    ASSERT_TRUE(block.Add(ROW));
    RecordedBearing later = ROW;
    later.timeMs = 1001;
    EXPECT_FALSE(block.Add(later));
    RecordedBearing higher = ROW;
    higher.frequency = 121.6e6;
    EXPECT_FALSE(block.Add(higher));
    RecordedBearing elsewhere = ROW;
    elsewhere.latitude.reset();
    EXPECT_FALSE(block.Add(elsewhere));
    ScanCallback callback;
    block.Deliver(callback);
    EXPECT_EQ(callback.bearings.size(), 1U);
    EXPECT_TRUE(block.Add(later)) << "an empty block takes any row";
}

TEST(RowBlock, IsFullWithTheLongestScan) {
    RowBlock block;
    for (std::size_t i = 0; i < RowBlock::MAX_BEARINGS; ++i) {
        ASSERT_TRUE(block.Add(ROW));
    }
    EXPECT_FALSE(block.Add(ROW));
}
