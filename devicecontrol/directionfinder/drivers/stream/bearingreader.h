#pragma once

#include "zancommon/badline.h"
#include "zancommon/faultcounts.h"
#include "zancommon/linereader.h"
#include "zancommon/recordedbearing.h"
#include "zancommon/rowparser.h"

#include <QString>

#include <functional>
#include <string_view>

namespace Stream {

/// Reads the bearings of a live source, one a line: rows of a recording, or JSON objects with the names of
/// its columns as members.
///
/// A line that begins with "{" is an object, any other one a row; both may be mixed. Rows may come in any
/// order of time; one without a time gets that of its arrival. Header lines may come at any place, or not at
/// all; below one with other columns no row is read until a right one follows. Empty lines are skipped. An
/// object may have other members; null means that a value was not measured. A last line without a line end
/// was cut short, and what is left of it could be another number. What is not valid is counted by kind and
/// skipped.
class BearingReader {
public:
    using Tell = std::function<void(const QString& text)>;
    using Clock = std::function<quint64()>;

    /// \param lines must outlive this
    /// \param tell  is told the first bad line of each kind ("line 7: azimuth_deg: out of range: "360""), and
    ///        each time that the number of a kind reaches a power of ten
    /// \param clock for times of arrival, milliseconds since 1970-01-01 00:00:00 UTC; by default that of the
    ///        system
    BearingReader(KvZANCommon::LineReader& lines, Tell tell, Clock clock = {});

    /// Forgets header line and counts, for a source that was opened again.
    void Reset();
    /// The next bearing, which is valid until the next call; null at the end of the source, after an error,
    /// and when it was interrupted. Waits.
    const KvZANCommon::RecordedBearing* Next();
    /// As `Next`, but also null while the source has not sent the complete line.
    const KvZANCommon::RecordedBearing* NextIfHere();

    [[nodiscard]] const KvZANCommon::FaultCounts<KvZANCommon::BadLine>& GetCounts() const { return m_counts; }
    /// The last bad line, in the words in which it would be told; empty when there was none.
    [[nodiscard]] const QString& GetLastFault() const { return m_lastFault; }

private:
    const KvZANCommon::RecordedBearing* Read(bool mayWait);
    bool ReadLine(std::string_view line);
    bool ReadRow(std::string_view line);
    bool ReadObject(std::string_view line);
    void ReadHeader(std::string_view line);
    void Count(KvZANCommon::BadLine reason, const QString& text);

    KvZANCommon::LineReader& m_lines;
    Tell m_tell;
    Clock m_clock;
    KvZANCommon::RowParser m_parser{KvZANCommon::RowParser::Time::Optional};
    KvZANCommon::RecordedBearing m_bearing;
    QString m_headerFault; // empty: the rows have the columns of a recording
    KvZANCommon::FaultCounts<KvZANCommon::BadLine> m_counts;
    QString m_lastFault;
};

} // namespace Stream
