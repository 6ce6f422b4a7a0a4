#include "support/printing.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <chrono>
#include <random>
#include <set>
#include <thread>

using namespace Qt::StringLiterals;

// What survives when a process dies while it writes settings.

namespace {

constexpr int PATIENCE_MS = 60000;

/// The rounds that the keys of a settings file tell of, and how many keys there are.
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

} // namespace

TEST(SettingsFault, SettingsAreWholeHoweverOftenTheProcessIsKilledWhileItWritesThem) {
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(u"Application.ini"_s);
    std::mt19937 random(
        1); // NOLINT(cert-msc51-cpp): the same moments in each run, as far as a machine allows
    std::uniform_int_distribution<int> linesBefore(1, 6);
    std::uniform_int_distribution<int> microseconds(0, 3000);
    qint64 next = 1;
    for (int kill = 0; kill < 200; ++kill) {
        QProcess writer;
        writer.start(QStringLiteral(ZAN_SETTINGS_WRITER), {directory.path(), QString::number(next)});
        // After a number of writes that went through, and then somewhere in the next one.
        for (int lines = linesBefore(random); lines > 0;) {
            ASSERT_TRUE(writer.canReadLine() || writer.waitForReadyRead(PATIENCE_MS)) << "kill " << kill;
            while (lines > 0 && writer.canReadLine()) {
                writer.readLine();
                --lines;
            }
        }
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
        writer.kill();
        ASSERT_TRUE(writer.waitForFinished(PATIENCE_MS));

        const Written written = ReadSettings(fileName);
        ASSERT_EQ(written.keyCount, 200) << "kill " << kill;
        ASSERT_EQ(written.rounds.size(), 1U) << "old and new are mixed after kill " << kill;
        ASSERT_GE(*written.rounds.begin(), next) << "what was committed is there";
        next = *written.rounds.begin() + 1;
    }
    EXPECT_TRUE(QDir(directory.path()).entryList({u"*.damaged-*"_s}).isEmpty());
}
