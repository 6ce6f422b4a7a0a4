#include "zanstation/replaydriver.h"
#include "support/printing.h"
#include "zancommon/legacydriveradapter.h"
#include "zanstation/driverreceiver.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {

/// Driver, adapter and receiver as the station wires them, with all that arrives on the main thread.
class ReplayDriverTest : public testing::Test {
protected:
    ReplayDriverTest() {
        QObject::connect(&m_receiver, &DriverReceiver::BlockReceived, &m_receiver,
                         [this](BearingBlock& block) {
                             EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
                             m_blocks.push_back(block);
                         });
        QObject::connect(&m_receiver, &DriverReceiver::ErrorReported, &m_receiver,
                         [this](const KvZANCommon::ErrorStruct& error) { m_errors.append(error.text); });
        QObject::connect(&m_receiver, &DriverReceiver::LinkClosed, &m_receiver,
                         [] { QCoreApplication::quit(); });
        m_adapter.SetCallback(&m_receiver);
    }

    int Open(ReplayDriver& driver, const QByteArray& rows) {
        m_adapter.SetLegacyDriver(&driver);
        QFile file(m_directory.filePath(u"recording.csv"_s));
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write(
            "time_ms,frequency_hz,azimuth_deg,elevation_deg,quality,level_db,heading_deg,pitch_deg,roll_deg,"
            "latitude_deg,longitude_deg,altitude_m\n" +
            rows);
        file.close();
        std::string name = file.fileName().toStdString();
        return m_device.Initialize(name, false);
    }

    void Replay(ReplayDriver& driver, const QByteArray& rows) {
        ASSERT_EQ(Open(driver, rows), ReplayDriver::OK);
        m_device.SetMode(EMODE_SCAN);
        QCoreApplication::exec();
        m_device.SetMode(EMODE_STANDBY);
    }

    QTemporaryDir m_directory;
    DriverReceiver m_receiver{u"replay"_s};
    KvZANCommon::LegacyDriverAdapter m_adapter;
    KvZANCommon::IDriver& m_device = m_adapter;
    std::vector<BearingBlock> m_blocks;
    QStringList m_errors;
};

} // namespace

TEST_F(ReplayDriverTest, RowBecomesABearingInTheUnitsOfTheInterface) {
    ReplayDriver driver(m_adapter, ReplayDriver::AS_FAST_AS_POSSIBLE);
    Replay(driver, "1500,121500000,71.55,-10.04,90,-52.046,12.3,1.5,-2.5,52.5,5.5,-4.0\n");
    ASSERT_EQ(m_blocks.size(), 1U);
    const BearingBlock& block = m_blocks[0];
    EXPECT_EQ(block.time, 1500U);
    EXPECT_EQ(block.status.frequency, 121500000.0);
    EXPECT_EQ(block.status.heading, 12.3);
    EXPECT_EQ(block.status.pitch, 1.5);
    EXPECT_EQ(block.status.roll, -2.5);
    EXPECT_EQ(block.status.latitude, 52.5);
    EXPECT_EQ(block.status.longitude, 5.5);
    EXPECT_EQ(block.status.altitude, -4.0);
    ASSERT_EQ(block.bearings.size(), 1U);
    EXPECT_EQ(block.bearings[0].azimuth, 716);
    EXPECT_EQ(block.bearings[0].elevation, -100);
    EXPECT_EQ(block.bearings[0].level, -5205);
    EXPECT_EQ(block.bearings[0].quality, 90);
    EXPECT_EQ(block.bearings[0].marker, 0);
}

TEST_F(ReplayDriverTest, WhatWasNotMeasuredIsMarkedAsSuch) {
    ReplayDriver driver(m_adapter, ReplayDriver::AS_FAST_AS_POSSIBLE);
    Replay(driver, "0,121500000,0,,0,,,,,,,\n");
    ASSERT_EQ(m_blocks.size(), 1U);
    EXPECT_EQ(m_blocks[0].bearings.at(0).elevation, Bearing::NOT_MEASURED);
    EXPECT_EQ(m_blocks[0].bearings.at(0).level, Bearing::NOT_MEASURED);
    EXPECT_FALSE(m_blocks[0].status.heading || m_blocks[0].status.pitch || m_blocks[0].status.latitude);
}

TEST_F(ReplayDriverTest, AzimuthThatRoundsUpToAFullCircleIsNorth) {
    ReplayDriver driver(m_adapter, ReplayDriver::AS_FAST_AS_POSSIBLE);
    Replay(driver, "0,121500000,359.97,,50,,,,,,,\n");
    EXPECT_EQ(m_blocks.at(0).bearings.at(0).azimuth, 0);
}

TEST_F(ReplayDriverTest, LowestLevelStaysALevel) {
    ReplayDriver driver(m_adapter, ReplayDriver::AS_FAST_AS_POSSIBLE);
    Replay(driver, "0,121500000,10,,50,-327.68,,,,,,\n");
    EXPECT_EQ(m_blocks.at(0).bearings.at(0).level, -32767);
}

TEST_F(ReplayDriverTest, RowsOfOneMomentMakeOneBlock) {
    ReplayDriver driver(m_adapter, ReplayDriver::AS_FAST_AS_POSSIBLE);
    Replay(driver, "0,121500000,10,,50,,,,,,,\n"
                   "0,121500000,20,1.0,60,-5,,,,,,\n"
                   "0,121600000,30,,50,,,,,,,\n"
                   "0,121600000,40,,50,,90.0,,,,,\n"
                   "1,121600000,50,,50,,90.0,,,,,\n");
    std::vector<std::size_t> sizes;
    for (const BearingBlock& block : m_blocks) {
        sizes.push_back(block.bearings.size());
    }
    EXPECT_EQ(sizes, (std::vector<std::size_t>{2, 1, 1, 1}));
    EXPECT_EQ(m_blocks.at(0).bearings.at(1).azimuth, 200);
    EXPECT_EQ(m_device.GetReadCount(), 4);
}

TEST_F(ReplayDriverTest, LinesThatAreNoRowsAreReportedAndCounted) {
    ReplayDriver driver(m_adapter, ReplayDriver::AS_FAST_AS_POSSIBLE);
    Replay(driver,
           "0,121500000,10,,50,,,,,,,\nnonsense\n1,121500000,370,,50,,,,,,,\n2,121500000,10,,50,,,,,,,\n");
    EXPECT_EQ(m_blocks.size(), 2U);
    ASSERT_EQ(m_errors.size(), 2);
    EXPECT_TRUE(m_errors[0].contains(u"line 3"_s)) << m_errors[0].toStdString();
    EXPECT_TRUE(m_errors[1].contains(u"line 4"_s)) << m_errors[1].toStdString();
    EXPECT_EQ(driver.GetBadLineSummary().size(), 2);
}

TEST_F(ReplayDriverTest, RecordingThatCannotBeOpenedIsAnErrorOfTheDriver) {
    ReplayDriver driver(m_adapter, ReplayDriver::AS_FAST_AS_POSSIBLE);
    m_adapter.SetLegacyDriver(&driver);
    std::string missing = m_directory.filePath(u"missing.csv"_s).toStdString();
    EXPECT_EQ(m_device.Initialize(missing, false), ReplayDriver::FAILED);
    EXPECT_TRUE(m_device.GetLastError().contains(u"missing.csv"_s));
    m_device.ClearLastError();
    EXPECT_TRUE(m_device.GetLastError().isEmpty());
}

TEST_F(ReplayDriverTest, StandbyStopsAReplayThatWaitsForItsTime) {
    ReplayDriver driver(m_adapter, 1.0);
    ASSERT_EQ(Open(driver, "0,121500000,10,,50,,,,,,,\n253402300799999,121500000,10,,50,,,,,,,\n"),
              ReplayDriver::OK);
    m_device.SetMode(EMODE_SCAN);
    while (m_blocks.empty()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    m_device.SetMode(EMODE_STANDBY);
    m_receiver.PassOnWaiting();
    EXPECT_EQ(m_blocks.size(), 1U);
}

TEST_F(ReplayDriverTest, ManyBlocksPassTheThreadsCompletelyAndInOrder) {
    constexpr int COUNT = 20000; // several times what the queue holds
    QByteArray rows;
    for (int i = 0; i < COUNT; ++i) {
        rows += QByteArray::number(i) + ",121500000,10,,50,,,,,,,\n";
    }
    ReplayDriver driver(m_adapter, ReplayDriver::AS_FAST_AS_POSSIBLE);
    Replay(driver, rows);
    ASSERT_EQ(m_blocks.size(), static_cast<std::size_t>(COUNT));
    for (int i = 0; i < COUNT; ++i) {
        ASSERT_EQ(m_blocks[static_cast<std::size_t>(i)].time, static_cast<quint64>(i));
    }
    EXPECT_EQ(driver.GetProgress(), 1.0);
}
