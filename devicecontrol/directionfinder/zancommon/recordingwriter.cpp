#include "zancommon/recordingwriter.h"

#include "zancommon/recordingline.h"

#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace KvZANCommon {

bool RecordingWriter::Open(const QString& fileName, std::span<const RecordingColumn> further) {
    m_fileName = fileName;
    m_further = further;
    m_latestTimeMs = 0;
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
    RecordingLine::AppendHeader(m_line, RECORDING_COLUMNS, m_further);
    return WriteLine();
}

bool RecordingWriter::Write(const RecordedBearing& bearing) {
    if (!m_file) {
        return Fail(u"is not open"_s);
    }
    if (IsTooEarly(bearing.timeMs, m_latestTimeMs)) {
        return Fail(u"time runs backwards: "_s + QString::number(bearing.timeMs));
    }
    m_line.clear();
    const QString fault = RecordingLine::AppendRow(m_line, bearing, RecordingLine::Precision::Columns,
                                                   RECORDING_COLUMNS, m_further);
    if (!fault.isEmpty()) {
        return Fail(fault);
    }
    m_latestTimeMs = std::max(m_latestTimeMs, bearing.timeMs);
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

bool RecordingWriter::WriteLine() {
    if (m_file->write(m_line) == m_line.size()) {
        return true;
    }
    m_file->flush(); // of lines that were written in part the rest tells why
    return Fail(u"cannot be written: "_s + m_file->errorString());
}

} // namespace KvZANCommon
