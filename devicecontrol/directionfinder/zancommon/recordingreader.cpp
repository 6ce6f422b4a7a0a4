#include "zancommon/recordingreader.h"

#include <QFileInfo>
#include <QIODevice>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <numeric>
#include <span>
#include <system_error>

using namespace Qt::StringLiterals;

namespace KvZANCommon {

namespace {

constexpr std::size_t BUFFER_SIZE = 256UL * 1024;
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

/// Reads the columns from a header line. Returns its problem; empty when it is valid.
QString ReadColumns(std::string_view line, std::vector<const RecordingColumn*>& columns) {
    const std::vector<std::string_view> names = Split(line);
    columns.clear();
    if (std::ranges::none_of(names, [](auto name) { return FindColumn(RECORDING_COLUMNS, name); })) {
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
    return {};
}

/// Reads one field into its member and moves the position to the end of the field.
std::optional<RecordingReader::BadLine> ParseField(const RecordingColumn& column, const char*& position,
                                                   const char* end, RecordedBearing& bearing) {
    using BadLine = RecordingReader::BadLine;
    if (position == end || *position == ',') {
        if (!column.optional) {
            return BadLine::MissingValue;
        }
        (bearing.*column.optional).reset();
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
    if (column.required) {
        bearing.*column.required = value;
    } else if (column.optional) {
        bearing.*column.optional = value;
    }
    return {};
}

} // namespace

RecordingReader::RecordingReader()
    : m_buffer(BUFFER_SIZE) {}

bool RecordingReader::Open(const QString& name) {
    m_file.close();
    m_stream.close();
    if (InterruptibleInput::IsStream(name)) {
        return OpenStream(name);
    }
    m_file.setFileName(name);
    Reset(m_file, name);
    if (QFileInfo(name).isDir()) {
        return Fail(u"is a directory"_s);
    }
    // Unbuffered: the reader has its own buffer.
    if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return Fail(u"cannot be opened: "_s + m_file.errorString());
    }
    m_size = m_file.size();
    return ReadHeader();
}

bool RecordingReader::OpenStream(const QString& name) {
    Reset(m_stream, name);
    m_isHeaderDue = m_stream.Open(name);
    return m_isHeaderDue || Fail(u"cannot be opened: "_s + m_stream.errorString());
}

bool RecordingReader::Open(QIODevice& device, const QString& name) {
    Reset(device, name);
    m_size = device.isSequential() ? 0 : device.size() - device.pos();
    return device.isReadable() ? ReadHeader() : Fail(u"is not open for reading"_s);
}

void RecordingReader::Reset(QIODevice& device, const QString& name) {
    m_pDevice = &device;
    m_name = name;
    m_errorText.clear();
    m_begin = 0;
    m_end = 0;
    m_size = 0;
    m_received = 0;
    m_isHeaderDue = false;
    m_skipping = false;
    m_lineNumber = 0;
    m_lastTimeMs = 0;
    m_rowCount = 0;
    m_badLineCounts.fill(0);
    m_badLineTexts.clear();
}

bool RecordingReader::Fail(const QString& text) {
    m_errorText = m_name + u": "_s + text;
    m_pDevice = nullptr;
    return false;
}

bool RecordingReader::ReadHeader() {
    std::string_view line;
    const Line kind = ReadLine(line);
    if (!m_pDevice) {
        return false;
    }
    if (line.starts_with(BYTE_ORDER_MARK)) {
        line.remove_prefix(BYTE_ORDER_MARK.size());
    }
    if (kind == Line::End || (line.empty() && AtEnd())) {
        return Fail(u"is empty"_s);
    }
    const QString fault = ReadColumns(line, m_columns);
    return fault.isEmpty() || Fail(fault);
}

std::optional<RecordedBearing> RecordingReader::Next() {
    return Read(true);
}

std::optional<RecordedBearing> RecordingReader::NextIfHere() {
    return Read(false);
}

void RecordingReader::Interrupt() {
    m_isInterrupted = true;
    m_stream.Interrupt();
}

void RecordingReader::Resume() {
    m_isInterrupted = false;
    m_stream.Resume();
}

std::optional<RecordedBearing> RecordingReader::Read(bool mayWait) {
    std::optional<RecordedBearing> bearing(std::in_place);
    if (m_isHeaderDue && m_pDevice && (mayWait || IsLineHere())) {
        m_isHeaderDue = false;
        ReadHeader();
    }
    while (m_pDevice && !m_isHeaderDue && (mayWait || IsLineHere())) {
        std::string_view line;
        const Line kind = ReadLine(line);
        if (kind == Line::End || (line.empty() && AtEnd())) {
            break;
        }
        if (kind == Line::TooLong) {
            Count(BadLine::TooLong, [] { return GetReasonText(BadLine::TooLong); });
        } else if (ParseRow(line, *bearing)) {
            ++m_rowCount;
            m_lastTimeMs = bearing->timeMs;
            return bearing;
        }
    }
    bearing.reset();
    return bearing;
}

/// Takes the next line from the buffer; it is valid until the next call. A line that is too long is cut, and
/// the next call skips its rest, so that a file without line ends fails at its header.
RecordingReader::Line RecordingReader::ReadLine(std::string_view& line) {
    while (m_skipping) {
        DropRest();
        if (m_skipping && !Fill()) {
            return Line::End;
        }
    }
    const char* newline = FindNewline();
    while (!newline && m_end - m_begin <= MAX_LINE_LENGTH && Fill()) {
        newline = FindNewline();
    }
    // The text before a read error may be an incomplete row, and that before an interruption is one.
    if (!m_pDevice || m_begin == m_end || (!newline && m_isInterrupted)) {
        return Line::End;
    }
    const char* const begin = m_buffer.data() + m_begin;
    const std::size_t size = newline ? static_cast<std::size_t>(newline - begin) : m_end - m_begin;
    line = {begin, size};
    ++m_lineNumber;
    if (size > MAX_LINE_LENGTH) {
        m_skipping = true;
        return Line::TooLong;
    }
    m_begin += newline ? size + 1 : size;
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return Line::Complete;
}

/// Whether the next line can be read without waiting.
bool RecordingReader::IsLineHere() {
    while (m_pDevice->isSequential()) {
        if (m_skipping) {
            DropRest();
        }
        const char* const begin = m_buffer.data() + m_begin;
        const char* const newline = m_skipping ? nullptr : FindNewline();
        // An empty line is valid only at the end, so it matters whether something follows.
        const bool isEmptyLast = newline && newline - begin <= 1 && newline + 1 == m_buffer.data() + m_end;
        if ((newline && !isEmptyLast) || m_end - m_begin > MAX_LINE_LENGTH) {
            break;
        }
        if (!m_pDevice->waitForReadyRead(0)) {
            return false;
        }
        if (!Fill()) {
            break;
        }
    }
    return true;
}

/// Drops what has been received of a line that was too long, up to its end.
void RecordingReader::DropRest() {
    const char* const newline = FindNewline();
    m_begin = newline ? static_cast<std::size_t>(newline + 1 - m_buffer.data()) : m_end;
    m_skipping = !newline;
}

const char* RecordingReader::FindNewline() const {
    return static_cast<const char*>(std::memchr(m_buffer.data() + m_begin, '\n', m_end - m_begin));
}

/// Moves the remaining bytes to the front of the buffer and reads more after them. False when there is
/// nothing more.
bool RecordingReader::Fill() {
    if (m_isInterrupted) {
        return false;
    }
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
    m_end -= m_begin;
    m_begin = 0;
    const qint64 count =
        m_pDevice->read(m_buffer.data() + m_end, static_cast<qint64>(m_buffer.size() - m_end));
    if (count < 0) {
        return Fail(u"cannot be read after line "_s + QString::number(m_lineNumber) + u": "_s +
                    m_pDevice->errorString());
    }
    if (count == 0 && m_received < m_size) {
        return Fail(u"became shorter while it was read"_s);
    }
    m_end += static_cast<std::size_t>(count);
    m_received += count;
    return count > 0;
}

bool RecordingReader::AtEnd() {
    return m_begin == m_end && !Fill();
}

bool RecordingReader::ParseRow(std::string_view line, RecordedBearing& bearing) {
    const char* position = line.data();
    const char* const end = position + line.size();
    for (const RecordingColumn* const column : m_columns) {
        const char* const field = position;
        if (const std::optional<BadLine> fault = ParseField(*column, position, end, bearing)) {
            return Reject(line, *column, field, *fault);
        }
        const bool isLast = column == m_columns.back();
        if ((position == end) != isLast) {
            return Reject(line, *column, field, BadLine::ColumnCount);
        }
        position += isLast ? 0 : 1;
    }
    return bearing.timeMs >= m_lastTimeMs ||
           Reject(line, RECORDING_COLUMNS.front(), line.data(), BadLine::TimeBackwards);
}

/// Counts a line that is not a valid row, by the fault of its field or, when that explains more, a fault of
/// the whole line.
bool RecordingReader::Reject(std::string_view line, const RecordingColumn& column, const char* field,
                             BadLine reason) {
    const auto columnCount = static_cast<std::size_t>(std::ranges::count(line, ',')) + 1;
    if (line.find('\0') != std::string_view::npos) {
        Count(BadLine::NulByte, [] { return GetReasonText(BadLine::NulByte); });
    } else if (columnCount != m_columns.size()) {
        Count(BadLine::ColumnCount,
              [&] { return GetReasonText(BadLine::ColumnCount) + u": "_s + QString::number(columnCount); });
    } else {
        Count(reason, [&] {
            const std::string_view rest = line.substr(static_cast<std::size_t>(field - line.data()));
            const std::string_view found = rest.substr(0, rest.find(','));
            return ToQString(column.name) + u": "_s + GetReasonText(reason) +
                   (found.empty() ? QString() : u": "_s + Quoted(found));
        });
    }
    return false;
}

/// Creates a text only while texts are kept: every line of a long recording may be bad.
template <class MakeText>
void RecordingReader::Count(BadLine reason, MakeText makeText) {
    ++m_badLineCounts[static_cast<std::size_t>(reason)];
    if (m_badLineTexts.size() < MAX_BAD_LINE_TEXTS) {
        m_badLineTexts += u"line "_s + QString::number(m_lineNumber) + u": "_s + makeText();
    }
}

bool RecordingReader::HasColumn(std::string_view name) const {
    return std::ranges::find(m_columns, name, &RecordingColumn::name) != m_columns.end();
}

double RecordingReader::GetProgress() const {
    const qint64 used = m_received - static_cast<qint64>(m_end - m_begin);
    // The file may grow while it is read.
    return m_size > 0 ? std::min(static_cast<double>(used) / static_cast<double>(m_size), 1.0) : 0.0;
}

quint64 RecordingReader::GetBadLineCount() const {
    return std::accumulate(m_badLineCounts.begin(), m_badLineCounts.end(), quint64{0});
}

quint64 RecordingReader::GetBadLineCount(BadLine reason) const {
    return m_badLineCounts[static_cast<std::size_t>(reason)];
}

QString RecordingReader::GetReasonText(BadLine reason) {
    // In the order of the reasons.
    static constexpr std::array<QStringView, 8> TEXTS{u"wrong number of columns",
                                                      u"required value missing",
                                                      u"not a number",
                                                      u"not a finite number",
                                                      u"out of range",
                                                      u"time runs backwards",
                                                      u"NUL byte",
                                                      u"line too long"};
    static_assert(TEXTS.size() == static_cast<std::size_t>(BadLine::COUNT));
    return TEXTS[static_cast<std::size_t>(reason)].toString();
}

} // namespace KvZANCommon
