#include "replay/replaydriver.h"
#include "support/eventloop.h"
#include "support/printing.h"
#include "support/recordings.h"
#include "support/unixsocket.h"
#include "zancommon/legacydriveradapter.h"
#include "zanserver/driverreceiver.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using Replay::ReplayDriver;

namespace {

/// The other end of a FIFO: writes whole pieces, unbuffered.
class Writer {
public:
    explicit Writer(const QString& name)
        : m_file(name) {
        EXPECT_TRUE(m_file.open(QFile::WriteOnly | QFile::Unbuffered));
    }
    void Write(const QByteArray& text) { EXPECT_EQ(m_file.write(text), text.size()); }

private:
    QFile m_file;
};

/// Driver, adapter and receiver as the station wires them, with all that arrives on the main thread.
class ReplayDriverTest : public testing::Test {
protected:
    ReplayDriverTest() {
        QObject::connect(&m_receiver, &DriverReceiver::BlockReceived, &m_receiver,
                         [this](BearingBlock& block) {
                             EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
                             m_blocks.push_back(block);
                         });
        QObject::connect(&m_receiver, &DriverReceiver::PositionReceived, &m_receiver,
                         [this](const PositionFix& fix) { m_fixes.push_back(fix); });
        QObject::connect(&m_receiver, &DriverReceiver::ErrorReported, &m_receiver,
                         [this](const KvZANCommon::ErrorStruct& error) { m_errors.append(error.text); });
        QObject::connect(&m_receiver, &DriverReceiver::BitResultReported, &m_receiver,
                         [this](const KvZANCommon::ErrorStruct& result) { m_results.append(result.text); });
        QObject::connect(&m_receiver, &DriverReceiver::TestValuesReceived, &m_receiver,
                         [this](const QList<double>& values) { m_progress = values.value(0); });
        QObject::connect(&m_receiver, &DriverReceiver::LinkClosed, &m_receiver,
                         [] { QCoreApplication::quit(); });
        m_adapter.SetCallback(&m_receiver);
    }

    int Open(ReplayDriver& driver, const QByteArray& rows) {
        m_adapter.SetLegacyDriver(&driver);
        QFile file(m_directory.filePath(u"recording.csv"_s));
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write(m_header + rows);
        file.close();
        std::string name = file.fileName().toStdString();
        return m_device.Initialize(name, false);
    }

    void ReplayAll(ReplayDriver& driver, const QByteArray& rows) {
        ASSERT_EQ(Open(driver, rows), ReplayDriver::OK);
        m_device.SetMode(EMODE_SCAN);
        QCoreApplication::exec();
        m_device.SetMode(EMODE_STANDBY);
    }
    /// Opens a FIFO as the recording and starts the driver on it.
    void StartOnFifo(ReplayDriver& driver) {
        m_adapter.SetLegacyDriver(&driver);
        ASSERT_EQ(::mkfifo(Fifo().toLocal8Bit().constData(), 0600), 0);
        std::string name = Fifo().toStdString();
        ASSERT_EQ(m_device.Initialize(name, false), ReplayDriver::OK);
        m_device.SetMode(EMODE_SCAN);
    }
    [[nodiscard]] QString Fifo() const { return m_directory.filePath(u"fifo"_s); }
    [[nodiscard]] bool WaitForBlocks(std::size_t count) {
        return SpinUntil([&] { return m_blocks.size() >= count; });
    }

    QTemporaryDir m_directory;
    QByteArray m_header = RECORDING_HEADER;
    DriverReceiver m_receiver{u"replay"_s};
    KvZANCommon::LegacyDriverAdapter m_adapter;
    KvZANCommon::IDriver& m_device = m_adapter;
    std::vector<BearingBlock> m_blocks;
    std::vector<PositionFix> m_fixes;
    QStringList m_errors;
    QStringList m_results;
    double m_progress = 0.0;
};

} // namespace

TEST_F(ReplayDriverTest, RowBecomesABearingInTheUnitsOfTheInterface) {
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    ReplayAll(driver, "1500,121500000,71.55,-10.04,90,-52.046,12.3,1.5,-2.5,52.5,5.5,-4.0\n");
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
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    ReplayAll(driver, "0,121500000,0,,0,,,,,,,\n");
    ASSERT_EQ(m_blocks.size(), 1U);
    EXPECT_EQ(m_blocks[0].bearings.at(0).elevation, Bearing::NOT_MEASURED);
    EXPECT_EQ(m_blocks[0].bearings.at(0).level, Bearing::NOT_MEASURED);
    EXPECT_FALSE(m_blocks[0].status.heading || m_blocks[0].status.pitch || m_blocks[0].status.latitude);
}

TEST_F(ReplayDriverTest, RowsWithModeAndEmitterAreDeliveredAsTheyWereMeasured) {
    using Kind = BearingBlock::Kind;
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    m_header = RECORDING_HEADER.chopped(1) + ",mode,emitter\n";
    ReplayAll(driver, "0,121500000,10,,50,,,,,,,,1,\n"
                      "0,121500000,20,,50,,,,,,,,1,\n"
                      "0,121500000,30,,50,,,,,,,,1,0\n"
                      "0,121500000,40,,50,,,,,,,,1,1\n"
                      "0,121500000,50,,50,,,,,,,,1,0\n"
                      "0,121500000,0,,0,,,,,,,,1,-1\n"
                      "0,121500000,60,,50,,,,,,,,3,\n"
                      "0,121500000,70,,50,,,,,,,,3,\n");
    std::vector<std::pair<Kind, std::size_t>> blocks; // with the number of their bearings
    for (const BearingBlock& block : m_blocks) {
        blocks.emplace_back(block.kind, block.bearings.size());
    }
    EXPECT_EQ(blocks, (std::vector<std::pair<Kind, std::size_t>>{{Kind::FixedFrequency, 1},
                                                                 {Kind::FixedFrequency, 1},
                                                                 {Kind::SuperResolution, 2},
                                                                 {Kind::SuperResolution, 1},
                                                                 {Kind::SuperResolution, 0},
                                                                 {Kind::Scan, 2}}));
    EXPECT_EQ(m_blocks[1].bearings[0].azimuth, 200);
    EXPECT_TRUE(m_fixes.empty()) << "this recording does not say what a station used";
}

TEST_F(ReplayDriverTest, PositionThatAStationUsedIsToldWhenItChanges) {
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    m_header = RECORDING_HEADER.chopped(1) + ",position_time_ms\n";
    ReplayAll(driver, "1000,121500000,10,,50,,,,,52.5,5.5,,900\n"
                      "2000,121500000,10,,50,,,,,52.5,5.5,,900\n"
                      "3000,121500000,10,,50,,,,,52.5,5.5,,\n"
                      "4000,121500000,10,,50,,,,,,,,\n");
    ASSERT_EQ(m_fixes.size(), 3U);
    EXPECT_EQ(m_fixes[0].latitude, 52.5);
    EXPECT_EQ(m_fixes[0].longitude, 5.5);
    EXPECT_EQ(m_fixes[0].time, 900U);
    EXPECT_TRUE(m_fixes[0].valid);
    EXPECT_EQ(m_fixes[1].time, 0U);
    EXPECT_TRUE(m_fixes[1].valid);
    EXPECT_FALSE(m_fixes[2].valid);
}

TEST_F(ReplayDriverTest, AzimuthThatRoundsUpToAFullCircleIsNorth) {
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    ReplayAll(driver, "0,121500000,359.97,,50,,,,,,,\n");
    EXPECT_EQ(m_blocks.at(0).bearings.at(0).azimuth, 0);
}

TEST_F(ReplayDriverTest, LowestLevelStaysALevel) {
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    ReplayAll(driver, "0,121500000,10,,50,-327.68,,,,,,\n");
    EXPECT_EQ(m_blocks.at(0).bearings.at(0).level, -32767);
}

TEST_F(ReplayDriverTest, RowsOfOneMomentMakeOneBlock) {
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    ReplayAll(driver, "0,121500000,10,,50,,,,,,,\n"
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
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    ReplayAll(driver,
              "0,121500000,10,,50,,,,,,,\nnonsense\n1,121500000,370,,50,,,,,,,\n2,121500000,10,,50,,,,,,,\n");
    EXPECT_EQ(m_blocks.size(), 2U);
    ASSERT_EQ(m_errors.size(), 2);
    EXPECT_TRUE(m_errors[0].contains(u"line 3"_s)) << m_errors[0].toStdString();
    EXPECT_TRUE(m_errors[1].contains(u"line 4"_s)) << m_errors[1].toStdString();
    EXPECT_EQ(m_results, (QStringList{u"wrong number of columns: 1"_s, u"out of range: 1"_s}));
}

TEST_F(ReplayDriverTest, RecordingThatCannotBeOpenedIsAnErrorOfTheDriver) {
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    m_adapter.SetLegacyDriver(&driver);
    std::string missing = m_directory.filePath(u"missing.csv"_s).toStdString();
    EXPECT_EQ(m_device.Initialize(missing, false), ReplayDriver::FAILED);
    EXPECT_TRUE(m_device.GetLastError().contains(u"missing.csv"_s));
    m_device.ClearLastError();
    EXPECT_TRUE(m_device.GetLastError().isEmpty());
}

TEST_F(ReplayDriverTest, StreamThatCannotBeOpenedIsAnErrorOfTheDriver) {
    const QString path = m_directory.filePath(u"socket"_s);
    const UnixSocket socket(path);
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    m_adapter.SetLegacyDriver(&driver);
    std::string name = path.toStdString();
    EXPECT_EQ(m_device.Initialize(name, false), ReplayDriver::FAILED);
    EXPECT_EQ(m_device.GetLastError(), path + u": cannot be opened: No such device or address"_s);
}

TEST_F(ReplayDriverTest, HasOneChannelThatNeedsNeitherResetNorDeletion) {
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    m_adapter.SetLegacyDriver(&driver);
    EXPECT_EQ(m_device.GetMaxChannelCount(EMODE_SCAN), 1);
    EXPECT_EQ(m_device.Reset(), ReplayDriver::OK);
    EXPECT_EQ(m_device.DeleteAllChannels(), ReplayDriver::OK);
}

TEST_F(ReplayDriverTest, StandbyStopsAReplayThatWaitsForItsTime) {
    ReplayDriver driver(m_adapter);
    ASSERT_EQ(Open(driver, "0,121500000,10,,50,,,,,,,\n253402300799999,121500000,10,,50,,,,,,,\n"),
              ReplayDriver::OK);
    m_device.SetMode(EMODE_SCAN);
    EXPECT_TRUE(WaitForBlocks(1));
    m_device.SetMode(EMODE_STANDBY);
    m_receiver.PassOnWaiting();
    EXPECT_EQ(m_blocks.size(), 1U);
}

TEST_F(ReplayDriverTest, RowThatIsEarlierThanTheFirstOneIsDueAtOnce) {
    ReplayDriver driver(m_adapter);
    ReplayAll(driver, "5000,121500000,10,,50,,,,,,,\n4800,121500000,10,,50,,,,,,,\n"
                      "5001,121500000,10,,50,,,,,,,\n4801,121500000,10,,50,,,,,,,\n");
    ASSERT_EQ(m_blocks.size(), 4U);
    EXPECT_EQ(m_blocks[1].time, 4800U);
    EXPECT_EQ(m_blocks[3].time, 4801U);
}

TEST_F(ReplayDriverTest, StandbyStopsAReplayThatSkipsGigabytes) {
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    ASSERT_EQ(Open(driver, "0,121500000,10,,50,,,,,,,\n1,121500000,10,,50,,,,,,,\n"), ReplayDriver::OK);
    QFile recording(m_directory.filePath(u"recording.csv"_s));
    ASSERT_TRUE(recording.resize(qint64{500} << 30)) << "takes no room: nothing is in it";
    std::string name = recording.fileName().toStdString();
    ASSERT_EQ(m_device.Initialize(name, false), ReplayDriver::OK);
    m_device.SetMode(EMODE_SCAN);
    ASSERT_TRUE(WaitForBlocks(1));
    m_device.SetMode(EMODE_STANDBY); // returns, long before all of it could be read
    m_receiver.PassOnWaiting();
    EXPECT_LT(m_progress, 1.0);
}

TEST_F(ReplayDriverTest, ManyBlocksPassTheThreadsCompletelyAndInOrder) {
    constexpr int COUNT = 20000; // several times what the queue holds
    QByteArray rows;
    for (int i = 0; i < COUNT; ++i) {
        rows += QByteArray::number(i) + ",121500000,10,,50,,,,,,,\n";
    }
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    ReplayAll(driver, rows);
    ASSERT_EQ(m_blocks.size(), static_cast<std::size_t>(COUNT));
    for (int i = 0; i < COUNT; ++i) {
        ASSERT_EQ(m_blocks[static_cast<std::size_t>(i)].time, static_cast<quint64>(i));
    }
    EXPECT_EQ(m_progress, 1.0);
}

TEST_F(ReplayDriverTest, BlockEndsAtSixtyThousandBearingsAndTheRestIsTheNextOne) {
    constexpr int COUNT = 60001;
    QByteArray rows;
    for (int i = 0; i < COUNT; ++i) {
        rows += "0,121500000," + QByteArray::number(i % 360) + ",,50,,,,,,,\n";
    }
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    ReplayAll(driver, rows);
    ASSERT_EQ(m_blocks.size(), 2U);
    EXPECT_EQ(m_blocks[0].bearings.size(), 60000U);
    ASSERT_EQ(m_blocks[1].bearings.size(), 1U);
    EXPECT_EQ(m_blocks[1].bearings[0].azimuth, 60000 % 360 * 10);
    EXPECT_EQ(m_blocks[1].time, m_blocks[0].time);
}

TEST_F(ReplayDriverTest, BadLinesOfASecondRecordingAreReportedFromTheFirstOneOn) {
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    ReplayAll(driver, "nonsense\n");
    ReplayAll(driver, "0,121500000,10,,50,,,,,,,\nnonsense\n");
    ASSERT_EQ(m_errors.size(), 2);
    EXPECT_TRUE(m_errors[1].contains(u"line 3"_s)) << m_errors[1].toStdString();
}

TEST_F(ReplayDriverTest, RowsOfAFifoAreDeliveredAsTheyCome) {
    ReplayDriver driver(m_adapter);
    StartOnFifo(driver);
    {
        Writer writer(Fifo());
        writer.Write(RECORDING_HEADER + "0,121500000,10,,50,,,,,,,\n");
        EXPECT_TRUE(WaitForBlocks(1)) << "without the row behind it";
        writer.Write("1,121500000,20,");
        writer.Write(",50,,,,,,,\n1,121500000,30,,50,,,,,,,\nnonsense\n");
        EXPECT_TRUE(SpinUntil([&] { return m_errors.size() == 1; }));
        EXPECT_TRUE(WaitForBlocks(2)) << "a line that is not a row holds nothing up";
        writer.Write("2,121500000,40,,50,,,,,,,\n" + QByteArray(10000, 'x'));
        EXPECT_TRUE(WaitForBlocks(3)) << "nor does one that does not end";
        writer.Write("\n3,121500000,50,,50,,,,,,,\n\n");
        EXPECT_TRUE(WaitForBlocks(4)) << "nor an empty one";
    }
    QCoreApplication::exec(); // until the link is closed: the last writer has gone
    m_device.SetMode(EMODE_STANDBY);
    ASSERT_EQ(m_blocks.size(), 4U);
    EXPECT_EQ(m_blocks[1].bearings.size(), 2U) << "what has come together is one block";
    EXPECT_EQ(m_blocks[3].bearings.at(0).azimuth, 500);
    EXPECT_EQ(m_errors.size(), 2) << m_errors.join(u'\n').toStdString();
}

TEST_F(ReplayDriverTest, FifoWithoutAWriterHoldsNothingUpAndIsStopped) {
    ReplayDriver driver(m_adapter);
    StartOnFifo(driver);
    m_device.SetMode(EMODE_STANDBY);
    m_receiver.PassOnWaiting();
    EXPECT_TRUE(m_blocks.empty());
    EXPECT_TRUE(m_errors.isEmpty()) << m_errors.join(u'\n').toStdString();
}

TEST_F(ReplayDriverTest, FifoThatHoldsNoRecordingIsAnErrorWithItsName) {
    ReplayDriver driver(m_adapter);
    StartOnFifo(driver);
    Writer(Fifo()).Write("nonsense\n");
    QCoreApplication::exec();
    ASSERT_EQ(m_errors.size(), 1);
    EXPECT_TRUE(m_errors[0].contains(u"fifo: the header line is missing"_s)) << m_errors[0].toStdString();
}

TEST_F(ReplayDriverTest, DriverThatIsHeldUpByAFullQueueIsStoppedAndNothingOfItIsLost) {
    QByteArray rows;
    for (int i = 0; i < 1000; ++i) {
        rows += QByteArray::number(i) + ",121500000,10,,50,,,,,,,\n";
    }
    DriverReceiver receiver(u"small"_s, 1);
    std::size_t count = 0;
    QObject::connect(&receiver, &DriverReceiver::BlockReceived, &receiver, [&] { ++count; });
    m_adapter.SetCallback(&receiver);
    ReplayDriver driver(m_adapter);
    driver.SetTest(u"speed max"_s);
    ASSERT_EQ(Open(driver, rows), ReplayDriver::OK);
    m_device.SetMode(EMODE_SCAN);
    receiver.PassOnWaiting();             // the queue holds one delivery at a time: room for the first block
    while (m_device.GetReadCount() < 2) { // the second block waits for the first one to be taken
        QThread::yieldCurrentThread();
    }
    receiver.StopHoldingUp();
    m_device.SetMode(EMODE_STANDBY);
    receiver.PassOnWaiting();
    EXPECT_EQ(count, static_cast<std::size_t>(m_device.GetReadCount()));
}

TEST_F(ReplayDriverTest, TestCommandThatItDoesNotKnowIsRefusedWithWhatThereIs) {
    ReplayDriver driver(m_adapter);
    for (const QString& command : {u"pace max"_s, u"speed"_s, u"speed 2 3"_s, QString()}) {
        EXPECT_EQ(driver.SetTest(command), ReplayDriver::FAILED) << command.toStdString();
        EXPECT_EQ(driver.GetLastError(),
                  u"\"%1\" is not known; there is: speed realtime|N|max"_s.arg(command));
    }
    for (const QString& speed : {u"0"_s, u"-1"_s, u"nan"_s, u"inf"_s, u"fast"_s}) {
        EXPECT_EQ(driver.SetTest(u"speed "_s + speed), ReplayDriver::FAILED) << speed.toStdString();
        EXPECT_EQ(driver.GetLastError(), u"speed takes realtime, max or a number above 0, not "_s + speed);
    }
}
