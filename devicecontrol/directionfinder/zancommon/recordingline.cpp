#include "zancommon/recordingline.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <optional>
#include <string_view>

using namespace Qt::StringLiterals;

namespace KvZANCommon::RecordingLine {

namespace {

constexpr std::size_t MAX_NUMBER_LENGTH = 400; // the smallest double has 324 decimals

void Append(QByteArray& line, std::string_view text) {
    line.append(text.data(), static_cast<qsizetype>(text.size()));
}

void AppendValue(QByteArray& line, const RecordingColumn& column, Precision precision, double value) {
    std::array<char, MAX_NUMBER_LENGTH> buffer{};
    char* const begin = buffer.data();
    char* const end = begin + buffer.size();
    const char* const last =
        column.decimals == RecordingColumn::AS_NEEDED || precision == Precision::Full
            ? std::to_chars(begin, end, value, std::chars_format::fixed).ptr
            : std::to_chars(begin, end, value, std::chars_format::fixed, column.decimals).ptr;
    std::string_view text(begin, static_cast<std::size_t>(last - begin));
    // A value that rounds up to the full circle is written as north, and one that rounds to zero without a
    // sign.
    if (column.circular && text == "360.0") {
        text = "0.0";
    } else if (text.find_first_not_of("-0.") == std::string_view::npos && text.starts_with('-')) {
        text.remove_prefix(1);
    }
    Append(line, text);
}

std::optional<double> ValueOf(const RecordedBearing& bearing, const RecordingColumn& column) {
    if (column.IsTime()) {
        return static_cast<double>(bearing.timeMs);
    }
    return column.required ? bearing.*column.required : bearing.*column.optional;
}

/// Appends names, each followed by a comma.
void AppendNames(QByteArray& text, std::span<const RecordingColumn> columns) {
    for (const RecordingColumn& column : columns) {
        Append(text, column.name);
        text += ',';
    }
}

/// Appends values, each followed by a comma. Returns the column that cannot hold its value; null: all can.
const RecordingColumn* AppendValues(QByteArray& text, const RecordedBearing& bearing, Precision precision,
                                    std::span<const RecordingColumn> columns) {
    for (const RecordingColumn& column : columns) {
        if (const std::optional<double> value = ValueOf(bearing, column)) {
            if (!column.Holds(*value)) {
                return &column;
            }
            AppendValue(text, column, precision, *value);
        }
        text += ',';
    }
    return nullptr;
}

} // namespace

void AppendHeader(QByteArray& text, std::span<const RecordingColumn> columns,
                  std::span<const RecordingColumn> further) {
    AppendNames(text, columns);
    AppendNames(text, further);
    text.back() = '\n';
}

QString AppendRow(QByteArray& text, const RecordedBearing& bearing, Precision precision,
                  std::span<const RecordingColumn> columns, std::span<const RecordingColumn> further) {
    const qsizetype begin = text.size();
    const RecordingColumn* fault = AppendValues(text, bearing, precision, columns);
    if (!fault) {
        fault = AppendValues(text, bearing, precision, further);
    }
    if (!fault) {
        text.back() = '\n';
        return {};
    }
    text.truncate(begin);
    return QString::fromLatin1(fault->name.data(), static_cast<qsizetype>(fault->name.size())) +
           u": out of range: "_s + QString::number(ValueOf(bearing, *fault).value_or(0.0));
}

} // namespace KvZANCommon::RecordingLine
