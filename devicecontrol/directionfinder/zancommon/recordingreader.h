#pragma once

#include "zancommon_export.h"

#include "zancommon/badline.h"
#include "zancommon/linereader.h"
#include "zancommon/recordedbearing.h"
#include "zancommon/rowparser.h"

#include <QString>
#include <QStringList>

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

class QIODevice;

namespace KvZANCommon {

/// Reads a bearing recording, one row per call.
///
/// Memory use does not depend on the length of the recording or its lines. Lines that are not valid rows are
/// counted by reason and skipped; the first of them are kept as texts. A byte order mark, lines that end with
/// CR LF, a last line without an end and an empty last line are accepted.
///
/// \code
/// RecordingReader reader;
/// if (!reader.Open(fileName)) { ... reader.GetErrorText() ... }
/// while (const std::optional<RecordedBearing> bearing = reader.Next()) { ... }
/// if (!reader.GetErrorText().isEmpty()) { ... reading broke off ... }
/// \endcode
class ZANCOMMON_EXPORT RecordingReader {
public:
    using BadLine = KvZANCommon::BadLine;

    /// The longest line that is read, in bytes; a row has about 100.
    static constexpr std::size_t MAX_LINE_LENGTH = LineReader::MAX_LENGTH;
    /// How many bad lines are kept as texts.
    static constexpr qsizetype MAX_BAD_LINE_TEXTS = 20;

    /// Opens a file and reads its header line; while it is open, outputs refuse it (`OutputFile`). False with
    /// an error text when it cannot be opened, is a directory or empty, or its header line is missing or has
    /// other columns than `RECORDING_COLUMNS`, and behind them some of `FURTHER_RECORDING_COLUMNS`. All
    /// counts are reset. The header line of a stream (`InterruptibleInput`: a FIFO, or
    /// "-") may take long to arrive: it is read with the first row, and its faults are told then.
    bool Open(const QString& name);
    /// Reads from a device that is open for reading, from its current position; it is not owned and must
    /// outlive the last call of `Next`. Its `read` returns 0 at the end and below 0 on an error; for a
    /// sequential device, `waitForReadyRead` says whether reading would wait.
    /// \param name name of the device in error texts
    bool Open(QIODevice& device, const QString& name = QStringLiteral("recording"));

    /// The next valid row; nothing at the end, and after an error. Waits for a sequential device.
    std::optional<RecordedBearing> Next();
    /// As `Next`, but also nothing while the device has not received the complete row.
    std::optional<RecordedBearing> NextIfHere();

    /// From any thread: reading ends, as at the end of the recording, now and until `Resume`. A reader that
    /// waits for a stream, or skips gigabytes of lines that are not rows, would not end for long otherwise.
    void Interrupt() { m_lines.Interrupt(); }
    void Resume() { m_lines.Resume(); }

    /// Whether the recording has a column: after its header line was read, which is that of a stream with the
    /// first row.
    [[nodiscard]] bool HasColumn(std::string_view name) const { return m_parser.HasColumn(name); }
    /// Why `Open` or reading failed; empty without a failure.
    [[nodiscard]] const QString& GetErrorText() const { return m_errorText; }
    [[nodiscard]] quint64 GetRowCount() const { return m_rowCount; }
    /// How much of the recording has been read, 0 to 1; 0 when the size is not known.
    [[nodiscard]] double GetProgress() const { return m_lines.GetProgress(); }
    [[nodiscard]] quint64 GetBadLineCount() const;
    [[nodiscard]] quint64 GetBadLineCount(BadLine reason) const;
    /// "line 7: azimuth_deg: out of range: "360"" for the first `MAX_BAD_LINE_TEXTS` bad lines.
    [[nodiscard]] const QStringList& GetBadLineTexts() const { return m_badLineTexts; }

private:
    ZANCOMMON_NO_EXPORT bool Begin(const QString& name, bool isOpen);
    ZANCOMMON_NO_EXPORT bool Fail(const QString& text);
    [[nodiscard]] ZANCOMMON_NO_EXPORT bool IsReading() const;
    ZANCOMMON_NO_EXPORT bool ReadHeader();
    ZANCOMMON_NO_EXPORT std::optional<RecordedBearing> Read(bool mayWait);
    ZANCOMMON_NO_EXPORT bool ParseRow(std::string_view line, RecordedBearing& bearing);
    template <class MakeText>
    void Count(BadLine reason, MakeText makeText);

    LineReader m_lines;
    RowParser m_parser;
    bool m_isHeaderDue = false; // of a stream
    QString m_name;
    QString m_errorText;
    quint64 m_latestTimeMs = 0;
    quint64 m_rowCount = 0;
    std::array<quint64, static_cast<std::size_t>(BadLine::COUNT)> m_badLineCounts{};
    QStringList m_badLineTexts;
};

} // namespace KvZANCommon
