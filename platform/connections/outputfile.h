#pragma once

#include "zanplatform_export.h"

#include <QString>

#include <cstddef>
#include <string_view>

class QByteArray;

/// A file, a FIFO or standard output to which lines of text are appended with direct system calls: a line has
/// been passed to the system when the write returns. For one thread.
///
/// A file and a FIFO are locked (`flock`) while they are open, so that no two programs write to one; the
/// system releases the lock when a program is killed. A file that is only read, and that no output shall
/// write to, is opened as `InputFile`. A reader that goes away is an error, not a signal, whatever the
/// program does with SIGPIPE.
class ZANPLATFORM_EXPORT OutputFile {
public:
    OutputFile() = default;
    OutputFile(OutputFile&& other) noexcept;
    OutputFile& operator=(OutputFile&& other) noexcept;
    ~OutputFile();

    /// Closes what was open, and opens an existing file, FIFO or device without waiting. A file that may
    /// only be read is locked, so that it can be renamed, but cannot be written to.
    /// \return false on failure. `GetError` is then ENOENT when nothing is there, EWOULDBLOCK when another
    ///         output has it open, ENXIO for a FIFO without a reader (and for a socket), EINVAL for an
    ///         invalid name
    bool OpenExisting(const QString& name);
    /// Does the same, and creates a file when nothing is there. The new file is locked from the beginning
    /// (where the file system and /proc allow it).
    bool OpenOrCreate(const QString& name);
    /// Opens the program's standard output, which stays open when this object is closed. It is not locked.
    bool OpenStandardOutput();
    void Close();

    [[nodiscard]] bool IsOpen() const { return m_descriptor >= 0; }
    /// Whether a name is (still) that of the open file. False when nothing, or another file, has the name;
    /// true when that cannot be determined.
    [[nodiscard]] bool HasName(const QString& name) const;
    /// Whether it is a regular file, not a FIFO, pipe or device.
    [[nodiscard]] bool IsRegular() const { return m_isRegular; }
    /// The `errno` of the last opening or writing that failed.
    [[nodiscard]] int GetError() const { return m_error; }

    /// Writes to an open file. Waits once, for 1 s, for a FIFO, pipe or device whose reader takes nothing;
    /// after that it does not wait until the reader takes something again. A pipe takes a line as a whole or
    /// not at all.
    /// \param lines of at most 4096 bytes each, with their line ends
    /// \return the number of bytes written. When some were not, `GetError` gives the reason: EWOULDBLOCK when
    ///         the reader takes nothing, EPIPE when it is gone.
    std::size_t Write(std::string_view lines);
    /// Removes the last bytes that were written from a regular file. False when that is not possible.
    bool TakeBack(std::size_t count);
    /// Gives the open file another name. Never replaces a file that has that name already: `GetError` is then
    /// EEXIST. It is ENOENT when the open file does not have the first name (any more).
    bool Rename(const QString& name, const QString& newName);
    /// The bytes of the open file, also those of other programs.
    [[nodiscard]] qint64 GetSize() const;
    /// Removes the content of a regular file. False when that is not possible: `GetError` is EACCES for one
    /// that may only be read.
    bool Empty();

    /// Whether a name is that of a link, or of a file that has another name as well.
    [[nodiscard]] static bool HasOtherNames(const QString& name);
    /// Whether a name is that of a FIFO.
    [[nodiscard]] static bool IsFifo(const QString& name);
    /// Where a file is, or would be created, under a name: an absolute path without links. Empty for an
    /// invalid name.
    [[nodiscard]] static QString FindPlace(const QString& name);
    /// Whether two names are those of one file or FIFO, also through links. For two files that do not exist
    /// yet: whether they would be created at the same place. False when only one of them exists, and for
    /// devices.
    [[nodiscard]] static bool IsSameFile(const QString& name, const QString& other);

    /// The process that has a file or a FIFO open as an output, or a file as an `InputFile`: "process 1234",
    /// or "another process" when the system does not say which. Empty when there is none, and when that
    /// cannot be determined. Changes nothing.
    [[nodiscard]] static QString FindUser(const QString& name);

private:
    ZANPLATFORM_NO_EXPORT bool Take(int descriptor);
    ZANPLATFORM_NO_EXPORT bool Lock(const QByteArray& name);
    ZANPLATFORM_NO_EXPORT bool FailAndClose(int error);
    ZANPLATFORM_NO_EXPORT bool WaitForRoom();

    int m_descriptor = -1;
    int m_error = 0;
    bool m_isRegular = false;
    bool m_isStalled = false;
};
