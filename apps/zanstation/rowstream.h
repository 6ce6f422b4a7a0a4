#pragma once

#include "kwbase/standardstream.h"
#include "zancommon/recordedbearing.h"

#include <QByteArray>
#include <QString>

#include <span>

/// Writes a recording to standard output: whole rows, whatever happens.
///
/// Waits for a reader that takes nothing; from then on signals end the program at once (`SignalWatcher`).
class RowStream {
public:
    /// \param further columns behind those of every recording, which outlive this
    explicit RowStream(std::span<const KvZANCommon::RecordingColumn> further);

    /// False when the row cannot be written.
    bool Write(const KvZANCommon::RecordedBearing& row);
    /// Writes what is waiting to be written. False when not all of it could be.
    bool Flush();

    /// Why writing has failed; empty when it has not, and when the reader is gone.
    [[nodiscard]] const QString& GetErrorText() const { return m_errorText; }
    /// Whether the reader is gone: it may have read enough.
    [[nodiscard]] bool HasNoReader() const { return m_hasNoReader; }

private:
    void TakeBack(std::size_t written) const;

    std::span<const KvZANCommon::RecordingColumn> m_further;
    StandardStream m_stream;
    QByteArray m_waiting; // whole lines
    QString m_errorText;
    bool m_hasNoReader = false;
};
