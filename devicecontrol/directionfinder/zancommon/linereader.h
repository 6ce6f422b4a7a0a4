#pragma once

#include "zancommon_export.h"

#include "connections/inputfile.h"
#include "connections/interruptibleinput.h"

#include <QString>

#include <atomic>
#include <cstddef>
#include <string_view>
#include <vector>

class QIODevice;

namespace KvZANCommon {

/// Reads lines of bounded length from a file, a stream, a serial line, a socket or another device.
///
/// Memory use does not depend on the length of the lines. Belongs to one thread, but for `Interrupt`.
class ZANCOMMON_EXPORT LineReader {
public:
    enum class Result {
        Complete,
        TooLong, ///< the beginning of the line; its rest is skipped
        End      ///< or an error, or an interruption
    };

    /// The longest line that is read, in bytes; a row of a recording has about 100.
    static constexpr std::size_t MAX_LENGTH = 4096;

    LineReader();

    /// Whether a name is that of a stream, not of a regular file (`InterruptibleInput`: a FIFO, or "-").
    static bool IsStream(const QString& name) { return InterruptibleInput::IsStream(name); }

    // Each of these begins anew, and returns false with the reason in `GetErrorText` when it cannot be
    // opened.

    /// A regular file; while it is open, outputs refuse it (`OutputFile`).
    bool OpenFile(const QString& name);
    bool OpenStream(const QString& name);
    /// `InterruptibleInput::OpenSerialLine`. What arrives before the first line end is skipped: it is the end
    /// of a line that had begun before.
    bool OpenSerialLine(const QString& address);
    /// A connected socket or the like, of which this takes possession (`InterruptibleInput::Adopt`).
    bool Adopt(int descriptor);
    /// A device that is open for reading, from its current position; it is not owned and must outlive the
    /// last call that reads. Its `read` returns 0 at the end and below 0 on an error; for a sequential
    /// device, `waitForReadyRead` says whether reading would wait.
    bool Open(QIODevice& device);
    void Close();
    [[nodiscard]] bool IsOpen() const { return m_pDevice != nullptr; }

    /// Takes the next line, without its end (LF or CR LF); it is valid until the next call. A last line
    /// without an end is complete, too, but after an interruption. Waits for a sequential device.
    Result Next(std::string_view& line);
    /// Whether the line that was taken last had its end. A line that is too long has none yet.
    [[nodiscard]] bool HasLineEnd() const { return m_hasLineEnd; }
    /// Whether the next line, or the end, can be read without waiting.
    bool IsHere();
    /// Whether nothing follows. Waits for a sequential device.
    bool IsAtEnd();

    /// From any thread: reading ends, as at the end, now and until `Resume`.
    void Interrupt();
    void Resume();
    [[nodiscard]] bool IsInterrupted() const { return m_isInterrupted; }

    /// Why opening or reading failed; empty without a failure.
    [[nodiscard]] const QString& GetErrorText() const { return m_errorText; }
    /// Of the line that was read last, counted from 1.
    [[nodiscard]] quint64 GetLineNumber() const { return m_lineNumber; }
    /// How much of a regular file has been read, 0 to 1; 0 when the size is not known.
    [[nodiscard]] double GetProgress() const;

private:
    ZANCOMMON_NO_EXPORT void Begin(QIODevice* device, qint64 size);
    ZANCOMMON_NO_EXPORT bool Fail(const QString& text);
    ZANCOMMON_NO_EXPORT bool BeginStream(bool isOpen);
    ZANCOMMON_NO_EXPORT void DropRest();
    [[nodiscard]] ZANCOMMON_NO_EXPORT const char* FindNewline() const;
    ZANCOMMON_NO_EXPORT bool Fill();

    std::atomic<bool> m_isInterrupted = false;
    InputFile m_file;
    InterruptibleInput m_stream;
    QIODevice* m_pDevice = nullptr; // null: nothing to read
    QString m_errorText;
    std::vector<char> m_buffer;
    std::size_t m_begin = 0; // of the bytes in the buffer that have not been split into lines
    std::size_t m_end = 0;
    qint64 m_size = 0;       // of everything that will be read; 0: not known
    qint64 m_received = 0;   // bytes that have been read into the buffer
    bool m_skipping = false; // in the rest of a line that was too long
    bool m_hasLineEnd = false;
    quint64 m_lineNumber = 0;
};

} // namespace KvZANCommon
