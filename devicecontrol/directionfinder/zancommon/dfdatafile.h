#pragma once

#include "connections/outputfile.h"
#include "zancommon/failurerun.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <string>
#include <string_view>

/// Where the DF data output writes its lines when it does not send them on a serial line: a file, a FIFO, or
/// standard output. A line is in the file as a whole or not at all. Lines that cannot be written are dropped
/// and counted.
///
/// What cannot be opened is tried again and again, and so is a FIFO whose reader has gone. What was removed,
/// moved or replaced while it is open counts as a failure, and is opened anew by its name. Needs an event
/// loop for that; belongs to one thread.
class DFDataFile : public QObject {
    Q_OBJECT

public:
    /// Where the previous file of a name is kept.
    [[nodiscard]] static QString BackupName(const QString& name);
    /// Whether an output to a file of the first name would write to the file of the second name, or replace
    /// it with its previous one. Opens nothing.
    [[nodiscard]] static bool Touches(const QString& name, const QString& other);

    /// \param retryMs milliseconds between two attempts to open
    /// \param watchMs milliseconds between two looks whether the name is still that of what is open
    DFDataFile(int retryMs, int watchMs);
    ~DFDataFile() override;

    /// Begins a file; nothing while one is open. The one that stands there is kept as "<name>.bak" in place
    /// of an earlier one, and the new file is empty; where it cannot be moved, it is appended to. Nothing is
    /// touched while another program has the file open. What is no file (a FIFO, a device) is opened as it
    /// is, without waiting for a reader.
    ///
    /// A program that is killed after the one has been moved and before the other is there leaves the
    /// previous file as "<name>.bak" only, which the next opening then takes for an earlier one.
    ///
    /// What is opened again after it was removed, moved or replaced is created or appended to; nothing is
    /// moved. A link that was put in its place, or a file that has another name as well, is left alone: it
    /// may lead to anything.
    void Open(const QString& name);
    /// The same with what the program's standard output is. It is not tried again when its reader has gone.
    void OpenStandardOutput();
    /// Writes what waits, closes, and tries no more.
    void Close();
    [[nodiscard]] bool IsOpen() const { return m_file.IsOpen(); }

    /// Takes a line with its end. It is written at once, unless lines are held back.
    void WriteLine(std::string_view line);
    /// Holds lines back, until as many calls of `Release` have followed or 64 KiB wait.
    void HoldBack() { ++m_holds; }
    void Release();

    /// Sentences in the lines that are with the system, or that were dropped.
    [[nodiscard]] quint64 GetWrittenCount() const { return m_writtenCount; }
    [[nodiscard]] quint64 GetDroppedCount() const { return m_droppedCount; }

Q_SIGNALS:
    /// The first of a run of equal failures, in words for the operator.
    void Failed(const QString& problem);
    /// Writing works again after failures.
    void Recovered(const QString& message);

private:
    void OpenOrRetry();
    void OnTimer();
    int TryToOpen();
    bool MovePrevious();
    void Flush();
    bool HandleFailure(std::size_t begun);
    void Fail(const QString& problem);

    OutputFile m_file;
    QString m_name;
    bool m_isPreviousKept = false; // so that a further attempt to open moves nothing
    bool m_isReplaced = false;     // what was open went away while it was open
    bool m_isStandardOutput = false;
    int m_retryMs;
    int m_watchMs;
    QTimer m_timer; // while it is open for the next look at the name, else for the next attempt to open

    std::string m_waiting; // whole lines
    int m_holds = 0;
    FailureRun m_failures;
    quint64 m_writtenCount = 0;
    quint64 m_droppedCount = 0;
};
