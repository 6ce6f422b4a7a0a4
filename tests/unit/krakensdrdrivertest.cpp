#include "krakensdr/krakensdrdriver.h"
#include "support/eventloop.h"
#include "support/httpserver.h"
#include "support/printing.h"
#include "support/receiverrecords.h"
#include "support/sleepingthread.h"
#include "zanserver/driverreceiver.h"

#include <gtest/gtest.h>

#include <QDir>

#include <array>
#include <functional>
#include <future>
#include <thread>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using KrakenSdr::KrakenSdrDriver;
using KrakenSdr::RecordReader;

namespace {

/// Takes what the driver delivers, the spectra included.
class Callback final : public KvZANCommon::NullDriverCallback {
public:
    void fillScanBuffer(long, unsigned long long& time, unsigned, unsigned count, Bearing* bearings,
                        KvZANCommon::StatusStruct& status) override {
        EXPECT_EQ(count, 1U);
        {
            const std::lock_guard lock(mutex);
            blocks.push_back({time, status, {*bearings}});
        }
        onBlock();
    }
    void fillSRSpectrumBuffer(short* values, int count, unsigned long long& time) override {
        const std::lock_guard lock(mutex);
        spectra.emplace_back(time, std::vector<short>(values, values + count));
    }
    void reportError(KvZANCommon::ErrorStruct& error) override {
        const std::lock_guard lock(mutex);
        (error.fatal ? fatal : errors).append(error.text);
    }
    void ReportBITResult(KvZANCommon::ErrorStruct& result) override {
        const std::lock_guard lock(mutex);
        results.append(result.text);
    }
    void SetCommandLog(QString& line) override {
        const std::lock_guard lock(mutex);
        commands.append(line);
    }
    void CloseDataLink() override {
        const std::lock_guard lock(mutex);
        ++closed;
    }

    std::function<void()> onBlock = [] {}; ///< on the driver's thread
    std::mutex mutex;
    std::vector<BearingBlock> blocks;
    std::vector<std::pair<quint64, std::vector<short>>> spectra;
    QStringList errors;
    QStringList fatal;
    QStringList results;
    QStringList commands;
    int closed = 0;
};

class KrakenSdrDriverTest : public testing::Test {
protected:
    KrakenSdrDriverTest() {
        m_driver.SetCallback(&m_callback);
        m_server.SetBody(m_record.Line());
    }

    int Open(const QString& settings = u"?interval=10"_s) {
        std::string address = (m_server.Address() + settings).toStdString();
        return m_driver.Initialize(address, false);
    }
    /// Opens the receiver while it serves an old record, and has it serve that of the test then.
    void Start(const QString& settings = u"?interval=10"_s) {
        ReceiverRecord old = m_record;
        old.time = "1";
        m_server.SetBody(old.Line());
        ASSERT_EQ(Open(settings), KrakenSdrDriver::OK) << m_driver.GetLastError().toStdString();
        m_server.SetBody(m_record.Line());
        ASSERT_EQ(m_driver.SetMode(EMODE_SCAN), KrakenSdrDriver::OK);
    }
    template <class Condition>
    bool WaitFor(Condition condition) {
        return SpinUntil([&] {
            const std::lock_guard lock(m_callback.mutex);
            return condition();
        });
    }
    bool WaitForBlocks(std::size_t count) {
        return WaitFor([&] { return m_callback.blocks.size() >= count; });
    }
    bool WaitForLoss() {
        return WaitFor([&] { return m_callback.closed > 0; });
    }
    /// Waits until the server has answered some more requests.
    bool WaitForRequests(int count) {
        const int before = m_server.GetRequestCount();
        return SpinUntil([&] { return m_server.GetRequestCount() >= before + count; });
    }
    /// The reason why the receiver is not opened.
    QString Refusal(const QString& settings = u"?timeout=200"_s) {
        EXPECT_EQ(Open(settings), KrakenSdrDriver::FAILED);
        return m_driver.GetLastError();
    }
    [[nodiscard]] QString Failure(const QString& reason) const {
        return m_server.Address() + u"/DOA_value.html: "_s + reason;
    }
    void SetTime(const QByteArray& time) {
        m_record.time = time;
        m_server.SetBody(m_record.Line());
    }

    ReceiverRecord m_record;
    HttpServer m_server;
    Callback m_callback;
    KrakenSdrDriver m_driver;
};

} // namespace

TEST_F(KrakenSdrDriverTest, RecordBecomesABearingInTheUnitsOfTheInterface) {
    m_record.latitude = "52.5";
    m_record.longitude = "5.5";
    m_record.heading = "10.5";
    m_server.SetBody(m_record.Line());
    Start();
    ASSERT_TRUE(WaitForBlocks(1));
    m_driver.SetMode(EMODE_STANDBY);
    const BearingBlock& block = m_callback.blocks[0];
    EXPECT_EQ(block.time, 1'700'000'000'000U);
    EXPECT_EQ(block.status.frequency, 434.5e6);
    EXPECT_EQ(block.status.heading, 10.5);
    EXPECT_EQ(block.status.latitude, 52.5);
    EXPECT_EQ(block.status.longitude, 5.5);
    EXPECT_EQ(block.bearings[0].azimuth, 920);
    EXPECT_EQ(block.bearings[0].quality, 36);
    EXPECT_EQ(block.bearings[0].level, -2550);
    EXPECT_EQ(block.bearings[0].elevation, Bearing::NOT_MEASURED);
    ASSERT_EQ(m_callback.spectra.size(), 1U);
    EXPECT_EQ(m_callback.spectra[0].first, block.time);
    ASSERT_EQ(m_callback.spectra[0].second.size(), 360U);
    EXPECT_EQ(m_callback.spectra[0].second[0], 25);
    EXPECT_EQ(m_callback.spectra[0].second[92], 600);
}

TEST_F(KrakenSdrDriverTest, ConfidenceAndLevelAreMappedBySettings) {
    Start(u"?interval=10&quality=20&level=3.5"_s);
    ASSERT_TRUE(WaitForBlocks(1));
    m_record.confidence = "5.5";
    m_record.level = "R";
    SetTime("2000");
    ASSERT_TRUE(WaitForBlocks(2));
    m_driver.SetMode(EMODE_STANDBY);
    EXPECT_EQ(m_callback.blocks[0].bearings[0].quality, 72);
    EXPECT_EQ(m_callback.blocks[0].bearings[0].level, -2200);
    EXPECT_EQ(m_callback.blocks[1].bearings[0].quality, 100) << "is the best";
    EXPECT_EQ(m_callback.blocks[1].bearings[0].level, Bearing::NOT_MEASURED);
}

TEST_F(KrakenSdrDriverTest, OnlyARecordWithANewTimeIsABearing) {
    Start();
    ASSERT_TRUE(WaitForRequests(5));
    SetTime("2000");
    ASSERT_TRUE(WaitForBlocks(2));
    ASSERT_TRUE(WaitForRequests(5));
    m_driver.SetMode(EMODE_STANDBY);
    EXPECT_EQ(m_callback.blocks.size(), 2U);
    EXPECT_EQ(m_driver.GetReadCount(), 2);
}

TEST_F(KrakenSdrDriverTest, RecordThatIsThereAtTheFirstContactIsOldAndIsNotDelivered) {
    for (const QByteArray& body : {m_record.Line(), m_record.Line().chopped(1)}) {
        m_server.SetBody(body);
        KrakenSdrDriver driver;
        driver.SetCallback(&m_callback);
        std::string address = (m_server.Address() + u"?interval=10"_s).toStdString();
        ASSERT_EQ(driver.Initialize(address, false), KrakenSdrDriver::OK);
        ASSERT_EQ(driver.SetMode(EMODE_SCAN), KrakenSdrDriver::OK);
        ASSERT_TRUE(WaitForRequests(5));
    }
    EXPECT_EQ(m_callback.blocks.size(), 0U);
}

TEST_F(KrakenSdrDriverTest, AfterALossOnlyWhatWasNotDeliveredBeforeIsABearing) {
    Start();
    ASSERT_TRUE(WaitForBlocks(1));
    m_server.SetBody("");
    ASSERT_TRUE(WaitForLoss());
    m_server.SetBody("", "503 Service Unavailable");
    EXPECT_EQ(Open(), KrakenSdrDriver::FAILED);
    m_server.SetBody(m_record.Line());
    ASSERT_EQ(Open(u"?interval=11"_s), KrakenSdrDriver::OK);
    ASSERT_EQ(m_driver.SetMode(EMODE_SCAN), KrakenSdrDriver::OK);
    ASSERT_TRUE(WaitForRequests(5));
    EXPECT_EQ(m_driver.GetReadCount(), 0);
    m_driver.SetMode(EMODE_STANDBY);
    SetTime("2000");
    ASSERT_EQ(Open(), KrakenSdrDriver::OK);
    ASSERT_EQ(m_driver.SetMode(EMODE_SCAN), KrakenSdrDriver::OK);
    ASSERT_TRUE(WaitForBlocks(2)) << "it was measured while the receiver was away";
    EXPECT_EQ(m_callback.blocks[1].time, 2000U);
}

TEST_F(KrakenSdrDriverTest, InStandbyNothingIsDeliveredOrAsked) {
    Start();
    ASSERT_TRUE(WaitForBlocks(1));
    EXPECT_EQ(m_driver.SetMode(EMODE_STANDBY), KrakenSdrDriver::OK);
    const int before = m_server.GetRequestCount();
    EXPECT_EQ(m_driver.SetMode(EMODE_FFM), KrakenSdrDriver::OK);
    ASSERT_TRUE(WaitForRequests(2));
    SetTime("2000");
    EXPECT_TRUE(WaitForBlocks(2));
    EXPECT_GE(m_server.GetRequestCount(), before);
}

TEST_F(KrakenSdrDriverTest, StandbyDoesNotWaitForAReceiverThatStalls) {
    Start(u"?interval=10&timeout=10000"_s);
    ASSERT_TRUE(WaitForBlocks(1));
    std::atomic<bool> isAsked = false;
    m_server.SetAnswer([&](QTcpSocket& client) {
        isAsked = true;
        while (!m_server.IsStopping() && client.state() == QTcpSocket::ConnectedState) {
            client.waitForReadyRead(10);
        }
    });
    ASSERT_TRUE(SpinUntil([&] { return isAsked.load(); }));
    QElapsedTimer timer; // the time is the rule: standby returns at once
    timer.start();
    m_driver.SetMode(EMODE_STANDBY);
    EXPECT_LT(timer.elapsed(), 5000);
}

TEST_F(KrakenSdrDriverTest, AfterStandbyTheOtherBearingsOfAnAnswerAreNotDelivered) {
    std::promise<void> hasDelivered;
    std::promise<void> mayGoOn;
    m_callback.onBlock = [&] {
        hasDelivered.set_value();
        mayGoOn.get_future().wait();
    };
    ASSERT_EQ(Open(), KrakenSdrDriver::OK);
    ReceiverRecord other = m_record;
    other.frequency = "435000000";
    other.time = m_record.time = "1700000001000";
    m_server.SetBody(m_record.Line() + other.Line());
    ASSERT_EQ(m_driver.SetMode(EMODE_SCAN), KrakenSdrDriver::OK);
    hasDelivered.get_future().wait();
    std::promise<pid_t> stopperId;
    std::thread stopper([&] {
        stopperId.set_value(gettid());
        m_driver.SetMode(EMODE_STANDBY);
    });
    EXPECT_TRUE(AwaitSleep(stopperId.get_future().get())) << "it waits for the delivery";
    mayGoOn.set_value();
    stopper.join();
    EXPECT_EQ(m_callback.blocks.size(), 1U);
}

TEST_F(KrakenSdrDriverTest, ReceiverThatDiesIsReportedOnceAndOpenedAgainByInitialize) {
    Start();
    ASSERT_TRUE(WaitForBlocks(1));
    m_server.SetBody("gone", "503 Service Unavailable");
    ASSERT_TRUE(WaitForLoss());
    EXPECT_EQ(m_callback.fatal, QStringList(Failure(u"the server answers with the status 503"_s)));
    EXPECT_EQ(m_driver.SetMode(EMODE_SCAN), KrakenSdrDriver::FAILED);
    EXPECT_EQ(m_driver.GetLastError(), u"the receiver is lost"_s);
    SetTime("2000");
    Start();
    EXPECT_TRUE(WaitForBlocks(2));
    EXPECT_EQ(m_callback.closed, 1);
}

TEST_F(KrakenSdrDriverTest, FewerFailuresThanThatAreNoLoss) {
    Start();
    ASSERT_TRUE(WaitForBlocks(1));
    std::atomic<int> failures = 0;
    const QByteArray line = m_record.Line();
    m_server.SetAnswer([&failures, line](QTcpSocket& client) {
        const QByteArray body = ++failures % 3 == 0 ? line : QByteArray();
        client.write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + body);
    });
    ASSERT_TRUE(WaitForRequests(3 * KrakenSdrDriver::LOST_AFTER));
    m_driver.SetMode(EMODE_STANDBY);
    EXPECT_EQ(m_callback.closed, 0);
}

TEST_F(KrakenSdrDriverTest, ServerThatListensNoMoreIsALoss) {
    Start();
    ASSERT_TRUE(WaitForBlocks(1));
    m_server.Stop();
    ASSERT_TRUE(WaitForLoss());
    EXPECT_EQ(m_callback.fatal, QStringList(Failure(u"Connection refused"_s)));
}

TEST_F(KrakenSdrDriverTest, RecordThatIsMetHalfWrittenIsTakenWhenItIsWhole) {
    Start();
    ASSERT_TRUE(WaitForBlocks(1));
    m_record.time = "2000";
    m_server.SetBody(m_record.Line().left(700));
    ASSERT_TRUE(WaitForRequests(1));
    m_server.SetBody(m_record.Line());
    ASSERT_TRUE(WaitForBlocks(2));
    EXPECT_EQ(m_callback.closed, 0);
}

TEST_F(KrakenSdrDriverTest, FaultyAnswersAreRefusedWithTheReason) {
    m_server.SetBody("<html><body>Hello</body></html>");
    EXPECT_EQ(Refusal(), Failure(u"it serves no record"_s));
    m_server.SetBody("<html><body>Hello</body></html>\n");
    EXPECT_EQ(Refusal(), Failure(u"it serves no record; the last line that is none: 1 fields instead of 377: "
                                 "\"<html><body>Hello</body></html>\""_s));
    m_server.SetBody(QByteArray());
    EXPECT_EQ(Refusal(), Failure(u"it serves no record"_s));
    m_server.SetBody("nothing here", "404 Not Found");
    EXPECT_EQ(Refusal(), Failure(u"the server answers with the status 404"_s));
    m_server.SetAnswer([](QTcpSocket& client) {
        client.write("HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1:1/\r\nContent-Length: 0\r\n\r\n");
    });
    EXPECT_EQ(Refusal(), Failure(u"the server answers with the status 302"_s))
        << "redirections are not followed";
    m_server.SetAnswer([](QTcpSocket& client) { client.abort(); });
    EXPECT_TRUE(Refusal().startsWith(Failure(QString())));
}

TEST_F(KrakenSdrDriverTest, AddressThatIsNoneIsRefusedWithTheReason) {
    std::string address = "ftp://kraken:8081";
    EXPECT_EQ(m_driver.Initialize(address, false), KrakenSdrDriver::FAILED);
    EXPECT_TRUE(m_driver.GetLastError().startsWith(u"ftp://kraken:8081: "_s))
        << m_driver.GetLastError().toStdString();
}

TEST_F(KrakenSdrDriverTest, WithoutACallbackItIsNotOpened) {
    KrakenSdrDriver driver;
    std::string address = m_server.Address().toStdString();
    EXPECT_EQ(driver.Initialize(address, false), KrakenSdrDriver::FAILED);
    EXPECT_EQ(driver.GetLastError(), u"there is no callback"_s);
}

TEST_F(KrakenSdrDriverTest, EndlessBodyIsBounded) {
    m_server.SetAnswer([this](QTcpSocket& client) {
        client.write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
        while (!m_server.IsStopping() && client.state() == QTcpSocket::ConnectedState) {
            client.write(QByteArray(10000, '1'));
            client.waitForBytesWritten(1000);
        }
    });
    EXPECT_EQ(Refusal(u"?timeout=10000"_s),
              Failure(u"the answer is longer than %1 bytes"_s.arg(RecordReader::MAX_BODY)));
}

TEST_F(KrakenSdrDriverTest, ServerThatStallsOrDripsIsGivenUpInTime) {
    for (const QByteArray& drip : {QByteArray(), QByteArray("1")}) {
        m_server.SetAnswer([this, drip](QTcpSocket& client) {
            client.write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
            while (!m_server.IsStopping() && client.state() == QTcpSocket::ConnectedState) {
                client.write(drip);
                client.waitForReadyRead(10);
            }
        });
        EXPECT_EQ(Refusal(), Failure(u"no answer within 200 ms"_s));
    }
}

TEST_F(KrakenSdrDriverTest, BadLinesBesideRecordsAreToldAFewTimesAndSummedUp) {
    const QByteArray line = m_record.Line();
    Start();
    m_server.SetBody("garbage\n" + line);
    ASSERT_TRUE(WaitForRequests(12));
    m_server.SetBody("");
    ASSERT_TRUE(WaitForLoss());
    EXPECT_EQ(
        m_callback.errors,
        (QStringList{
            u"1 fields instead of 377: \"garbage\""_s,
            u"10 lines so far: wrong number of fields; the last one: 1 fields instead of 377: \"garbage\""_s}));
    ASSERT_EQ(m_callback.results.size(), 1);
    EXPECT_TRUE(m_callback.results[0].startsWith(u"wrong number of fields: "_s));
}

TEST_F(KrakenSdrDriverTest, StationIsToldToTheCommandLogOnce) {
    m_record.station = "PIER 7";
    m_server.SetBody(m_record.Line());
    Start();
    ASSERT_TRUE(WaitForBlocks(1));
    SetTime("2000");
    ASSERT_TRUE(WaitForBlocks(2));
    m_driver.SetMode(EMODE_STANDBY);
    EXPECT_EQ(m_callback.commands, (QStringList{u"open %1?interval=10"_s.arg(m_server.Address()),
                                                u"station PIER 7"_s, u"mode 3"_s, u"mode 0"_s}));
}

TEST_F(KrakenSdrDriverTest, SettingsAreNotSent) {
    ASSERT_EQ(Open(u"/bearings?interval=50&quality=5"_s), KrakenSdrDriver::OK);
    EXPECT_TRUE(m_server.GetLastRequest().startsWith("GET /bearings HTTP/1.1\r\n"))
        << m_server.GetLastRequest().toStdString();
}

TEST_F(KrakenSdrDriverTest, WhatTheReceiverCannotDoIsRefused) {
    EXPECT_EQ(m_driver.SetMode(EMODE_SCAN), KrakenSdrDriver::FAILED);
    EXPECT_EQ(m_driver.GetLastError(), u"the receiver is not open"_s);
    EXPECT_EQ(m_driver.SetFrequency(1e6), KrakenSdrDriver::NOT_SUPPORTED);
    EXPECT_EQ(m_driver.SetMode(EMODE_SEARCH), KrakenSdrDriver::NOT_SUPPORTED);
    EXPECT_EQ(m_driver.GetLastError(), u"mode 4 is not one of standby, fixed frequency, scan"_s);
}

TEST_F(KrakenSdrDriverTest, HundredLossesLeaveNoDescriptorBehind) {
    const auto count = [] {
        return QDir(u"/proc/self/fd"_s).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size();
    };
    qsizetype after = 0;
    for (int i = 0; i < 100; ++i) {
        m_server.SetBody(m_record.Line());
        Start();
        m_server.SetBody("");
        const int losses = i + 1;
        ASSERT_TRUE(WaitFor([&] { return m_callback.closed == losses; }));
        m_driver.SetMode(EMODE_STANDBY);
        after = i == 0 ? count() : after;
    }
    EXPECT_LE(count(), after + 2) << "the server may still be closing its last connections";
}
