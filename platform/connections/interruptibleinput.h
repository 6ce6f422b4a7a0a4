#pragma once

#include "zanplatform_export.h"

#include <QIODevice>
#include <QString>

/// A recording that is still being written: standard input, a FIFO, or whatever else is no file that stands
/// still. It is opened without waiting for a writer; reading takes what has come, and waits while that is
/// nothing. The end is where the last writer has gone.
///
/// Belongs to the thread that reads, but for `Interrupt`.
class ZANPLATFORM_EXPORT InterruptibleInput final : public QIODevice {
public:
    /// The name of standard input.
    static constexpr QStringView STANDARD_INPUT = u"-";

    InterruptibleInput() = default;
    InterruptibleInput(const InterruptibleInput&) = delete;
    InterruptibleInput& operator=(const InterruptibleInput&) = delete;
    ~InterruptibleInput() override;

    /// Whether a name is that of a stream, not of a file that can be read from end to end at once.
    [[nodiscard]] static bool IsStream(const QString& name);

    /// Closes what was open and opens another one. False with `errorString` when it cannot be had.
    bool Open(const QString& name);
    void close() override;
    /// From any thread: whoever reads finds the end, now and until `Resume`.
    void Interrupt() const;
    void Resume() const;

    [[nodiscard]] bool isSequential() const override { return true; }
    /// Whether something can be read, or the end be found, within so many milliseconds; below 0: however long
    /// it takes.
    bool waitForReadyRead(int milliseconds) override;

protected:
    qint64 readData(char* data, qint64 size) override;
    qint64 writeData(const char* data, qint64 size) override;

private:
    int m_stream = -1;
    int m_interrupt = -1; // readable once somebody interrupts
};
