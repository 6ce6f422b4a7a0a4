#include "zancommon/dfdatafile.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t MOST_WAITING = 65536; // bytes, some four hundred sentences

/// The number of sentences in lines: each has one dollar sign; the line that closes a group has none.
quint64 CountSentences(std::string_view lines) {
    return static_cast<quint64>(std::count(lines.begin(), lines.end(), '$'));
}

} // namespace

QString DFDataFile::BackupName(const QString& name) {
    return name + u".bak"_s;
}

bool DFDataFile::Touches(const QString& name, const QString& other) {
    return OutputFile::IsSameFile(name, other) || OutputFile::IsSameFile(BackupName(name), other);
}

DFDataFile::DFDataFile(int retryMs, int watchMs)
    : m_retryMs(retryMs)
    , m_watchMs(watchMs) {
    connect(&m_timer, &QTimer::timeout, this, &DFDataFile::OnTimer);
}

DFDataFile::~DFDataFile() {
    Close();
}

void DFDataFile::Open(const QString& name) {
    if (IsOpen()) {
        return;
    }
    m_name = name;
    m_isStandardOutput = false;
    m_isPreviousKept = false;
    m_isReplaced = false;
    m_failures.End(); // those of an earlier file are over
    OpenOrRetry();
}

void DFDataFile::OpenStandardOutput() {
    if (IsOpen()) {
        return;
    }
    m_name = tr("standard output");
    m_isStandardOutput = true;
    m_failures.End(); // those of an earlier file are over
    if (!m_file.OpenStandardOutput()) {
        Fail(tr("Could not open file %1: %2").arg(m_name, qt_error_string(m_file.GetError())));
    }
}

void DFDataFile::Close() {
    Flush();
    if (IsOpen() && !m_isStandardOutput && !m_file.HasName(m_name)) {
        Fail(tr("File %1 was removed, moved or replaced while sentences were written to it").arg(m_name));
    }
    m_file.Close();
    m_timer.stop();
}

void DFDataFile::OnTimer() {
    if (!IsOpen()) {
        OpenOrRetry();
    } else if (!m_file.HasName(m_name)) {
        Close();
        m_isPreviousKept = true; // what is there now belongs to another program or to this run
        m_isReplaced = true;
        OpenOrRetry();
    }
}

void DFDataFile::OpenOrRetry() {
    const int error = TryToOpen();
    if (error == 0) {
        m_timer.start(m_watchMs);
        return;
    }
    const QString reason = error == EWOULDBLOCK
                               ? tr("another output writes to it, or it is read as a recording")
                           : error == EMLINK ? tr("it is a link, or a file that has another name as well")
                           : error == ENXIO && OutputFile::IsFifo(m_name) ? tr("no program reads from it")
                                                                          : qt_error_string(error);
    Fail(tr("Could not open file %1: %2").arg(m_name, reason));
    m_timer.start(m_retryMs);
}

/// Returns 0, or the `errno` of the failure.
int DFDataFile::TryToOpen() {
    if (m_isReplaced && OutputFile::HasOtherNames(m_name)) {
        return EMLINK;
    }
    OutputFile previous; // locked until the new file exists
    const bool isThere = previous.OpenExisting(m_name);
    if (!isThere && previous.GetError() != ENOENT) {
        return previous.GetError();
    }
    if (isThere && !previous.IsRegular()) {
        m_file = std::move(previous);
        return 0;
    }
    bool isMoved = false;
    if (!m_isPreviousKept) {
        OutputFile backup; // locked by another program that has just moved its previous file there
        if (!backup.OpenExisting(BackupName(m_name)) && backup.GetError() == EWOULDBLOCK) {
            return EWOULDBLOCK;
        }
        isMoved = isThere && MovePrevious();
        m_isPreviousKept = isThere ? isMoved : QFile::remove(BackupName(m_name));
    }
    if (!isMoved) {
        previous.Close(); // to be appended to
    }
    if (m_file.OpenOrCreate(m_name)) {
        return 0;
    }
    if (isMoved) { // there is no new file, so it goes back to its name
        m_isPreviousKept = std::rename(QFile::encodeName(BackupName(m_name)).constData(),
                                       QFile::encodeName(m_name).constData()) != 0;
    }
    return m_file.GetError();
}

bool DFDataFile::MovePrevious() {
    const QString backup = BackupName(m_name);
    if (std::rename(QFile::encodeName(m_name).constData(), QFile::encodeName(backup).constData()) == 0) {
        return true;
    }
    Q_EMIT Failed(tr("Could not move file %1 to %2, the output is appended to it: %3")
                      .arg(m_name, backup, qt_error_string(errno)));
    return false;
}

void DFDataFile::WriteLine(std::string_view line) {
    if (!IsOpen()) {
        m_droppedCount += CountSentences(line); // the failed opening has been reported
        return;
    }
    m_waiting += line;
    if (m_holds == 0 || m_waiting.size() >= MOST_WAITING) {
        Flush();
    }
}

void DFDataFile::Release() {
    if (--m_holds == 0) {
        Flush();
    }
}

void DFDataFile::Flush() {
    std::string_view lines = m_waiting;
    while (!lines.empty()) {
        // When there is room for only a part, the system takes that part and reports the error at the next
        // attempt.
        const std::size_t written = m_file.Write(lines);
        const std::size_t whole = lines.substr(0, written).rfind('\n') + 1; // none: 0
        if (whole > 0) {
            m_writtenCount += CountSentences(lines.substr(0, whole));
            if (m_failures.End()) {
                Q_EMIT Recovered(tr("Writing to %1 works again").arg(m_name));
            }
            lines.remove_prefix(whole);
        }
        if (!lines.empty()) {
            const std::size_t dropped = HandleFailure(written - whole) ? lines.size() : lines.find('\n') + 1;
            m_droppedCount += CountSentences(lines.substr(0, dropped));
            lines.remove_prefix(dropped);
        }
    }
    m_waiting.clear();
}

/// Reports why lines could not be written, and removes the partial line.
/// \return whether the remaining lines need not be tried
bool DFDataFile::HandleFailure(std::size_t begun) {
    const int error = m_file.GetError();
    Fail(tr("Writing to %1 failed: %2")
             .arg(m_name, error == EWOULDBLOCK ? tr("its reader takes nothing") : qt_error_string(error)));
    if (error == EPIPE) {
        m_file.Close();
        if (!m_isStandardOutput) {
            m_timer.start(m_retryMs);
        }
    } else if (begun > 0) {
        m_file.TakeBack(begun);
    }
    return !IsOpen();
}

void DFDataFile::Fail(const QString& problem) {
    if (m_failures.Add(problem)) {
        Q_EMIT Failed(problem);
    }
}
