#include "zanstation/journal.h"

#include <array>
#include <sys/stat.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

namespace {

/// In the order of the priorities.
constexpr std::array PREFIXES{SD_ERR, SD_WARNING, SD_INFO};

/// Whether standard error is the stream whose device and inode the service manager names. The variable alone
/// is not enough: a program that a service starts inherits it with a standard error of its own.
bool IsJournal() {
    struct stat status {};
    return ::fstat(STDERR_FILENO, &status) == 0 &&
           qgetenv("JOURNAL_STREAM") ==
               QByteArray::number(quint64{status.st_dev}) + ':' + QByteArray::number(quint64{status.st_ino});
}

} // namespace

namespace Journal {

bool IsUsed() {
    static const bool isJournal = IsJournal();
    return isJournal;
}

QByteArray Mark(Priority priority, const QByteArray& lines) {
    if (!IsUsed()) {
        return lines;
    }
    const QByteArray prefix = PREFIXES.at(static_cast<std::size_t>(priority));
    QByteArray marked = prefix + lines;
    marked.replace("\n", "\n" + prefix);
    if (lines.endsWith('\n')) {
        marked.chop(prefix.size());
    }
    return marked;
}

Priority PriorityOf(QtMsgType type) {
    switch (type) {
    case QtCriticalMsg:
    case QtFatalMsg:
        return Priority::Error;
    case QtWarningMsg:
        return Priority::Warning;
    case QtDebugMsg:
    case QtInfoMsg:
        break;
    }
    return Priority::Info;
}

} // namespace Journal
