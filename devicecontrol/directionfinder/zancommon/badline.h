#pragma once

#include "zancommon_export.h"

#include <QString>

namespace KvZANCommon {

/// Why a line is not a valid row of bearings.
enum class BadLine {
    ColumnCount,
    MissingValue,
    NotANumber,
    NotFinite,
    OutOfRange,
    TimeBackwards, ///< of a recording: too early after the valid rows before (`IsTooEarly`)
    NulByte,
    TooLong,
    OtherColumns, ///< of a live source: below a header line with other columns
    NotAnObject,  ///< of a live source: begins as a JSON object, and is none
    CutShort,     ///< of a live source: its last line, without a line end
    COUNT
};

/// "out of range"
ZANCOMMON_EXPORT QString GetReasonText(BadLine reason);

} // namespace KvZANCommon
