#include "stddevicedefinition/stddevicedescriptors.h"
#include "support/eventloop.h"
#include "support/printing.h"
#include "support/pseudoterminal.h"
#include "valueframework/tree.h"
#include "zanserver/gpsdsource.h"
#include "zanserver/servervalue.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QHostAddress>
#include <QProcess>
#include <QSet>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTimer>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace StdDeviceDefinition;
using namespace ZANServer;

// A real gpsd, whose receiver is a pseudo terminal.

namespace {

constexpr int PATIENCE_MS = 30000;

/// The daemon, with one serial line, on the loopback interface.
class Gpsd {
public:
    Gpsd(const QString& line, quint16 port) {
        m_process.setWorkingDirectory(m_directory.path()); // "none" becomes a socket there
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.start(QStringLiteral(ZAN_GPSD),
                        {u"-N"_s, u"-n"_s, u"-S"_s, QString::number(port), u"-F"_s, u"none"_s, line});
        EXPECT_TRUE(m_process.waitForStarted(PATIENCE_MS));
    }
    Gpsd(const Gpsd&) = delete;
    Gpsd& operator=(const Gpsd&) = delete;
    ~Gpsd() {
        m_process.terminate();
        EXPECT_TRUE(m_process.waitForFinished(PATIENCE_MS));
    }

private:
    QTemporaryDir m_directory;
    QProcess m_process;
};

quint16 FindFreePort() {
    QTcpServer server;
    EXPECT_TRUE(server.listen(QHostAddress::LocalHost));
    return server.serverPort();
}

/// A sentence with its check sum.
QByteArray Sentence(const QByteArray& content) {
    unsigned sum = 0;
    for (const char c : content) {
        sum ^= static_cast<unsigned char>(c);
    }
    return '$' + content + '*' + QByteArray::number(sum, 16).toUpper().rightJustified(2, '0') + "\r\n";
}

/// What a receiver with a compass says in one second: 54 degrees 30 minutes north, 8 degrees 15 minutes east,
/// and a heading of 71.5 degrees.
QByteArray SecondOfReceiver(int second) {
    const QByteArray time = "2041" + QByteArray::number(second % 60).rightJustified(2, '0') + ".00";
    return Sentence("GPRMC," + time + ",A,5430.000000,N,00815.000000,E,0.100,21.4,010326,,,A") +
           Sentence("GPGGA," + time + ",5430.000000,N,00815.000000,E,1,08,1.0,15.5,M,45.0,M,,") +
           Sentence("GPHDT,71.50,T") + Sentence("GPZDA," + time + ",01,03,2026,,");
}

template <class T>
auto Measured(const ValueDescriptor& descriptor) {
    const auto* const value = ServerValue<T>(descriptor);
    return value->GetState() == TValueState::Valid ? std::optional(value->GetValue()) : std::nullopt;
}

class GpsdTest : public testing::Test {
protected:
    GpsdTest() {
        CreateBranch(EBranch::SERVER, ZANPath::SERVER.toString());
        ServerValue<ValueSelection>(g_vdPosSource)->SetCurrentKey(StationPosition::SOURCE_GPSD, nullptr);
        ServerValue<ValueSelection>(g_vdHeaSource)->SetCurrentKey(StationAttitude::SOURCE_GPSD, nullptr);
        m_position.emplace(std::nullopt, std::nullopt);
        m_attitude.emplace();
        GpsdSettings settings;
        settings.address = {u"127.0.0.1"_s, m_port};
        m_source.emplace(*m_position, *m_attitude, settings, GpsdClient::Timing{10ms, 100ms, 10s});
        QObject::connect(&m_feed, &QTimer::timeout, &m_feed, [this] {
            (void)m_line->Write(SecondOfReceiver(m_second++)); // the line is full while gpsd does not read
        });
    }

    void StartGpsd() { m_gpsd = std::make_unique<Gpsd>(m_line->path, m_port); }
    /// The receiver speaks, quicker than the time that it tells.
    void StartReceiver() { m_feed.start(100ms); }

    std::optional<PseudoTerminal> m_line{std::in_place};
    const quint16 m_port = FindFreePort();
    std::unique_ptr<Gpsd> m_gpsd;
    QTimer m_feed;
    int m_second = 0;
    std::optional<StationPosition> m_position;
    std::optional<StationAttitude> m_attitude;
    std::optional<GpsdSource> m_source;
};

} // namespace

TEST_F(GpsdTest, PositionTimeAndHeadingOfAReceiverReachTheTree) {
    StartGpsd();
    StartReceiver();
    ASSERT_TRUE(SpinUntil([] {
        return Measured<ValueTimeStamp>(g_vdPosLastUpdate) && Measured<ValueNumericInt>(g_vdTrueHeading) &&
               Measured<ValueNumericDouble>(g_vdAltitude);
    }));
    EXPECT_NEAR(Measured<ValueNumericDouble>(g_vdPosLatitude).value_or(0.0), 54.5, 1e-6);
    EXPECT_NEAR(Measured<ValueNumericDouble>(g_vdPosLongitude).value_or(0.0), 8.25, 1e-6);
    EXPECT_NEAR(Measured<ValueNumericDouble>(g_vdAltitude).value_or(0.0), 15.5, 1e-3);
    EXPECT_EQ(Measured<ValueNumericInt>(g_vdTrueHeading), 715);
    EXPECT_EQ(Measured<ValueNumericDouble>(g_vdPitch), std::nullopt);
    EXPECT_EQ(ServerValue<ValueString>(g_vdGpsdReceiver)->GetValue(), m_line->path);
    EXPECT_EQ(ServerValue<ValueSelection>(g_vdGpsdFixMode)->GetStringValue(), u"3D"_s);
}

TEST_F(GpsdTest, PositionIsNotMeasuredWhileGpsdIsDownAndComesBackWithIt) {
    StartGpsd();
    StartReceiver();
    const auto hasPosition = [] { return Measured<ValueNumericDouble>(g_vdPosLatitude).has_value(); };
    ASSERT_TRUE(SpinUntil(hasPosition));
    m_gpsd.reset();
    // each ages by itself, the heading of the last second a little after its position
    EXPECT_TRUE(SpinUntil([&] { return !hasPosition() && !Measured<ValueNumericInt>(g_vdTrueHeading); }));
    StartGpsd();
    EXPECT_TRUE(SpinUntil(hasPosition));
}

TEST_F(GpsdTest, PositionOfAReceiverThatIsUnpluggedIsNotPassedOn) {
    StartGpsd();
    StartReceiver();
    ASSERT_TRUE(SpinUntil([] {
        return Measured<ValueNumericDouble>(g_vdPosLatitude) && Measured<ValueNumericInt>(g_vdTrueHeading);
    }));
    m_feed.stop();
    m_line->Unplug();
    EXPECT_TRUE(SpinUntil([] {
        return !Measured<ValueNumericDouble>(g_vdPosLatitude) && !Measured<ValueNumericInt>(g_vdTrueHeading);
    }));
    EXPECT_EQ(ServerValue<ValueSelection>(g_vdGpsdState)->GetStringValue(), u"Connected"_s);
}

// Logs of real receivers are not part of the project; where they are at hand, the tree must show what was
// read in them by other means.

class GpsdRecordTest : public GpsdTest {
protected:
    void SetUp() override {
        const QString recordings = qEnvironmentVariable("ZAN_RECORDINGS");
        if (recordings.isEmpty()) {
            GTEST_SKIP() << "ZAN_RECORDINGS does not name a directory of recordings";
        }
        QFile log(recordings + u"/nmea/rst39.log"_s);
        ASSERT_TRUE(log.open(QFile::ReadOnly));
        for (const QByteArray& line : log.readAll().split('\n')) {
            if (line.startsWith('$')) {
                m_sentences.append(line.trimmed() + "\r\n");
            }
        }
    }

    QList<QByteArray> m_sentences;
};

TEST_F(GpsdRecordTest, PositionsAndHeadingsOfAVehicleAreThoseOfItsLog) {
    const QSet<int> inLog{255, 433, 615, 748};
    QSet<int> headings;
    int positions = 0;
    StartGpsd();
    QTimer feed; // as quick as the receiver was
    QObject::connect(&feed, &QTimer::timeout, &feed, [&] {
        if (!m_sentences.isEmpty() && m_line->Write(m_sentences.front()) > 0) {
            m_sentences.removeFirst();
        }
    });
    feed.start(25ms);
    ASSERT_TRUE(SpinUntil([&] {
        if (const auto heading = Measured<ValueNumericInt>(g_vdTrueHeading)) {
            headings.insert(*heading);
        }
        if (const auto latitude = Measured<ValueNumericDouble>(g_vdPosLatitude)) {
            EXPECT_NEAR(*latitude, 42.0956, 1e-4);
            EXPECT_NEAR(Measured<ValueNumericDouble>(g_vdPosLongitude).value_or(0.0), -88.0339, 2e-4);
            ++positions;
        }
        return m_sentences.isEmpty() && headings.contains(748);
    }));
    EXPECT_GT(positions, 0);
    EXPECT_EQ(headings - inLog, QSet<int>());
    EXPECT_GE(headings.size(), 3);
    EXPECT_EQ(Measured<ValueNumericDouble>(g_vdPitch), std::nullopt);
}
