#pragma once

#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>

// The station as a person runs it. The test names the program: ZAN_STATION.

inline constexpr int PATIENCE_MS = 60000;

struct StationResult {
    int exitCode = -1;
    QString out;
    QString err;
};

/// Runs the station with these arguments to its end, in this directory or that of the test.
inline StationResult RunStation(const QStringList& arguments, const QString& directory = {}) {
    QProcess process;
    process.setWorkingDirectory(directory);
    process.start(QStringLiteral(ZAN_STATION), arguments);
    if (!process.waitForFinished(PATIENCE_MS) || process.exitStatus() != QProcess::NormalExit) {
        return {};
    }
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

/// Waits until a running program has brought about what a condition says. Nothing notifies of that: it is
/// looked for every now and then. False when the program has ended without it, or it does not come.
template <class Condition>
bool Await(QProcess& process, Condition condition) {
    const QDeadlineTimer deadline(PATIENCE_MS);
    while (!condition()) {
        if (deadline.hasExpired() || process.state() == QProcess::NotRunning) {
            return condition();
        }
        process.waitForFinished(20);
    }
    return true;
}

inline QByteArray ReadFile(const QString& name) {
    QFile file(name);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

inline void WriteFile(const QString& name, const QByteArray& content) {
    QFile file(name);
    ASSERT_TRUE(file.open(QFile::WriteOnly) && file.write(content) == content.size());
}
