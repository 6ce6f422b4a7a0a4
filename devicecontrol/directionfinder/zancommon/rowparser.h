#pragma once

#include "zancommon_export.h"

#include "zancommon/badline.h"
#include "zancommon/recordedbearing.h"

#include <QString>

#include <optional>
#include <string_view>
#include <vector>

namespace KvZANCommon {

/// Reads single lines of a bearing recording: header and rows. Any text may be a line.
class ZANCOMMON_EXPORT RowParser {
public:
    enum class Time {
        Required,
        Optional ///< an empty field leaves the time of the bearing as it is
    };

    /// Rows have the columns that every recording has, until a header line says otherwise.
    explicit RowParser(Time time = Time::Required);

    /// Takes a byte order mark away from the beginning of a file.
    static void DropByteOrderMark(std::string_view& line);
    /// Whether a line names at least one column of a recording.
    static bool IsHeader(std::string_view line);
    /// Takes the columns of the rows from a header line: `RECORDING_COLUMNS`, and behind them some of
    /// `FURTHER_RECORDING_COLUMNS`. Returns what is wrong with it; empty when it is valid.
    QString TakeHeader(std::string_view line);
    /// Whether rows have a column.
    [[nodiscard]] bool HasColumn(std::string_view name) const;

    /// Reads a row, without its line end. After a failure `GetFault` says why, and the bearing is not to be
    /// used.
    bool Parse(std::string_view line, RecordedBearing& bearing);
    /// Gives a bearing the value of a column when the column can hold it; else the reason why not. The time
    /// in whole milliseconds.
    static std::optional<BadLine> Assign(const RecordingColumn& column, double value,
                                         RecordedBearing& bearing);

    /// Why the last row was refused.
    [[nodiscard]] BadLine GetFault() const { return m_fault; }
    /// The same in words: "azimuth_deg: out of range: "360"". Of the same line, which must still be there.
    [[nodiscard]] QString GetFaultText() const;
    /// The same words for the value of a column.
    static QString DescribeFault(const RecordingColumn& column, BadLine fault, std::string_view found);

private:
    ZANCOMMON_NO_EXPORT bool Refuse(std::string_view line, const RecordingColumn& column, const char* field,
                                    BadLine fault);

    Time m_time;
    std::vector<const RecordingColumn*> m_columns;
    BadLine m_fault = BadLine::ColumnCount;
    std::string_view m_line;                    // that was refused
    const RecordingColumn* m_pColumn = nullptr; // and its first column that is not valid
    std::string_view m_found;                   // from that column on
};

} // namespace KvZANCommon
