#include "tolmappstartup/settingslock.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// The process that creates a lock file also locks it (flock) as long as it lives, but a moment after creating
// it.
constexpr auto GRACE = 500ms;
constexpr unsigned long POLL_MS = 2;

bool IsOlderThanGrace(const QString& path) {
    const QFileInfo info(path);
    return info.exists() && qAbs(info.lastModified().msecsTo(QDateTime::currentDateTime())) > GRACE / 1ms;
}

bool IsSameFile(int handle, const QString& path) {
    struct stat held {};
    struct stat named {};
    return fstat(handle, &held) == 0 && stat(QFile::encodeName(path).constData(), &named) == 0 &&
           held.st_dev == named.st_dev && held.st_ino == named.st_ino;
}

// QLockFile notices when the process whose number is in a lock file is gone. It notices neither that the
// process died before it wrote its number, nor that another process has that number now.
void RemoveAbandoned(const QString& path) {
    if (!IsOlderThanGrace(path)) {
        return;
    }
    QFile file(path);
    if (file.open(QFile::ReadWrite | QFile::ExistingOnly) && flock(file.handle(), LOCK_EX | LOCK_NB) == 0 &&
        IsSameFile(file.handle(), path)) {
        file.remove();
    }
}

// Only one process at a time may remove a lock file: a second one might remove the lock file of the next
// process. QLockFile creates another lock file (".rmlock") when it removes one, which may be left behind as
// well.
void RemoveAbandonedInTurn(const QString& path) {
    const int directory =
        open(QFile::encodeName(QFileInfo(path).path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory >= 0 && flock(directory, LOCK_EX | LOCK_NB) == 0) {
        const QString removersPath = path + u".rmlock"_s;
        RemoveAbandoned(removersPath);
        if (!QFile::exists(removersPath)) {
            RemoveAbandoned(path);
        }
    }
    if (directory >= 0) {
        close(directory);
    }
}

} // namespace

SettingsLock::SettingsLock(const QString& settingsPath)
    : m_path(settingsPath + u".lock"_s)
    , m_file(m_path) {}

SettingsLock::Result SettingsLock::Lock(std::chrono::milliseconds patience) {
    // QLockFile's own waiting is too coarse for locks that are held for a few milliseconds.
    const QDeadlineTimer deadline(patience);
    while (!m_file.isLocked() && !m_file.tryLock(0)) {
        if (m_file.error() != QLockFile::LockFailedError) {
            return Result::Impossible;
        }
        RemoveAbandonedInTurn(m_path);
        if (deadline.hasExpired()) {
            return Result::Busy;
        }
        QThread::msleep(POLL_MS);
    }
    return Result::Locked;
}

QString SettingsLock::GetHolder() const {
    qint64 process = 0;
    QString host;
    QString program;
    return m_file.getLockInfo(&process, &host, &program)
               ? u"%1 (process %2 on %3)"_s.arg(program, QString::number(process), host)
               : u"another process"_s;
}
