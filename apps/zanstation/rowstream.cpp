#include "zanstation/rowstream.h"

#include "zancommon/recordingline.h"
#include "zanstation/signalwatcher.h"

#include <cerrno>
#include <climits>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
namespace RecordingLine = KvZANCommon::RecordingLine;

RowStream::RowStream(std::span<const KvZANCommon::RecordingColumn> further)
    : m_further(further)
    , m_stream(STDOUT_FILENO) {
    RecordingLine::AppendHeader(m_waiting, KvZANCommon::RECORDING_COLUMNS, further);
}

bool RowStream::Write(const KvZANCommon::RecordedBearing& row) {
    QByteArray line;
    m_errorText = RecordingLine::AppendRow(line, row, RecordingLine::Precision::Columns,
                                           KvZANCommon::RECORDING_COLUMNS, m_further);
    // A pipe takes so many bytes as a whole or not at all.
    if (!m_errorText.isEmpty() || (m_waiting.size() + line.size() > PIPE_BUF && !Flush())) {
        return false;
    }
    m_waiting += line;
    return true;
}

bool RowStream::Flush() {
    constexpr std::chrono::milliseconds PATIENCE(200);
    const std::string_view lines(m_waiting.constData(), static_cast<std::size_t>(m_waiting.size()));
    std::size_t written = m_stream.Write(lines, PATIENCE);
    if (written < lines.size() && m_stream.GetError() == EWOULDBLOCK) {
        SignalWatcher::LetSignalsEndTheProgram();
        written += m_stream.Write(lines.substr(written), StandardStream::FOREVER);
    }
    if (written == lines.size()) {
        m_waiting.clear();
        return true;
    }
    m_hasNoReader = m_stream.GetError() == EPIPE;
    if (!m_hasNoReader) {
        m_errorText = u"standard output cannot be written: "_s + qt_error_string(m_stream.GetError());
        TakeBack(written);
    }
    m_waiting.clear();
    return false;
}

/// Of a row that is there only in part (the disk is full), a file keeps nothing.
void RowStream::TakeBack(std::size_t written) const {
    struct stat status {};
    const qsizetype whole = m_waiting.first(static_cast<qsizetype>(written)).lastIndexOf('\n') + 1;
    const off_t part = static_cast<off_t>(written) - whole;
    if (part > 0 && ::fstat(STDOUT_FILENO, &status) == 0 && S_ISREG(status.st_mode)) {
        [[maybe_unused]] const int result = ::ftruncate(STDOUT_FILENO, status.st_size - part);
    }
}
