#pragma once

#include "zanserver_export.h"

#include "zanserver/recordedbearing.h"

#include <QFile>
#include <QString>
#include <QStringList>

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

class QIODevice;

namespace ZANServer {

/// Reads a bearing recording, one row a call.
///
/// Memory stays the same however long the recording or one of its lines is. A line that is no valid row is
/// counted by reason and skipped, and the first of them are kept as texts. A byte order mark, lines that end
/// with CR LF, a last line without an end and an empty last line are accepted.
///
/// \code
/// RecordingReader reader;
/// if (!reader.Open(fileName)) { ... reader.GetErrorText() ... }
/// while (const std::optional<RecordedBearing> bearing = reader.Next()) { ... }
/// if (!reader.GetErrorText().isEmpty()) { ... reading broke off ... }
/// \endcode
class ZANSERVER_EXPORT RecordingReader {
public:
    /// Why a line is no valid row.
    enum class BadLine {
        ColumnCount,
        MissingValue,
        NotANumber,
        NotFinite,
        OutOfRange,
        TimeBackwards, ///< before the time of the last valid row; the same time is valid
        NulByte,
        TooLong,
        COUNT
    };

    /// Bytes of the longest line that is read; a row has some 100.
    static constexpr std::size_t MAX_LINE_LENGTH = 4096;
    /// How many bad lines are kept as texts.
    static constexpr qsizetype MAX_BAD_LINE_TEXTS = 20;

    RecordingReader();

    /// Opens a file and reads its header line; while it is open, an output does not take it (`OutputFile`).
    /// False with an error text when it cannot be opened, is a directory or empty, or its header line is
    /// missing or has other columns. Counts start anew.
    bool Open(const QString& fileName);
    /// Reads from a device that is open for reading, from where it stands; it is not owned and must outlive
    /// the last call of `Next`. Its `read` returns 0 at the end and below 0 for an error, and the
    /// `waitForReadyRead` of a sequential one tells whether it would wait.
    /// \param name what the device is called in error texts
    bool Open(QIODevice& device, const QString& name = QStringLiteral("recording"));

    /// The next valid row; nothing at the end, and after an error. Of a sequential device it is waited for.
    std::optional<RecordedBearing> Next() { return Read(true); }
    /// As `Next`, but nothing, too, while the device has not received the row as a whole yet.
    std::optional<RecordedBearing> NextIfHere() { return Read(false); }

    /// Why `Open` failed or reading broke off; empty when neither happened.
    [[nodiscard]] const QString& GetErrorText() const { return m_errorText; }
    [[nodiscard]] quint64 GetRowCount() const { return m_rowCount; }
    /// How much of the recording has been read, 0 to 1; 0 where the size is not known.
    [[nodiscard]] double GetProgress() const;
    [[nodiscard]] quint64 GetBadLineCount() const;
    [[nodiscard]] quint64 GetBadLineCount(BadLine reason) const;
    /// "line 7: azimuth_deg: out of range: "360"" for the first `MAX_BAD_LINE_TEXTS` bad lines.
    [[nodiscard]] const QStringList& GetBadLineTexts() const { return m_badLineTexts; }
    /// "out of range"
    [[nodiscard]] static QString GetReasonText(BadLine reason);

private:
    enum class Line { Complete, TooLong, End };

    void Reset(QIODevice& device, const QString& name);
    bool Fail(const QString& text);
    bool ReadHeader();
    std::optional<RecordedBearing> Read(bool mayWait);
    Line ReadLine(std::string_view& line);
    bool IsLineHere();
    void DropRest();
    [[nodiscard]] const char* FindNewline() const;
    bool Fill();
    bool AtEnd();
    bool ParseRow(std::string_view line, RecordedBearing& bearing);
    bool Reject(std::string_view line, const RecordingColumn& column, const char* field, BadLine reason);
    template <class MakeText>
    void Count(BadLine reason, MakeText makeText);

    QFile m_file;
    QIODevice* m_pDevice = nullptr; // null: nothing to read
    QString m_name;
    QString m_errorText;
    std::vector<char> m_buffer;
    std::size_t m_begin = 0; // the bytes of the buffer that are still to be cut into lines
    std::size_t m_end = 0;
    qint64 m_size = 0;       // of the whole recording; 0: not known
    qint64 m_received = 0;   // bytes that have come into the buffer
    bool m_skipping = false; // within the rest of a line that was too long
    quint64 m_lineNumber = 0;
    quint64 m_lastTimeMs = 0;
    quint64 m_rowCount = 0;
    std::array<quint64, static_cast<std::size_t>(BadLine::COUNT)> m_badLineCounts{};
    QStringList m_badLineTexts;
};

} // namespace ZANServer
