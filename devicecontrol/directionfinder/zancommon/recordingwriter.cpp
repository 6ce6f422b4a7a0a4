#include "zancommon/recordingwriter.h"

#include <QFileInfo>

#include <array>
#include <charconv>
#include <string_view>

using namespace Qt::StringLiterals;

namespace KvZANCommon {

namespace {

constexpr std::size_t MAX_NUMBER_LENGTH = 400; // the smallest double has 324 decimals

void Append(QByteArray& line, std::string_view text) {
    line.append(text.data(), static_cast<qsizetype>(text.size()));
}

void AppendValue(QByteArray& line, const RecordingColumn& column, double value) {
    std::array<char, MAX_NUMBER_LENGTH> buffer{};
    char* const begin = buffer.data();
    char* const end = begin + buffer.size();
    const char* const last =
        column.decimals == RecordingColumn::AS_NEEDED
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

} // namespace

bool RecordingWriter::Open(const QString& fileName) {
    m_fileName = fileName;
    m_lastTimeMs = 0;
    m_file.reset();
    // Renaming a new file over a device would replace the device.
    const QFileInfo existing(fileName);
    if (existing.exists() && !existing.isFile()) {
        return Fail(u"is not a regular file"_s);
    }
    m_file.emplace(fileName);
    if (!m_file->open(QIODevice::WriteOnly)) {
        const QString reason = m_file->errorString();
        m_file.reset();
        return Fail(u"cannot be written: "_s + reason);
    }
    m_line.clear();
    for (const RecordingColumn& column : RECORDING_COLUMNS) {
        Append(m_line, column.name);
        m_line += ',';
    }
    return WriteLine();
}

bool RecordingWriter::Write(const RecordedBearing& bearing) {
    if (!m_file) {
        return Fail(u"is not open"_s);
    }
    if (bearing.timeMs < m_lastTimeMs) {
        return Fail(u"time runs backwards: "_s + QString::number(bearing.timeMs));
    }
    m_line.clear();
    for (const RecordingColumn& column : RECORDING_COLUMNS) {
        if (const std::optional<double> value = ValueOf(bearing, column)) {
            if (!column.Holds(*value)) {
                return Fail(
                    QString::fromLatin1(column.name.data(), static_cast<qsizetype>(column.name.size())) +
                    u": out of range: "_s + QString::number(*value));
            }
            AppendValue(m_line, column, *value);
        }
        m_line += ',';
    }
    m_lastTimeMs = bearing.timeMs;
    return WriteLine();
}

bool RecordingWriter::Commit() {
    if (!m_file) {
        return Fail(u"is not open"_s);
    }
    // QSaveFile would rename the file even when its last buffer cannot be written, so the buffer is flushed
    // here. On a full disk the first call may write a part; the second one writes the rest or gets the error.
    const bool isComplete = (m_file->flush() || m_file->flush()) && m_file->commit();
    const QString reason = m_file->errorString();
    m_file.reset();
    return isComplete || Fail(u"cannot be written: "_s + reason);
}

bool RecordingWriter::Fail(const QString& text) {
    m_errorText = m_fileName + u": "_s + text;
    return false;
}

/// Writes the collected fields, each followed by a comma, as a line.
bool RecordingWriter::WriteLine() {
    m_line.back() = '\n';
    return m_file->write(m_line) == m_line.size() || Fail(u"cannot be written: "_s + m_file->errorString());
}

} // namespace KvZANCommon
