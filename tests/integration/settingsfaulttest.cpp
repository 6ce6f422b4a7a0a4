#include "support/printing.h"
#include "tolmappstartup/cfgcenter.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <array>
#include <chrono>
#include <csignal>
#include <memory>
#include <random>
#include <set>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

// What survives when processes write the same settings at once, and die while they do.

namespace {

constexpr int PATIENCE_MS = 60000;
constexpr int KEY_COUNT = 200;
#ifdef ZAN_SANITIZED
constexpr int KILLS = 50;
constexpr int ROUNDS = 30;
#else
constexpr int KILLS = 200;
constexpr int ROUNDS = 300;
#endif

/// A directory that is not held up by the disk, where the system has one.
QString MemoryDirectory() {
    return QFileInfo(u"/dev/shm"_s).isWritable() ? u"/dev/shm/settingsfaulttest-XXXXXX"_s
                                                 : QDir::tempPath() + u"/settingsfaulttest-XXXXXX"_s;
}

/// The rounds that the keys of a settings file hold, and how many keys there are.
struct Written {
    std::set<qint64> rounds;
    int keyCount = 0;
};

Written ReadSettings(const QString& fileName) {
    QFile file(fileName);
    Written written;
    if (file.open(QIODevice::ReadOnly)) {
        static const QRegularExpression line(u"^Key\\d+=(\\d+)$"_s, QRegularExpression::MultilineOption);
        auto match = line.globalMatch(QString::fromUtf8(file.readAll()));
        while (match.hasNext()) {
            written.rounds.insert(match.next().captured(1).toLongLong());
            ++written.keyCount;
        }
    }
    return written;
}

/// What a process does that writes settings until it is killed: in each round all keys have its number.
[[noreturn]] void WriteEndlessly(const QString& directory, qint64 first, int sign) {
    CfgCenter::SetConfigDirectory(directory);
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Stations);
    for (qint64 round = first;; ++round) {
        for (int key = 0; key < KEY_COUNT; ++key) {
            cfg.SetInt(u"Section%1/Key%2"_s.arg(key % 10).arg(key), round);
        }
        cfg.CommitKey({});
        if (write(sign, "x", 1) != 1) {
            _exit(1);
        }
    }
}

class Kills {
public:
    explicit Kills(QString directory)
        : m_directory(std::move(directory)) {}

    /// Starts a writer and kills it after a number of writes that went through, and then somewhere in the
    /// next one. What it committed is in the file, and no round is there by half.
    void KillOne() {
        std::array<int, 2> ends{};
        ASSERT_EQ(pipe(ends.data()), 0);
        const pid_t writer = fork();
        ASSERT_GE(writer, 0);
        if (writer == 0) {
            WriteEndlessly(m_directory, m_next, ends[1]);
        }
        close(ends[1]);
        for (int commits = m_commitsBefore(m_random); commits > 0; --commits) {
            char sign = 0;
            ASSERT_EQ(read(ends[0], &sign, 1), 1);
        }
        // Nothing is waited for: the moment of the kill is what is tried out.
        std::this_thread::sleep_for(std::chrono::microseconds(m_microseconds(m_random)));
        kill(writer, SIGKILL);
        ASSERT_EQ(waitpid(writer, nullptr, 0), writer);
        close(ends[0]);

        const Written written = ReadSettings(m_directory + u"/Application.ini"_s);
        ASSERT_EQ(written.keyCount, KEY_COUNT);
        ASSERT_EQ(written.rounds.size(), 1U) << "old and new are mixed";
        ASSERT_GE(*written.rounds.begin(), m_next) << "what was committed is there";
        m_next = *written.rounds.begin() + 1;
    }

private:
    QString m_directory;
    std::mt19937 m_random{
        1}; // NOLINT(cert-msc51-cpp): the same moments in each run, as far as a machine allows
    std::uniform_int_distribution<int> m_commitsBefore{1, 3};
    std::uniform_int_distribution<int> m_microseconds{0, 2000};
    qint64 m_next = 1;
};

} // namespace

TEST(SettingsFault, SettingsAreWholeHoweverOftenAProcessIsKilledWhileItWritesThemAndAnotherOneGoesOn) {
    const QTemporaryDir directory(MemoryDirectory());
    const QString fileName = directory.filePath(u"Application.ini"_s);
    ASSERT_TRUE(CfgCenter::SetConfigDirectory(directory.path()));
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Stations);
    Kills kills(directory.path());
    qint64 longest = 0;
    for (int kill = 0; kill < KILLS; ++kill) {
        SCOPED_TRACE(kill);
        kills.KillOne();
        if (testing::Test::HasFatalFailure()) {
            return;
        }
        QElapsedTimer timer;
        timer.start();
        cfg.SetInt(u"Others/Kill"_s, kill);
        cfg.CommitKey({});
        longest = std::max(longest, timer.elapsed());
        QFile file(fileName);
        ASSERT_TRUE(file.open(QFile::ReadOnly));
        ASSERT_TRUE(file.readAll().contains("\nKill=" + QByteArray::number(kill) + "\n"));
    }
    EXPECT_LT(longest, 5000) << "a lock that was left behind holds up for half a minute";
    EXPECT_TRUE(CfgCenter::Close());
    EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files), QStringList(u"Application.ini"_s))
        << "nothing is left of the killed processes";
}

TEST(SettingsFault, NothingIsLostOfWhatManyProcessesWriteAtOnce) {
    constexpr int PROCESSES = 8;
    const QTemporaryDir directory(MemoryDirectory());
    std::vector<std::unique_ptr<QProcess>> writers;
    for (int i = 0; i < PROCESSES; ++i) {
        writers.push_back(std::make_unique<QProcess>());
        writers.back()->start(QStringLiteral(ZAN_SETTINGS_WRITER),
                              {directory.path(), u"Writer%1"_s.arg(i), QString::number(ROUNDS)});
    }
    for (const auto& pWriter : writers) {
        ASSERT_TRUE(pWriter->waitForFinished(2 * PATIENCE_MS));
        EXPECT_EQ(pWriter->exitCode(), 0) << pWriter->readAllStandardError().toStdString();
    }
    ASSERT_TRUE(CfgCenter::SetConfigDirectory(directory.path()));
    const ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Stations);
    for (int i = 0; i < PROCESSES; ++i) {
        EXPECT_EQ(cfg.GetInt(u"Shared/Writer%1"_s.arg(i), -1), 1000 + ROUNDS - 1);
        for (int round = 0; round < ROUNDS; ++round) {
            EXPECT_EQ(cfg.GetInt(u"Writer%1/Round%2"_s.arg(i).arg(round), -1), round) << "writer " << i;
        }
    }
    EXPECT_TRUE(CfgCenter::Close());
    EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files), QStringList(u"Application.ini"_s));
}
