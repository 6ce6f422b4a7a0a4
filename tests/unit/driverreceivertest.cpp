#include "zanserver/driverreceiver.h"

#include "support/printing.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;
using namespace ZANServer;

TEST(DriverReceiver, TellsTheDriverAddressAndModeOfTheStation) {
    DriverReceiver receiver(u"device 7"_s);
    EXPECT_EQ(receiver.GetDevAddress(), u"device 7"_s);
    EMode mode = EMODE_STANDBY;
    receiver.getOperateMode(mode);
    EXPECT_EQ(mode, EMODE_SCAN);
}

TEST(DriverReceiver, BearingsOfTimeSlotsArePassedOnAsThoseOfAScan) {
    DriverReceiver receiver(u"slots"_s);
    std::vector<BearingBlock> blocks;
    QObject::connect(&receiver, &DriverReceiver::BlockReceived, &receiver,
                     [&blocks](const BearingBlock& block) { blocks.push_back(block); });
    std::vector<Bearing> bearings(2);
    bearings[1].azimuth = 715;
    unsigned long long time = 1234;
    KvZANCommon::StatusStruct status;
    status.frequency = 161.975e6;
    receiver.fillTDMABuffer(0, time, 0, 2, bearings.data(), status);
    receiver.PassOnWaiting();
    ASSERT_EQ(blocks.size(), 1U);
    EXPECT_EQ(blocks[0].time, 1234U);
    EXPECT_EQ(blocks[0].status.frequency, 161.975e6);
    ASSERT_EQ(blocks[0].bearings.size(), 2U);
    EXPECT_EQ(blocks[0].bearings[1].azimuth, 715);
}
