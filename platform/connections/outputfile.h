#pragma once

#include "zanplatform_export.h"

#include <QString>

#include <cstddef>
#include <string_view>

class QByteArray;

/// A file, a FIFO or standard output to which lines of text are appended by system calls of their own: a line
/// is with the system when the write returns. For one thread.
///
/// A file and a FIFO are locked (`flock`) while they are open, so that no two programs write to one; the
/// system releases the lock when a program is killed. Who only reads a file and wants no output to write to
/// it takes a shared lock. A reader that goes away is an error and no signal, whatever the program does with
/// SIGPIPE.
class ZANPLATFORM_EXPORT OutputFile {
public:
    OutputFile() = default;
    OutputFile(OutputFile&& other) noexcept;
    OutputFile& operator=(OutputFile&& other) noexcept;
    ~OutputFile();

    /// Opens what stands at a name, in place of what was open. Waits for nothing. A file that may only be
    /// read is locked, so that it can be moved away, but takes nothing.
    /// \return false on failure; `GetError` then is ENOENT when nothing is there, EWOULDBLOCK when another
    /// one
    ///         holds it open, ENXIO for a FIFO that nobody reads from (and for a socket), EINVAL for what is
    ///         no name
    bool OpenExisting(const QString& name);
    /// Does the same, and creates a file when nothing is there. Others find it locked from the beginning on
    /// (where the file system and /proc allow it).
    bool OpenOrCreate(const QString& name);
    /// Opens what the program's standard output is, which stays open when this is closed. It is not locked.
    bool OpenStandardOutput();
    void Close();

    [[nodiscard]] bool IsOpen() const { return m_descriptor >= 0; }
    /// Whether a name is (still) that of what is open. False when nothing, or something else, is there; true
    /// when that cannot be found out.
    [[nodiscard]] bool HasName(const QString& name) const;
    /// Whether it is a file, and no FIFO, pipe or device.
    [[nodiscard]] bool IsRegular() const { return m_isRegular; }
    /// The `errno` of the last opening or writing that failed.
    [[nodiscard]] int GetError() const { return m_error; }

    /// Writes to an open file. A FIFO, pipe or device whose reader takes nothing is waited for once, for 1 s;
    /// from then on not at all, until it takes something again. A pipe takes a line as a whole or not at all.
    /// \param lines of at most 4096 bytes each, with the ends of lines
    /// \return the number of bytes written. When these are not all, `GetError` says why: EWOULDBLOCK when
    ///         the reader takes nothing, EPIPE when it is gone.
    std::size_t Write(std::string_view lines);
    /// Takes the last bytes that were written out of a regular file. False when that is not possible.
    bool TakeBack(std::size_t count);

    /// Whether a name is that of a link, or of a file that has another name as well.
    [[nodiscard]] static bool HasOtherNames(const QString& name);
    /// Whether a name is that of a FIFO.
    [[nodiscard]] static bool IsFifo(const QString& name);
    /// Whether two names are those of one file or FIFO, also through links. Of two files that are not there
    /// yet: whether they would be made at one place. False when only one of them is there, and for devices.
    [[nodiscard]] static bool IsSameFile(const QString& name, const QString& other);

    /// Who has a file or a FIFO open as an output by now: "process 1234", or "another process" when the
    /// system does not tell which. Empty when nobody has, and when that cannot be seen. Changes nothing.
    [[nodiscard]] static QString FindWriter(const QString& name);

private:
    bool Take(int descriptor);
    bool Lock(const QByteArray& name);
    bool FailAndClose(int error);
    bool WaitForRoom();

    int m_descriptor = -1;
    int m_error = 0;
    bool m_isRegular = false;
    bool m_isStalled = false;
};
