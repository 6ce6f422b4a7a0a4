#pragma once

#include "connections/outputfile.h"
#include "zancommon/failurerun.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <string>
#include <string_view>

/// The sink of the DF data output for lines that are not sent on a serial line: a file, a FIFO, or standard
/// output. A line is in the file as a whole or not at all. Lines that cannot be written are dropped and
/// counted.
///
/// A file that cannot be opened is tried again periodically, and so is a FIFO whose reader has gone. A file
/// that is removed, moved or replaced while it is open counts as a failure, and is opened again by its name.
/// This needs an event loop; belongs to one thread.
class DFDataFile : public QObject {
    Q_OBJECT

public:
    /// The name under which the previous file is kept.
    [[nodiscard]] static QString BackupName(const QString& name);
    /// Whether an output to a file of the first name would write to the file of the second name, or replace
    /// it with its previous one. Opens nothing.
    [[nodiscard]] static bool Touches(const QString& name, const QString& other);

    /// \param retryMs milliseconds between two attempts to open
    /// \param watchMs milliseconds between two checks whether the name is still that of the open file
    DFDataFile(int retryMs, int watchMs);
    ~DFDataFile() override;

    /// Begins a file; does nothing while one is open. An existing file is renamed to "<name>.bak", which
    /// replaces an earlier one, and the new file is empty; when it cannot be renamed, it is appended to.
    /// Nothing is changed while another program has the file open. What is not a file (a FIFO, a device) is
    /// opened as it is, without waiting for a reader.
    ///
    /// A program that is killed between the renaming and the creation of the new file leaves only
    /// "<name>.bak".
    ///
    /// A file that is opened again after it was removed, moved or replaced is created or appended to; nothing
    /// is renamed. A link that has been put in its place, or a file with several names, is not opened,
    /// because it may be any file.
    void Open(const QString& name);
    /// Does the same with the program's standard output. It is not tried again when its reader has gone.
    void OpenStandardOutput();
    /// Writes what waits, closes the file, and stops trying.
    void Close();
    [[nodiscard]] bool IsOpen() const { return m_file.IsOpen(); }

    /// Takes a line with its end. It is written at once, unless lines are held back.
    void WriteLine(std::string_view line);
    /// Holds lines back until `Release` has been called as often as this, or 64 KiB wait.
    void HoldBack() { ++m_holds; }
    void Release();

    /// The number of sentences that were written to the file, or dropped.
    [[nodiscard]] quint64 GetWrittenCount() const { return m_writtenCount; }
    [[nodiscard]] quint64 GetDroppedCount() const { return m_droppedCount; }
    /// The failure that lasts; empty when lines are written, and while none was needed.
    [[nodiscard]] const QString& GetProblem() const { return m_failures.GetText(); }

Q_SIGNALS:
    /// Emitted for the first of a run of equal failures, with a text for the operator.
    void Failed(const QString& problem);
    /// Emitted when writing works again after failures.
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
    bool m_isPreviousKept = false; // further attempts to open rename nothing
    bool m_isReplaced = false;     // the file was removed, moved or replaced while it was open
    bool m_isStandardOutput = false;
    int m_retryMs;
    int m_watchMs;
    QTimer
        m_timer; // while the file is open, for the next check of the name, else for the next attempt to open

    std::string m_waiting; // whole lines
    int m_holds = 0;
    FailureRun m_failures;
    quint64 m_writtenCount = 0;
    quint64 m_droppedCount = 0;
};
