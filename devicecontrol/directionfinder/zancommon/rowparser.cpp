#include "zancommon/rowparser.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;

namespace KvZANCommon {

namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

/// The beginning of a text from the file, for a message. Characters that a terminal cannot show become
/// question marks.
QString Quoted(std::string_view text) {
    constexpr std::size_t MAX_QUOTED = 40;
    const std::string_view front = text.substr(0, MAX_QUOTED);
    QString quoted = QString::fromUtf8(front.data(), static_cast<qsizetype>(front.size()));
    for (QChar& character : quoted) {
        if (!character.isPrint()) {
            character = u'?';
        }
    }
    return u'"' + quoted + (front.size() < text.size() ? u"..."_s : QString()) + u'"';
}

QString ToQString(std::string_view text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

std::vector<std::string_view> Split(std::string_view line) {
    std::vector<std::string_view> fields;
    std::size_t begin = 0;
    for (std::size_t comma = line.find(','); comma != std::string_view::npos; comma = line.find(',', begin)) {
        fields.push_back(line.substr(begin, comma - begin));
        begin = comma + 1;
    }
    fields.push_back(line.substr(begin));
    return fields;
}

/// The column of a name; null when there is none.
const RecordingColumn* FindColumn(std::span<const RecordingColumn> columns, std::string_view name) {
    const auto found = std::ranges::find(columns, name, &RecordingColumn::name);
    return found == columns.end() ? nullptr : &*found;
}

bool IsColumn(std::string_view name) {
    return FindColumn(RECORDING_COLUMNS, name);
}

std::size_t CountColumns(std::string_view line) {
    return static_cast<std::size_t>(std::ranges::count(line, ',')) + 1;
}

void Store(const RecordingColumn& column, double value, RecordedBearing& bearing) {
    if (column.required) {
        bearing.*column.required = value;
    } else if (column.optional) {
        bearing.*column.optional = value;
    }
}

/// Reads one field into its member and moves the position to the end of the field.
std::optional<BadLine> ParseField(const RecordingColumn& column, const char*& position, const char* end,
                                  bool isTimeRequired, RecordedBearing& bearing) {
    if (position == end || *position == ',') {
        if (column.optional) {
            (bearing.*column.optional).reset();
        } else if (!column.IsTime() || isTimeRequired) {
            return BadLine::MissingValue;
        }
        return {};
    }
    double value = 0.0;
    const auto [next, error] = column.IsTime() ? std::from_chars(position, end, bearing.timeMs)
                                               : std::from_chars(position, end, value);
    position = next;
    if (next != end && *next != ',') { // `next` is at the beginning when there is no number at all
        return BadLine::NotANumber;
    }
    if (error != std::errc{} ||
        !column.Holds(column.IsTime() ? static_cast<double>(bearing.timeMs) : value)) {
        return std::isfinite(value) ? BadLine::OutOfRange : BadLine::NotFinite;
    }
    Store(column, value, bearing);
    return {};
}

} // namespace

RowParser::RowParser(Time time)
    : m_time(time) {
    for (const RecordingColumn& column : RECORDING_COLUMNS) {
        m_columns.push_back(&column);
    }
}

void RowParser::DropByteOrderMark(std::string_view& line) {
    if (line.starts_with(BYTE_ORDER_MARK)) {
        line.remove_prefix(BYTE_ORDER_MARK.size());
    }
}

bool RowParser::IsHeader(std::string_view line) {
    return std::ranges::any_of(Split(line), IsColumn);
}

QString RowParser::TakeHeader(std::string_view line) {
    const std::vector<std::string_view> names = Split(line);
    std::vector<const RecordingColumn*> columns;
    if (std::ranges::none_of(names, IsColumn)) {
        return u"the header line is missing, the file begins with "_s + Quoted(line);
    }
    std::span<const RecordingColumn> further(FURTHER_RECORDING_COLUMNS); // that may still follow
    for (std::size_t i = 0; i < std::max(names.size(), RECORDING_COLUMNS.size()); ++i) {
        const QString column = u"header column "_s + QString::number(i + 1);
        if (i >= RECORDING_COLUMNS.size()) {
            const RecordingColumn* const found = FindColumn(further, names[i]);
            if (!found) {
                return column +
                       (FindColumn(FURTHER_RECORDING_COLUMNS, names[i]) ? u" is at the wrong place: "_s
                                                                        : u" is unknown: "_s) +
                       Quoted(names[i]);
            }
            columns.push_back(found);
            further = further.subspan(static_cast<std::size_t>(found - further.data()) + 1);
            continue;
        }
        const QString expected = ToQString(RECORDING_COLUMNS[i].name);
        if (i >= names.size()) {
            return column + u" is missing: \""_s + expected + u'"';
        }
        if (names[i] != RECORDING_COLUMNS[i].name) {
            return column + u" is "_s + Quoted(names[i]) + u" instead of \""_s + expected + u'"';
        }
        columns.push_back(&RECORDING_COLUMNS[i]);
    }
    m_columns = std::move(columns);
    return {};
}

bool RowParser::HasColumn(std::string_view name) const {
    return std::ranges::find(m_columns, name, &RecordingColumn::name) != m_columns.end();
}

bool RowParser::Parse(std::string_view line, RecordedBearing& bearing) {
    const char* position = line.data();
    const char* const end = position + line.size();
    for (const RecordingColumn* const column : m_columns) {
        const char* const field = position;
        if (const std::optional<BadLine> fault =
                ParseField(*column, position, end, m_time == Time::Required, bearing)) {
            return Refuse(line, *column, field, *fault);
        }
        const bool isLast = column == m_columns.back();
        if ((position == end) != isLast) {
            return Refuse(line, *column, field, BadLine::ColumnCount);
        }
        position += isLast ? 0 : 1;
    }
    return true;
}

std::optional<BadLine> RowParser::Assign(const RecordingColumn& column, double value,
                                         RecordedBearing& bearing) {
    if (!std::isfinite(value)) {
        return BadLine::NotFinite;
    }
    if (!column.Holds(value)) {
        return BadLine::OutOfRange;
    }
    if (column.IsTime()) {
        if (value != std::floor(value)) {
            return BadLine::NotANumber;
        }
        bearing.timeMs = static_cast<quint64>(value);
    }
    Store(column, value, bearing);
    return {};
}

/// By the fault of a field or, when that explains more, a fault of the whole line.
bool RowParser::Refuse(std::string_view line, const RecordingColumn& column, const char* field,
                       BadLine fault) {
    m_line = line;
    m_pColumn = &column;
    m_found = line.substr(static_cast<std::size_t>(field - line.data()));
    if (line.find('\0') != std::string_view::npos) {
        m_fault = BadLine::NulByte;
    } else {
        m_fault = CountColumns(line) != m_columns.size() ? BadLine::ColumnCount : fault;
    }
    return false;
}

QString RowParser::GetFaultText() const {
    switch (m_fault) {
    case BadLine::NulByte:
        return GetReasonText(m_fault);
    case BadLine::ColumnCount:
        return GetReasonText(m_fault) + u": "_s + QString::number(CountColumns(m_line));
    default:
        return DescribeFault(*m_pColumn, m_fault, m_found.substr(0, m_found.find(',')));
    }
}

QString RowParser::DescribeFault(const RecordingColumn& column, BadLine fault, std::string_view found) {
    return ToQString(column.name) + u": "_s + GetReasonText(fault) +
           (found.empty() ? QString() : u": "_s + Quoted(found));
}

} // namespace KvZANCommon
