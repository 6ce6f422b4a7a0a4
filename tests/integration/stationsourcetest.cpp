#include "support/httpserver.h"
#include "support/printing.h"
#include "support/receiverrecords.h"
#include "support/stationprocess.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <csignal>

using namespace Qt::StringLiterals;

// The whole way from a live source, which is a server of the test, to the sentences.

namespace {

class StationSourceTest : public testing::Test {
protected:
    ~StationSourceTest() override {
        ::kill(static_cast<pid_t>(m_station.processId()), SIGTERM);
        EXPECT_TRUE(m_station.waitForFinished(PATIENCE_MS));
        EXPECT_EQ(m_station.exitStatus(), QProcess::NormalExit);
    }

    void Start(const QString& driver, const QString& address) {
        m_station.setWorkingDirectory(m_directory.path());
        m_station.start(QStringLiteral(ZAN_STATION),
                        {u"run"_s, u"--config"_s, u"config"_s, u"--output"_s, u"out"_s, u"--driver"_s, driver,
                         u"--address"_s, address});
        ASSERT_TRUE(m_station.waitForStarted(PATIENCE_MS));
    }
    [[nodiscard]] QByteArray Sentences() const { return ReadFile(m_directory.filePath(u"out"_s)); }
    bool WaitForSentences(int count) {
        return Await(m_station, [&] { return Sentences().count("\r\n") >= count; });
    }
    /// Waits for a line of the log of commands.
    bool WaitForCommand(const QString& log, const QByteArray& command) {
        return Await(m_station, [&] {
            return ReadFile(m_directory.filePath(u"config/ZANControl/commandlog-%1.txt"_s.arg(log)))
                .contains(command);
        });
    }

    QTemporaryDir m_directory;
    QProcess m_station;
};

} // namespace

TEST_F(StationSourceTest, BearingsOfAStreamBecomeSentencesAlsoAfterItsProgramWasRestarted) {
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    Start(u"stream"_s, u"tcp://127.0.0.1:%1"_s.arg(server.serverPort()));
    ASSERT_TRUE(server.waitForNewConnection(PATIENCE_MS));
    std::unique_ptr<QTcpSocket> connection(server.nextPendingConnection());
    connection->write("1000,121500000,71.5,,90,-20,,,,,,\n");
    ASSERT_TRUE(connection->waitForBytesWritten(PATIENCE_MS));
    ASSERT_TRUE(WaitForSentences(1));
    connection.reset();
    ASSERT_TRUE(server.waitForNewConnection(PATIENCE_MS));
    connection.reset(server.nextPendingConnection());
    connection->write(
        R"({"time_ms":2000,"frequency_hz":121500000,"azimuth_deg":80,"quality":70,"level_db":-30})"
        "\n");
    ASSERT_TRUE(connection->waitForBytesWritten(PATIENCE_MS));
    ASSERT_TRUE(WaitForSentences(2));
    const QList<QByteArray> sentences = Sentences().split('\n');
    EXPECT_TRUE(
        sentences.at(0).startsWith("$PLG, 71.5,FRQ, 121500000,CMP, -0.1,QUA, 90.0,LEV,-20.0,TIM,000001,"))
        << sentences.at(0).toStdString();
    EXPECT_TRUE(
        sentences.at(1).startsWith("$PLG, 80.0,FRQ, 121500000,CMP, -0.1,QUA, 70.0,LEV,-30.0,TIM,000002,"))
        << sentences.at(1).toStdString();
    EXPECT_TRUE(WaitForCommand(u"tcp___127.0.0.1_%1"_s.arg(server.serverPort()), "mode 3"));
}

TEST_F(StationSourceTest, HeadingThatIsLostIsToldAndWhenItIsMeasuredAgain) {
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    Start(u"stream"_s, u"tcp://127.0.0.1:%1"_s.arg(server.serverPort()));
    ASSERT_TRUE(server.waitForNewConnection(PATIENCE_MS));
    const std::unique_ptr<QTcpSocket> connection(server.nextPendingConnection());
    QByteArray messages;
    const auto hasTold = [&](const QByteArray& text) {
        messages += m_station.readAllStandardError();
        return messages.contains(text);
    };
    const auto send = [&] {
        connection->write("1000,121500000,71.5,,90,-20,123,,,,,\n");
        connection->waitForBytesWritten(PATIENCE_MS);
    };
    QDeadlineTimer silence(0); // longer than the heading is current
    EXPECT_TRUE(Await(m_station, [&] {
        if (silence.hasExpired()) {
            send();
            silence.setRemainingTime(8000);
        }
        return hasTold("warning: the heading is not measured any more\n");
    })) << messages.toStdString();
    EXPECT_TRUE(Await(m_station, [&] {
        send();
        return hasTold("warning: the heading is measured again\n");
    })) << messages.toStdString();
    EXPECT_FALSE(messages.contains("position")) << "it was never there";
}

TEST_F(StationSourceTest, BearingsOfAKrakenSdrBecomeSentences) {
    HttpServer server;
    ReceiverRecord record;
    record.time = "500"; // before the station comes
    record.station = "PIER";
    server.SetBody(record.Line());
    const QString log = server.Address().replace(u':', u'_').replace(u'/', u'_');
    Start(u"krakensdr"_s, server.Address());
    ASSERT_TRUE(WaitForCommand(log, "mode 3"));
    record.time = "1000";
    server.SetBody(record.Line());
    ASSERT_TRUE(WaitForSentences(1));
    record.time = "2000";
    record.bearing = "93";
    server.SetBody(record.Line());
    ASSERT_TRUE(WaitForSentences(2));
    const QList<QByteArray> sentences = Sentences().split('\n');
    EXPECT_TRUE(
        sentences.at(0).startsWith("$PLG, 92.0,FRQ, 434500000,CMP, -0.1,QUA, 36.0,LEV,-25.5,TIM,000001,"))
        << sentences.at(0).toStdString();
    EXPECT_TRUE(
        sentences.at(1).startsWith("$PLG, 93.0,FRQ, 434500000,CMP, -0.1,QUA, 36.0,LEV,-25.5,TIM,000002,"))
        << sentences.at(1).toStdString();
    EXPECT_TRUE(WaitForCommand(log, "station PIER"));
}
