#pragma once

#include "zanplatform_export.h"

#include <QIODevice>
#include <QString>

#include <memory>

class QSerialPort;

/// Input that is still being written: standard input, a FIFO, or anything else that is not a regular file; a
/// serial line; a socket. It is opened without waiting for a writer. Reading takes what has arrived, and
/// waits while nothing has. The end is reached when the last writer has closed it.
///
/// Belongs to the thread that reads, but for `Interrupt`.
class ZANPLATFORM_EXPORT InterruptibleInput final : public QIODevice {
public:
    /// The name of standard input.
    static constexpr QStringView STANDARD_INPUT = u"-";

    InterruptibleInput();
    InterruptibleInput(const InterruptibleInput&) = delete;
    InterruptibleInput& operator=(const InterruptibleInput&) = delete;
    ~InterruptibleInput() override;

    /// Whether a name is that of a stream, not of a regular file.
    [[nodiscard]] static bool IsStream(const QString& name);

    /// Closes what was open and opens another stream. False, with the reason in `errorString`, when it cannot
    /// be opened.
    bool Open(const QString& name);
    /// The same with a serial line, by the address that `CInterfaceCreator` takes.
    bool OpenSerialLine(const QString& address);
    /// The same with an open descriptor that does not block, which is closed with this. Of a socket of
    /// datagrams, each is read as whole lines: one that does not end with a line end gets one. Read with room
    /// for the largest datagram, 65,536 bytes.
    bool Adopt(int descriptor);
    void close() override;
    /// From any thread: readers get the end of the stream, now and until `Resume`.
    void Interrupt() const;
    void Resume() const;

    [[nodiscard]] bool isSequential() const override { return true; }
    /// Waits until something, or the end, can be read, for at most this many milliseconds; below 0: without a
    /// limit. Returns whether that came in time.
    bool waitForReadyRead(int milliseconds) override;

protected:
    qint64 readData(char* data, qint64 size) override;
    qint64 writeData(const char* data, qint64 size) override;

private:
    ZANPLATFORM_NO_EXPORT bool Begin(int descriptor);

    std::unique_ptr<QSerialPort> m_serialLine; // while it is open, nobody else opens it
    int m_stream = -1;
    bool m_hasDatagrams = false;
    int m_lock = -1;      // standard input, opened once more: other programs share what is open as that
    int m_interrupt = -1; // becomes readable with `Interrupt`
};
