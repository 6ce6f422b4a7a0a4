#include "connections/serialportinterface.h"

#include "connections/iinterfacecallback.h"
#include "kwbase/tracesource.h"

#include <QDeadlineTimer>

using namespace Qt::StringLiterals;

namespace {

constexpr TraceSource TRACE(u"connections\\serialportinterface");

} // namespace

IInterface::~IInterface() = default;

SerialPortInterface::SerialPortInterface(IInterfaceCallback& callback)
    : m_callback(callback) {
    m_port.setReadBufferSize(MAX_WAITING_BYTES);
}

SerialPortInterface::~SerialPortInterface() {
    SerialPortInterface::Finish();
}

void SerialPortInterface::Finish() {
    // Closing the port would discard data that `Write` has accepted. The most that can wait takes 4.3 s at
    // 9600 baud; a line that has stopped, or is very slow, must not delay the program's end.
    constexpr int STALLED_MS = 1000;
    constexpr int AT_MOST_MS = 5000;
    const QDeadlineTimer deadline(AT_MOST_MS);
    while (m_port.isOpen() && m_port.bytesToWrite() > 0 && !deadline.hasExpired() &&
           m_port.waitForBytesWritten(STALLED_MS)) {
    }
    Close();
}

void SerialPortInterface::Close() {
    if (m_port.isOpen()) {
        m_lost = m_port.bytesToWrite();
        m_port.close();
    }
}

qint64 SerialPortInterface::GetUnsentCount() const {
    return m_port.isOpen() ? m_port.bytesToWrite() : m_lost;
}

// Each function calls its callback last, because it may delete this object. The calls are queued, so that
// none of the port's own functions is running then.
void SerialPortInterface::Start() {
    connect(&m_port, &QSerialPort::readyRead, this, &SerialPortInterface::DiscardInput, Qt::QueuedConnection);
    connect(&m_port, &QSerialPort::bytesWritten, this, &SerialPortInterface::TellWritten,
            Qt::QueuedConnection);
    connect(&m_port, &QSerialPort::errorOccurred, this, &SerialPortInterface::Fail, Qt::QueuedConnection);
    QMetaObject::invokeMethod(
        this, [this] { m_callback.OnOpen(); }, Qt::QueuedConnection);
}

bool SerialPortInterface::IsReadyToWrite(const char* data, int length) const {
    return data && length >= 0 && m_port.isOpen() && m_port.bytesToWrite() + length <= MAX_WAITING_BYTES;
}

bool SerialPortInterface::Write(const char* data, int length) {
    return IsReadyToWrite(data, length) && m_port.write(data, length) == length;
}

void SerialPortInterface::DiscardInput() {
    if (!m_port.readAll().isEmpty()) {
        m_callback.OnRead();
    }
}

void SerialPortInterface::TellWritten() {
    if (m_port.isOpen() && m_port.bytesToWrite() == 0) {
        m_callback.OnWritten();
    }
}

void SerialPortInterface::Fail() {
    // Several errors may have been queued. A port that stays open after its device has gone reports errors
    // without end.
    if (!m_port.isOpen()) {
        return;
    }
    TRACE.Information([this] { return m_port.portName() + u": "_s + m_port.errorString(); });
    Close();
    m_callback.OnError();
}
