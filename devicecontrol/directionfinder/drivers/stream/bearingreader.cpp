#include "stream/bearingreader.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVariant>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace Stream {

using KvZANCommon::BadLine;
using KvZANCommon::FURTHER_RECORDING_COLUMNS;
using KvZANCommon::GetReasonText;
using KvZANCommon::LineReader;
using KvZANCommon::RecordedBearing;
using KvZANCommon::RECORDING_COLUMNS;
using KvZANCommon::RecordingColumn;
using KvZANCommon::RowParser;

namespace {

constexpr auto SORTED_COLUMNS = [] {
    std::array<RecordingColumn, RECORDING_COLUMNS.size() + FURTHER_RECORDING_COLUMNS.size()> columns;
    std::ranges::copy(FURTHER_RECORDING_COLUMNS, std::ranges::copy(RECORDING_COLUMNS, columns.begin()).out);
    std::ranges::sort(columns, {}, &RecordingColumn::name);
    return columns;
}();

int Compare(const QString& name, std::string_view column) {
    return QStringView(name).compare(QLatin1StringView(column.data(), static_cast<qsizetype>(column.size())));
}

quint64 Now() {
    return static_cast<quint64>(QDateTime::currentMSecsSinceEpoch());
}

bool IsLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

/// What a message repeats of a value that is not valid.
QByteArray ToText(const QJsonValue& value) {
    if (value.isUndefined() || value.isNull()) {
        return {};
    }
    return value.isObject() ? "{...}" : value.isArray() ? "[...]" : value.toVariant().toByteArray();
}

std::optional<BadLine> ReadMember(const RecordingColumn& column, const QJsonValue& value,
                                  RecordedBearing& bearing) {
    if (value.isDouble()) {
        return RowParser::Assign(column, value.toDouble(), bearing);
    }
    if (!value.isUndefined() && !value.isNull()) {
        return BadLine::NotANumber;
    }
    if (column.optional) {
        (bearing.*column.optional).reset();
    }
    return column.required ? std::optional(BadLine::MissingValue) : std::nullopt;
}

} // namespace

BearingReader::BearingReader(LineReader& lines, Tell tell, Clock clock)
    : m_lines(lines)
    , m_tell(std::move(tell))
    , m_clock(clock ? std::move(clock) : Clock(Now)) {}

void BearingReader::Reset() {
    m_headerFault.clear();
    m_counts.Reset();
    m_lastFault.clear();
}

const RecordedBearing* BearingReader::Next() {
    return Read(true);
}

const RecordedBearing* BearingReader::NextIfHere() {
    return Read(false);
}

const RecordedBearing* BearingReader::Read(bool mayWait) {
    while (mayWait || m_lines.IsHere()) {
        std::string_view line;
        const LineReader::Result result = m_lines.Next(line);
        if (result == LineReader::Result::End) {
            break;
        }
        if (result == LineReader::Result::TooLong) {
            Count(BadLine::TooLong, GetReasonText(BadLine::TooLong));
        } else if (!m_lines.HasLineEnd()) {
            Count(BadLine::CutShort, GetReasonText(BadLine::CutShort));
        } else if (ReadLine(line)) {
            return &m_bearing;
        }
    }
    return nullptr;
}

/// Whether the line is a bearing.
bool BearingReader::ReadLine(std::string_view line) {
    RowParser::DropByteOrderMark(line);
    if (line.empty()) {
        return false;
    }
    m_bearing = {}; // the row before may have had further columns
    m_bearing.timeMs = m_clock();
    if (line.front() == '{') {
        return ReadObject(line);
    }
    if (IsLetter(line.front()) && RowParser::IsHeader(line)) {
        ReadHeader(line);
        return false;
    }
    return ReadRow(line);
}

void BearingReader::ReadHeader(std::string_view line) {
    m_headerFault = m_parser.TakeHeader(line);
    if (!m_headerFault.isEmpty()) {
        Count(BadLine::OtherColumns, m_headerFault);
    }
}

bool BearingReader::ReadRow(std::string_view line) {
    if (!m_headerFault.isEmpty()) {
        Count(BadLine::OtherColumns, GetReasonText(BadLine::OtherColumns) + u": "_s + m_headerFault);
        return false;
    }
    if (!m_parser.Parse(line, m_bearing)) {
        Count(m_parser.GetFault(), m_parser.GetFaultText());
        return false;
    }
    return true;
}

bool BearingReader::ReadObject(std::string_view line) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(
        QByteArray::fromRawData(line.data(), static_cast<qsizetype>(line.size())), &error);
    if (error.error != QJsonParseError::NoError) {
        Count(BadLine::NotAnObject, GetReasonText(BadLine::NotAnObject) + u": "_s + error.errorString());
        return false;
    }
    const QJsonObject object = document.object();
    auto member = object.constBegin();
    const auto end = object.constEnd();
    // Columns and members are both in the order of their names, which is faster than looking for each.
    for (const RecordingColumn& column : SORTED_COLUMNS) {
        int order = 1;
        while (member != end && (order = Compare(member.key(), column.name)) < 0) {
            ++member;
        }
        const bool isThere = member != end && order == 0;
        const std::optional<BadLine> fault =
            ReadMember(column, isThere ? member.value() : QJsonValue(QJsonValue::Undefined), m_bearing);
        if (fault) {
            Count(*fault, RowParser::DescribeFault(
                              column, *fault, ToText(isThere ? member.value() : QJsonValue()).toStdString()));
            return false;
        }
        if (isThere) {
            ++member;
        }
    }
    return true;
}

void BearingReader::Count(BadLine reason, const QString& text) {
    const bool isToBeTold = m_counts.Add(reason);
    m_lastFault = u"line %1: %2"_s.arg(m_lines.GetLineNumber()).arg(text);
    if (isToBeTold) {
        const quint64 count = m_counts.Get(reason);
        m_tell(count == 1 ? m_lastFault
                          : u"%1 lines so far: %2; the last one: %3"_s.arg(
                                QString::number(count), GetReasonText(reason), m_lastFault));
    }
}

} // namespace Stream
