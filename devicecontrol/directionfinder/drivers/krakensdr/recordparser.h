#pragma once

#include "krakensdr/record.h"

#include <QString>

#include <string_view>

namespace KrakenSdr {

/// Why a line is not a record.
enum class BadRecord {
    FieldCount, ///< cut short, or of something else
    NotANumber,
    OutOfRange,
    Missing, ///< a field without which there is no bearing holds nothing
    TooLong, ///< a line
    TooMany, ///< more lines than frequencies at once
    COUNT
};

/// Reads the lines that a receiver serves: 377 fields, separated by commas. "R" is a field that holds
/// nothing.
class RecordParser {
public:
    static constexpr std::size_t FIELD_COUNT = 17 + Record::DIRECTIONS;

    /// Reads a line without its end. False when it is not a record: `GetFault` and `GetFaultText` say why.
    ///
    /// There is no bearing without time, bearing, confidence and frequency. Of the two headings the one that
    /// the receiver names as its main one counts, and the first that is there when it names none; one
    /// out of range is none. Latitude
    /// and longitude of 0 are what a receiver tells that was given no place, so that they are none. A
    /// spectrum of which a part is missing is none.
    bool Parse(std::string_view line, Record& record);

    [[nodiscard]] BadRecord GetFault() const { return m_fault; }
    /// "field 2 (bearing): out of range: "400""
    [[nodiscard]] const QString& GetFaultText() const { return m_faultText; }
    /// "out of range"
    static QString GetReasonText(BadRecord reason);

private:
    bool Refuse(BadRecord fault, const QString& text);

    BadRecord m_fault = BadRecord::FieldCount;
    QString m_faultText;
};

} // namespace KrakenSdr
