#include "zancommon/linereader.h"

#include <QFileInfo>
#include <QIODevice>

#include <algorithm>
#include <cstring>

using namespace Qt::StringLiterals;

namespace KvZANCommon {

namespace {

/// Room for the largest datagram behind the longest line.
constexpr std::size_t BUFFER_SIZE = 256UL * 1024;

QString CannotBeOpened(const QString& reason) {
    return u"cannot be opened: "_s + reason;
}

} // namespace

LineReader::LineReader()
    : m_buffer(BUFFER_SIZE) {}

bool LineReader::OpenFile(const QString& name) {
    Close();
    m_file.setFileName(name);
    if (QFileInfo(name).isDir()) {
        return Fail(u"is a directory"_s);
    }
    // Unbuffered: the reader has its own buffer.
    if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return Fail(CannotBeOpened(m_file.errorString()));
    }
    Begin(&m_file, m_file.size());
    return true;
}

bool LineReader::OpenStream(const QString& name) {
    Close();
    return BeginStream(m_stream.Open(name));
}

bool LineReader::OpenSerialLine(const QString& address) {
    Close();
    const bool isOpen = BeginStream(m_stream.OpenSerialLine(address));
    m_skipping = isOpen;
    return isOpen;
}

bool LineReader::Adopt(int descriptor) {
    Close();
    return BeginStream(m_stream.Adopt(descriptor));
}

bool LineReader::Open(QIODevice& device) {
    Close();
    if (!device.isReadable()) {
        return Fail(u"is not open for reading"_s);
    }
    Begin(&device, device.isSequential() ? 0 : device.size() - device.pos());
    return true;
}

void LineReader::Close() {
    Begin(nullptr, 0);
    m_file.close();
    m_stream.close();
}

void LineReader::Begin(QIODevice* device, qint64 size) {
    m_pDevice = device;
    m_errorText.clear();
    m_begin = 0;
    m_end = 0;
    m_size = size;
    m_received = 0;
    m_skipping = false;
    m_hasLineEnd = false;
    m_lineNumber = 0;
}

bool LineReader::BeginStream(bool isOpen) {
    if (!isOpen) {
        return Fail(CannotBeOpened(m_stream.errorString()));
    }
    Begin(&m_stream, 0);
    return true;
}

bool LineReader::Fail(const QString& text) {
    m_errorText = text;
    m_pDevice = nullptr;
    return false;
}

void LineReader::Interrupt() {
    m_isInterrupted = true;
    m_stream.Interrupt();
}

void LineReader::Resume() {
    m_isInterrupted = false;
    m_stream.Resume();
}

/// A line that is too long is cut, and the next call skips its rest, so that a file without line ends fails
/// at its header.
LineReader::Result LineReader::Next(std::string_view& line) {
    while (m_skipping) {
        DropRest();
        if (m_skipping && !Fill()) {
            return Result::End;
        }
    }
    const char* newline = FindNewline();
    while (!newline && m_end - m_begin <= MAX_LENGTH && Fill()) {
        newline = FindNewline();
    }
    // The text before a read error may be an incomplete line, and that before an interruption is one.
    if (!m_pDevice || m_begin == m_end || (!newline && m_isInterrupted)) {
        return Result::End;
    }
    const char* const begin = m_buffer.data() + m_begin;
    const std::size_t size = newline ? static_cast<std::size_t>(newline - begin) : m_end - m_begin;
    line = {begin, size};
    ++m_lineNumber;
    if (size > MAX_LENGTH) {
        m_skipping = true;
        m_hasLineEnd = false;
        return Result::TooLong;
    }
    m_hasLineEnd = newline != nullptr;
    m_begin += newline ? size + 1 : size;
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return Result::Complete;
}

bool LineReader::IsHere() {
    while (m_pDevice && m_pDevice->isSequential()) {
        if (m_skipping) {
            DropRest();
        }
        const char* const begin = m_buffer.data() + m_begin;
        const char* const newline = m_skipping ? nullptr : FindNewline();
        // An empty line may be the last one, so it matters whether something follows.
        const bool isEmptyLast = newline && newline - begin <= 1 && newline + 1 == m_buffer.data() + m_end;
        if ((newline && !isEmptyLast) || m_end - m_begin > MAX_LENGTH) {
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
void LineReader::DropRest() {
    const char* const newline = FindNewline();
    m_begin = newline ? static_cast<std::size_t>(newline + 1 - m_buffer.data()) : m_end;
    m_skipping = !newline;
}

const char* LineReader::FindNewline() const {
    return static_cast<const char*>(std::memchr(m_buffer.data() + m_begin, '\n', m_end - m_begin));
}

/// Moves the remaining bytes to the front of the buffer and reads more after them. False when there is
/// nothing more.
bool LineReader::Fill() {
    if (m_isInterrupted || !m_pDevice) {
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

bool LineReader::IsAtEnd() {
    return m_begin == m_end && !Fill();
}

double LineReader::GetProgress() const {
    const qint64 used = m_received - static_cast<qint64>(m_end - m_begin);
    // The file may grow while it is read.
    return m_size > 0 ? std::min(static_cast<double>(used) / static_cast<double>(m_size), 1.0) : 0.0;
}

} // namespace KvZANCommon
