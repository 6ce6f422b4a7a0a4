#include "support/eventloop.h"
#include "support/notifysocket.h"
#include "support/recordings.h"
#include "support/stationprocess.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <algorithm>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

// The station as a service: started as a service manager starts it.

namespace {

class ServiceTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_directory.isValid()); }
    void TearDown() override {
        m_station.kill();
        m_station.waitForFinished(PATIENCE_MS);
    }

    [[nodiscard]] QString Path(const QString& name) const { return m_directory.filePath(name); }

    /// Starts a station that waits for what comes from a stream: a device that has nothing to say yet.
    void Start(const QByteArray& socket, const QStringList& further = {}) {
        StartWith(socket, QStringList{u"--recording"_s, u"-"_s} + further);
        Send(RECORDING_HEADER);
    }

    /// Starts a station with any device.
    void StartWith(const QByteArray& socket, const QStringList& device) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        if (!socket.isEmpty()) {
            environment.insert(u"NOTIFY_SOCKET"_s, QString::fromUtf8(socket));
        }
        environment.insert(u"WATCHDOG_USEC"_s, u"200000"_s);
        environment.insert(u"STATE_DIRECTORY"_s, Path(u"state"_s));
        m_station.setProcessEnvironment(environment);
        m_station.start(QStringLiteral(ZAN_STATION),
                        QStringList{u"run"_s, u"--output"_s, Path(u"out"_s)} + device);
        ASSERT_TRUE(m_station.waitForStarted(PATIENCE_MS));
    }

    /// Has standard error lead to a file that passes as the journal.
    void SendMessagesToJournal() {
        WriteFile(Journal(), {});
        struct stat status {};
        ASSERT_EQ(::stat(QFile::encodeName(Journal()).constData(), &status), 0);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"JOURNAL_STREAM"_s, u"%1:%2"_s.arg(status.st_dev).arg(status.st_ino));
        m_station.setProcessEnvironment(environment);
        m_station.setStandardErrorFile(Journal(), QIODevice::Append);
    }
    [[nodiscard]] QString Journal() const { return Path(u"journal"_s); }

    /// What the device says.
    void Send(const QByteArray& lines) {
        m_station.write(lines);
        EXPECT_TRUE(m_station.waitForBytesWritten(PATIENCE_MS));
    }

    /// Ends the station as a service manager does, and returns its exit code.
    int Stop() {
        m_station.terminate();
        return m_station.waitForFinished(PATIENCE_MS) ? m_station.exitCode() : -1;
    }

    QTemporaryDir m_directory;
    QProcess m_station;
};

} // namespace

TEST_F(ServiceTest, IsReadyWhenOutputsAreOpenAndLivesUntilItIsStopped) {
    const QByteArray name = Path(u"notify"_s).toUtf8();
    NotifySocket manager(name);
    Start(name);
    EXPECT_EQ(manager.Await(), "READY=1") << "no bearing has come yet";
    EXPECT_TRUE(QFile::exists(Path(u"out"_s))) << "the output is open";
    EXPECT_TRUE(QFile::exists(Path(u"state/station.lock"_s))) << "the settings are in the state directory";
    EXPECT_EQ(manager.Await(), "STATUS=scan, no bearing yet");
    EXPECT_EQ(manager.Await("WATCHDOG"), "WATCHDOG=1");
    EXPECT_EQ(manager.Await("WATCHDOG"), "WATCHDOG=1");
    EXPECT_EQ(Stop(), 143);
    EXPECT_EQ(manager.Take().constLast(), "STOPPING=1");
}

TEST_F(ServiceTest, StationWorksAndEndsAlsoWhileTheServiceManagerReadsNothing) {
    const QByteArray name = Path(u"notify"_s).toUtf8();
    NotifySocket manager(name);
    manager.Fill();
    Start(name, {u"--speed"_s, u"max"_s});
    Send("1000,121500000,71.5,10.0,90,,,,,,,\n");
    EXPECT_TRUE(SpinUntil([this] { return ReadFile(Path(u"out"_s)).contains("\r\n"); }));
    EXPECT_EQ(Stop(), 143);
}

TEST_F(ServiceTest, StatusSaysWhatTheStationReceives) {
    const QByteArray name = "@zan-service-" + QByteArray::number(QCoreApplication::applicationPid());
    NotifySocket manager(name);
    Start(name, {u"--speed"_s, u"max"_s});
    EXPECT_EQ(manager.Await("STATUS"), "STATUS=scan, no bearing yet");
    Send("1000,121500000,71.5,10.0,90,,,,,,,\n");
    const QByteArray status = manager.Await("STATUS");
    EXPECT_TRUE(status.startsWith("STATUS=scan, 121.5 MHz, ") && status.endsWith(" bearings/s"))
        << status.constData();
    EXPECT_EQ(manager.Await("STATUS"), "STATUS=scan, 121.5 MHz, no bearings");
}

TEST_F(ServiceTest, StatusSaysWhatIsWrong) {
    const QByteArray name = Path(u"notify"_s).toUtf8();
    NotifySocket manager(name);
    Start(name, {u"--serial"_s, u"/dev/zan-nothere:9600,n,8,1"_s});
    EXPECT_EQ(manager.Await(), "READY=1") << "without a serial line, too";
    EXPECT_EQ(manager.Await(), "STATUS=scan, no bearing yet");
    Send("1000,121500000,71.5,10.0,90,,,,,,,\n");
    const QByteArray status = manager.Await("STATUS");
    EXPECT_TRUE(status.contains("; Writing to ") && status.contains("nothere")) << status.constData();
}

TEST_F(ServiceTest, RunsAsUsualWithoutAServiceManagerAndWithOneThatIsGone) {
    for (const QByteArray& socket : {QByteArray(), Path(u"gone"_s).toUtf8()}) {
        Start(socket, {u"--speed"_s, u"max"_s});
        Send("1000,121500000,71.5,10.0,90,,,,,,,\n");
        m_station.closeWriteChannel();
        ASSERT_TRUE(m_station.waitForFinished(PATIENCE_MS));
        EXPECT_EQ(m_station.exitCode(), 0) << m_station.readAllStandardError().constData();
        EXPECT_EQ(ReadFile(Path(u"out"_s)).count("\r\n"), 1);
    }
}

TEST_F(ServiceTest, MessagesInTheJournalHaveTheirPriorities) {
    SendMessagesToJournal();
    const QString recording = Path(u"recording.csv"_s);
    WriteFile(recording, RECORDING_HEADER + QByteArray("1000,121500000,71.5,10.0,90,,,,,,,\nno row\n"));
    m_station.start(QStringLiteral(ZAN_STATION),
                    {u"run"_s, u"--recording"_s, recording, u"--config"_s, Path(u"config"_s), u"--output"_s,
                     Path(u"nowhere/out"_s), u"--speed"_s, u"max"_s});
    ASSERT_TRUE(m_station.waitForFinished(PATIENCE_MS));
    const QByteArray messages = ReadFile(Journal());
    EXPECT_TRUE(messages.contains("<3>zanstation: Could not open file ")) << messages.constData();
    EXPECT_TRUE(messages.contains("<4>zanstation: warning: ")) << messages.constData();
    for (const QByteArray& line : messages.split('\n')) {
        EXPECT_TRUE(line.isEmpty() || line.startsWith('<')) << line.constData();
    }
}

TEST_F(ServiceTest, StatusAndJournalOfAStationWithoutADriverSayThatItsDeviceIsSimulated) {
    const QByteArray name = Path(u"notify"_s).toUtf8();
    NotifySocket manager(name);
    StartWith(name, {});
    const QByteArray status = manager.Await("STATUS");
    EXPECT_TRUE(status.startsWith("STATUS=simulated device, scan")) << status.constData();
    EXPECT_EQ(Stop(), 143);

    const QByteArray warning =
        "<4>zanstation: warning: the device is simulated: none of its bearings is real\n";
    const QStringList run{u"run"_s,        u"--config"_s, Path(u"config"_s), u"--speed"_s, u"max"_s,
                          u"--duration"_s, u"1"_s};
    SendMessagesToJournal();
    m_station.start(QStringLiteral(ZAN_STATION), run);
    ASSERT_TRUE(m_station.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(ReadFile(Journal()).count(warning), 1) << ReadFile(Journal()).constData();
    EXPECT_FALSE(RunStation(run).err.contains(u"simulated"_s)) << "who runs it at a terminal has chosen it";
}

TEST_F(ServiceTest, StatusDoesNotTellARefusedModeAsThatOfTheDevice) {
    const QByteArray name = Path(u"notify"_s).toUtf8();
    NotifySocket manager(name);
    StartWith(name, {u"--components"_s, QStringLiteral(ZAN_TEST_DRIVERS), u"--driver"_s, u"wild"_s,
                     u"--address"_s, u"refuse"_s});
    QByteArray status;
    do {
        status = manager.Await("STATUS");
    } while (!status.isEmpty() && !status.contains("mode unknown"));
    EXPECT_TRUE(status.startsWith("STATUS=mode unknown")) << status.constData();
}

TEST_F(ServiceTest, UnitStartsTheStationAsItWantsToBeStarted) {
    const QByteArrayList lines = ReadFile(QStringLiteral(ZAN_SERVICE "/zanstation.service")).split('\n');
    for (const char* line :
         {"Type=notify", "ExecStart=zanstation run", "SuccessExitStatus=143", "StateDirectory=zanstation",
          "User=zanstation", "Group=zanstation", "SupplementaryGroups=dialout"}) {
        EXPECT_TRUE(lines.contains(line)) << line;
    }
    EXPECT_EQ(std::ranges::count_if(lines, [](const QByteArray& l) { return l.startsWith("WatchdogSec="); }),
              1);
    EXPECT_TRUE(ReadFile(QStringLiteral(ZAN_SERVICE "/zanstation.conf")).contains("\nu zanstation "));
}
