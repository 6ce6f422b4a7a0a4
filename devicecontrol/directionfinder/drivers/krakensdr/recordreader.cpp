#include "krakensdr/recordreader.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace KrakenSdr {

RecordReader::RecordReader(Tell tell)
    : m_tell(std::move(tell)) {}

void RecordReader::Reset() {
    m_seen.clear();
    Reconnect();
}

void RecordReader::Reconnect() {
    m_unfinished.clear();
    m_counts.Reset();
    m_lastFault.clear();
}

bool RecordReader::Read(const QByteArray& body, const Take& take) {
    bool hasRecord = false;
    int count = 0;
    const QByteArray unfinishedBefore = std::exchange(m_unfinished, QByteArray());
    for (qsizetype begin = 0; begin < body.size();) {
        const qsizetype newline = body.indexOf('\n', begin);
        const qsizetype end = newline < 0 ? body.size() : newline;
        const std::string_view line(body.constData() + begin, static_cast<std::size_t>(end - begin));
        begin = end + 1;
        if (line.find_first_not_of(" \t\r") == std::string_view::npos) {
            continue;
        }
        if (++count > MAX_LINES) {
            Count(BadRecord::TooMany, RecordParser::GetReasonText(BadRecord::TooMany));
            break;
        }
        if (std::cmp_greater(line.size(), MAX_LINE_LENGTH)) {
            Count(BadRecord::TooLong, RecordParser::GetReasonText(BadRecord::TooLong));
            continue;
        }
        if (newline < 0) {
            m_unfinished = QByteArray(line.data(), static_cast<qsizetype>(line.size()));
            if (m_unfinished != unfinishedBefore) {
                hasRecord = hasRecord || (line.front() >= '0' && line.front() <= '9');
                continue;
            }
        }
        if (!m_parser.Parse(line, m_record)) {
            Count(m_parser.GetFault(), m_parser.GetFaultText());
            continue;
        }
        hasRecord = true;
        if (See(m_record)) {
            take(m_record);
        }
    }
    return hasRecord;
}

bool RecordReader::See(const Record& record) {
    const Seen pair{record.frequency, record.timeMs};
    const auto place = std::ranges::find(m_seen, pair);
    const bool isNew = place == m_seen.end();
    if (!isNew) {
        // So that a record that stays is not forgotten beside others that are renewed.
        m_seen.erase(place);
    } else if (m_seen.size() == MAX_SEEN) {
        m_seen.pop_front();
    }
    m_seen.push_back(pair);
    return isNew;
}

void RecordReader::Count(BadRecord reason, const QString& text) {
    m_lastFault = text;
    if (m_counts.Add(reason)) {
        const quint64 count = m_counts.Get(reason);
        m_tell(count == 1 ? text
                          : u"%1 lines so far: %2; the last one: %3"_s.arg(
                                QString::number(count), RecordParser::GetReasonText(reason), text));
    }
}

} // namespace KrakenSdr
