#include "zanserver/driverreceiver.h"

#include "support/printing.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;
using namespace ZANServer;

TEST(DriverReceiver, TellsTheDriverAddressAndModeOfTheStation) {
    DriverReceiver receiver(u"device 7"_s);
    EXPECT_EQ(receiver.GetDevAddress(), u"device 7"_s);
    EMode mode = EMODE_SCAN;
    receiver.getOperateMode(mode);
    EXPECT_EQ(mode, EMODE_STANDBY) << "at first";
    receiver.SetOperateMode(EMODE_FFM);
    receiver.getOperateMode(mode);
    EXPECT_EQ(mode, EMODE_FFM);
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

TEST(DriverReceiver, ResultOfAFixedFrequencyIsPassedOnAsABlockOfOneBearing) {
    DriverReceiver receiver(u"fixed"_s);
    std::vector<BearingBlock> blocks;
    QObject::connect(&receiver, &DriverReceiver::BlockReceived, &receiver,
                     [&blocks](const BearingBlock& block) { blocks.push_back(block); });
    KvZANCommon::StatusStruct status;
    status.frequency = 1.0;
    status.heading = 12.5;
    receiver.fillFFMBuffer({1234, 121.5e6, 8000.0, 715, 30, -5200, 12, 4, 90}, status, true);
    receiver.PassOnWaiting();
    ASSERT_EQ(blocks.size(), 1U);
    EXPECT_EQ(blocks[0].kind, BearingBlock::Kind::FixedFrequency);
    EXPECT_EQ(blocks[0].time, 1234U);
    EXPECT_EQ(blocks[0].status.frequency, 121.5e6) << "that of the result";
    EXPECT_EQ(blocks[0].status.heading, 12.5);
    EXPECT_EQ(blocks[0].bearings, (std::vector<Bearing>{{0, 715, 30, -5200, 0, 12, 4, 90}}));
}

TEST(DriverReceiver, EmittersOfSuperResolutionArePassedOnAsOneBlock) {
    DriverReceiver receiver(u"emitters"_s);
    std::vector<BearingBlock> blocks;
    QObject::connect(&receiver, &DriverReceiver::BlockReceived, &receiver,
                     [&blocks](const BearingBlock& block) { blocks.push_back(block); });
    KvZANCommon::SuperResolutionStruct data{5, 119.6e6, std::vector<Bearing>(3)};
    KvZANCommon::StatusStruct status;
    receiver.fillFFMSRBuffer(data, status);
    data.emitters.clear();
    receiver.fillFFMSRBuffer(data, status);
    receiver.PassOnWaiting();
    ASSERT_EQ(blocks.size(), 2U);
    EXPECT_EQ(blocks[0].kind, BearingBlock::Kind::SuperResolution);
    EXPECT_EQ(blocks[0].status.frequency, 119.6e6);
    EXPECT_EQ(blocks[0].bearings.size(), 3U);
    EXPECT_EQ(blocks[1].bearings.size(), 0U) << "none is left";
}

TEST(DriverReceiver, PieceOfABlockTellsItsFirstChannel) {
    DriverReceiver receiver(u"pieces"_s, 4096);
    unsigned next = 100;
    QObject::connect(&receiver, &DriverReceiver::BlockReceived, &receiver, [&](const BearingBlock& block) {
        EXPECT_EQ(block.firstChannel, next);
        EXPECT_EQ(block.range, 7);
        EXPECT_EQ(block.firstOfWhole, next - 100);
        EXPECT_EQ(block.GetWholeCount(), 1000U);
        next += static_cast<unsigned>(block.bearings.size());
    });
    std::vector<Bearing> bearings(1000);
    unsigned long long time = 0;
    KvZANCommon::StatusStruct status;
    receiver.fillScanBuffer(7, time, 100, 1000, bearings.data(), status);
    receiver.PassOnWaiting();
    EXPECT_EQ(next, 1100U);
}

TEST(DriverReceiver, CountWithoutBearingsOrValuesIsNone) {
    DriverReceiver receiver(u"null"_s);
    std::vector<std::size_t> counts;
    QObject::connect(&receiver, &DriverReceiver::BlockReceived, &receiver,
                     [&](const BearingBlock& block) { counts.push_back(block.bearings.size()); });
    QObject::connect(
        &receiver, &DriverReceiver::TestValuesReceived, &receiver,
        [&](const QList<double>& values) { counts.push_back(static_cast<std::size_t>(values.size())); });
    unsigned long long time = 0;
    KvZANCommon::StatusStruct status;
    receiver.fillScanBuffer(7, time, 100, 1000, nullptr, status);
    receiver.fillTestValuesBuffer(nullptr, 10);
    receiver.PassOnWaiting();
    EXPECT_EQ(counts, (std::vector<std::size_t>{0, 0}));
}

TEST(DriverReceiver, FixesTestValuesAndResultsOfTestsArrive) {
    DriverReceiver receiver(u"rest"_s);
    QStringList arrived;
    QObject::connect(&receiver, &DriverReceiver::PositionReceived, &receiver, [&](const PositionFix& fix) {
        arrived.append(u"fix %1 %2 %3 %4 %5"_s.arg(fix.latitude)
                           .arg(fix.longitude)
                           .arg(fix.time)
                           .arg(fix.valid)
                           .arg(fix.satelliteCount));
    });
    QObject::connect(&receiver, &DriverReceiver::TestValuesReceived, &receiver,
                     [&](const QList<double>& values) { arrived.append(u"values %1"_s.arg(values.size())); });
    QObject::connect(
        &receiver, &DriverReceiver::BitResultReported, &receiver,
        [&](const KvZANCommon::ErrorStruct& result) { arrived.append(u"test "_s + result.text); });
    QObject::connect(
        &receiver, &DriverReceiver::ErrorReported, &receiver,
        [&](const KvZANCommon::ErrorStruct& error) { arrived.append(u"error "_s + error.text); });
    receiver.fillGPSData(54.5, -7.5, 99, true, 9, 1);
    double values[] = {1.0, 2.0};
    receiver.fillTestValuesBuffer(values, 2);
    KvZANCommon::ErrorStruct result{0, false, u"all well"_s};
    receiver.ReportBITResult(result);
    receiver.PassOnWaiting();
    EXPECT_EQ(arrived, (QStringList{u"fix 54.5 -7.5 99 1 9"_s, u"values 2"_s, u"test all well"_s}));
}

TEST(DriverReceiver, TextsOfErrorsAndTestsAreLinesOfBoundedLength) {
    DriverReceiver receiver(u"texts"_s);
    QStringList texts;
    const auto take = [&texts](const KvZANCommon::ErrorStruct& error) { texts.append(error.text); };
    QObject::connect(&receiver, &DriverReceiver::ErrorReported, &receiver, take);
    QObject::connect(&receiver, &DriverReceiver::BitResultReported, &receiver, take);
    KvZANCommon::ErrorStruct error{7, false, u"two\nlines\x1b"_s + QString(10'000'000, u'x')};
    receiver.reportError(error);
    receiver.ReportBITResult(error);
    receiver.PassOnWaiting();
    ASSERT_EQ(texts.size(), 2);
    for (const QString& text : texts) {
        EXPECT_TRUE(text.startsWith(u"two lines x"_s));
        EXPECT_LE(text.size(), 5000);
    }
    EXPECT_GT(error.text.size(), 10'000'000) << "the driver's own is left alone";
}

TEST(DriverReceiver, CommandCannotPassForSeveralEntriesOfTheLog) {
    DriverReceiver receiver(u"log"_s);
    QStringList commands;
    QObject::connect(&receiver, &DriverReceiver::CommandReported, &receiver,
                     [&](const QString& command) { commands.append(command); });
    QString line = u"mode  scan\r\n12:00:00:000:\tforged\x1b[2J"_s + QChar(u'\0');
    receiver.SetCommandLog(line);
    receiver.PassOnWaiting();
    EXPECT_EQ(commands, QStringList{u"mode  scan  12:00:00:000: forged [2J "_s});
}
