#include "zancommon/recordingreader.h"

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace KvZANCommon {

bool RecordingReader::Open(const QString& name) {
    if (LineReader::IsStream(name)) {
        m_isHeaderDue = Begin(name, m_lines.OpenStream(name));
        return m_isHeaderDue;
    }
    return Begin(name, m_lines.OpenFile(name)) && ReadHeader();
}

bool RecordingReader::Open(QIODevice& device, const QString& name) {
    return Begin(name, m_lines.Open(device)) && ReadHeader();
}

bool RecordingReader::Begin(const QString& name, bool isOpen) {
    m_name = name;
    m_errorText.clear();
    m_isHeaderDue = false;
    m_latestTimeMs = 0;
    m_rowCount = 0;
    m_badLineCounts.fill(0);
    m_badLineTexts.clear();
    return isOpen || Fail(m_lines.GetErrorText());
}

bool RecordingReader::Fail(const QString& text) {
    m_errorText = m_name + u": "_s + text;
    return false;
}

bool RecordingReader::IsReading() const {
    return m_errorText.isEmpty() && m_lines.IsOpen();
}

bool RecordingReader::ReadHeader() {
    std::string_view line;
    const LineReader::Result result = m_lines.Next(line);
    if (!m_lines.IsOpen()) {
        return Fail(m_lines.GetErrorText());
    }
    RowParser::DropByteOrderMark(line);
    if (result == LineReader::Result::End || (line.empty() && m_lines.IsAtEnd())) {
        return Fail(u"is empty"_s);
    }
    const QString fault = m_parser.TakeHeader(line);
    return fault.isEmpty() || Fail(fault);
}

std::optional<RecordedBearing> RecordingReader::Next() {
    return Read(true);
}

std::optional<RecordedBearing> RecordingReader::NextIfHere() {
    return Read(false);
}

std::optional<RecordedBearing> RecordingReader::Read(bool mayWait) {
    std::optional<RecordedBearing> bearing(std::in_place);
    if (m_isHeaderDue && IsReading() && (mayWait || m_lines.IsHere())) {
        m_isHeaderDue = false;
        ReadHeader();
    }
    while (!m_isHeaderDue && IsReading() && (mayWait || m_lines.IsHere())) {
        std::string_view line;
        const LineReader::Result result = m_lines.Next(line);
        if (result == LineReader::Result::End || (line.empty() && m_lines.IsAtEnd())) {
            break;
        }
        if (result == LineReader::Result::TooLong) {
            Count(BadLine::TooLong, [] { return GetReasonText(BadLine::TooLong); });
        } else if (ParseRow(line, *bearing)) {
            ++m_rowCount;
            m_latestTimeMs = std::max(m_latestTimeMs, bearing->timeMs);
            return bearing;
        }
    }
    if (m_errorText.isEmpty() && !m_lines.GetErrorText().isEmpty()) {
        Fail(m_lines.GetErrorText());
    }
    bearing.reset();
    return bearing;
}

bool RecordingReader::ParseRow(std::string_view line, RecordedBearing& bearing) {
    if (!m_parser.Parse(line, bearing)) {
        Count(m_parser.GetFault(), [this] { return m_parser.GetFaultText(); });
        return false;
    }
    if (IsTooEarly(bearing.timeMs, m_latestTimeMs)) {
        Count(BadLine::TimeBackwards, [line] {
            return RowParser::DescribeFault(RECORDING_COLUMNS.front(), BadLine::TimeBackwards,
                                            line.substr(0, line.find(',')));
        });
        return false;
    }
    return true;
}

/// Creates a text only while texts are kept: every line of a long recording may be bad.
template <class MakeText>
void RecordingReader::Count(BadLine reason, MakeText makeText) {
    ++m_badLineCounts[static_cast<std::size_t>(reason)];
    if (m_badLineTexts.size() < MAX_BAD_LINE_TEXTS) {
        m_badLineTexts += u"line "_s + QString::number(m_lines.GetLineNumber()) + u": "_s + makeText();
    }
}

quint64 RecordingReader::GetBadLineCount() const {
    return std::accumulate(m_badLineCounts.begin(), m_badLineCounts.end(), quint64{0});
}

quint64 RecordingReader::GetBadLineCount(BadLine reason) const {
    return m_badLineCounts[static_cast<std::size_t>(reason)];
}

} // namespace KvZANCommon
