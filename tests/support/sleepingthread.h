#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QFile>
#include <QString>

#include <sys/types.h>
#include <thread>

/// Waits until a thread of this process (its `gettid()`) sleeps, that is, waits for something itself. Nothing
/// notifies of that: its state is looked at over and over. False when the thread has ended, or does not come
/// to wait after far longer than any test needs.
inline bool AwaitSleep(pid_t thread) {
    const QString name = QStringLiteral("/proc/self/task/%1/stat").arg(thread);
    for (const QDeadlineTimer deadline(30'000); !deadline.hasExpired();) {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            return false;
        }
        const QByteArray status = file.readAll();
        if (status.mid(status.lastIndexOf(')') + 2, 1) == "S") {
            return true;
        }
        std::this_thread::yield();
    }
    return false;
}
