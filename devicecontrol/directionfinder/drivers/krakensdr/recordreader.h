#pragma once

#include "krakensdr/record.h"
#include "krakensdr/recordparser.h"
#include "zancommon/faultcounts.h"

#include <QByteArray>
#include <QString>

#include <deque>
#include <functional>

namespace KrakenSdr {

/// Takes the new bearings out of what a receiver serves, again and again: one line for each frequency, which
/// may be cut short or half rewritten at that moment.
///
/// A record is new when its frequency and time were not met together among the last `MAX_SEEN` such pairs; a
/// pair that is met again is the last one again. A last line without a line end may be unfinished: it counts
/// when the next body brings it again.
class RecordReader {
public:
    using Take = std::function<void(const Record& record)>;
    using Tell = std::function<void(const QString& text)>;

    static constexpr int MAX_LINES = 16; ///< frequencies at once
    static constexpr std::size_t MAX_SEEN = std::size_t{4} * MAX_LINES;
    static constexpr qsizetype MAX_LINE_LENGTH = 8192;
    static constexpr qsizetype MAX_BODY = MAX_LINES * MAX_LINE_LENGTH;

    /// \param tell is told the first bad line of each kind, and each time that the number of a kind reaches a
    ///        power of ten
    explicit RecordReader(Tell tell);

    /// Forgets everything, for another receiver.
    void Reset();
    /// For a receiver that is connected again: forgets all but the records that were seen.
    void Reconnect();
    /// Whether a record is new; from now on it is not.
    bool See(const Record& record);
    /// Reads a body and gives each new record to `take`. Whether at least one line is a record, new or not,
    /// or the unfinished beginning of one.
    bool Read(const QByteArray& body, const Take& take);

    [[nodiscard]] const KvZANCommon::FaultCounts<BadRecord>& GetCounts() const { return m_counts; }
    /// What the last bad line was; empty when there was none.
    [[nodiscard]] const QString& GetLastFault() const { return m_lastFault; }

private:
    struct Seen {
        double frequency = 0.0;
        quint64 timeMs = 0;

        bool operator==(const Seen&) const = default;
    };

    void Count(BadRecord reason, const QString& text);

    Tell m_tell;
    RecordParser m_parser;
    Record m_record;
    std::deque<Seen> m_seen; // the one that was met last is at the end
    QByteArray m_unfinished; // the last line of the last body, when it had no end
    KvZANCommon::FaultCounts<BadRecord> m_counts;
    QString m_lastFault;
};

} // namespace KrakenSdr
