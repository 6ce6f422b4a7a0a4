#pragma once

#include "zancommon/recordedbearing.h"
#include "zancommon_export.h"

#include <QByteArray>
#include <QString>

#include <span>

/// The lines of a bearing recording as they are written.
namespace KvZANCommon::RecordingLine {

/// How exactly numbers are written.
enum class Precision {
    Columns, ///< with the decimals of each column
    Full     ///< with as many as are needed to read the same value back
};

/// Appends the header line of some columns, with its line end.
ZANCOMMON_EXPORT void AppendHeader(QByteArray& text, std::span<const RecordingColumn> columns,
                                   std::span<const RecordingColumn> further = {});
/// Appends a row with its line end. Nothing is appended when a column cannot hold its value.
/// \return why not: "pitch_deg: out of range: 95"; empty when the row was appended
[[nodiscard]] ZANCOMMON_EXPORT QString AppendRow(QByteArray& text, const RecordedBearing& bearing,
                                                 Precision precision,
                                                 std::span<const RecordingColumn> columns,
                                                 std::span<const RecordingColumn> further = {});

} // namespace KvZANCommon::RecordingLine
