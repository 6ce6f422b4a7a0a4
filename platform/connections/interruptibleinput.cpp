#include "connections/interruptibleinput.h"

#include "connections/inputfile.h"
#include "connections/serialline.h"

#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QSerialPort>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

InterruptibleInput::InterruptibleInput() = default;

InterruptibleInput::~InterruptibleInput() {
    InterruptibleInput::close();
}

bool InterruptibleInput::IsStream(const QString& name) {
    const QFileInfo info(name);
    return name == STANDARD_INPUT || (info.exists() && !info.isFile() && !info.isDir());
}

bool InterruptibleInput::Open(const QString& name) {
    close();
    // Without O_NONBLOCK, opening a FIFO would wait for its writer and could not be interrupted.
    if (!Begin(name == STANDARD_INPUT ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                      : ::open(QFile::encodeName(name).constData(),
                                               O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC))) {
        return false;
    }
    // Standard input may be a file, too: keeps outputs from writing to it.
    if (name == STANDARD_INPUT && QFileInfo(QStringLiteral("/proc/self/fd/0")).isFile()) {
        m_lock = ::open("/proc/self/fd/0", O_RDONLY | O_CLOEXEC);
    }
    InputFile::Lock(name == STANDARD_INPUT ? m_lock : m_stream);
    return true;
}

bool InterruptibleInput::OpenSerialLine(const QString& address) {
    close();
    const QEventLoop loop; // Qt's port wants its thread to have a dispatcher of events, although none is used
    m_serialLine = std::make_unique<QSerialPort>();
    QString reason;
    if (!SerialLine::Open(*m_serialLine, address, reason)) {
        m_serialLine.reset();
        setErrorString(reason);
        return false;
    }
    m_serialLine->moveToThread(nullptr); // else an event loop would read what is to be read here
    return Begin(::fcntl(m_serialLine->handle(), F_DUPFD_CLOEXEC, 0));
}

bool InterruptibleInput::Adopt(int descriptor) {
    close();
    return Begin(descriptor);
}

/// \param descriptor below 0 when it could not be opened, for the reason in errno
bool InterruptibleInput::Begin(int descriptor) {
    m_stream = descriptor;
    m_interrupt = m_stream < 0 ? -1 : ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (m_interrupt < 0) {
        const QString reason = qt_error_string(errno);
        close();
        setErrorString(reason);
        return false;
    }
    int type = 0;
    socklen_t size = sizeof type;
    m_hasDatagrams = ::getsockopt(m_stream, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_DGRAM;
    return open(ReadOnly | Unbuffered);
}

void InterruptibleInput::close() {
    QIODevice::close();
    for (int* const descriptor : {&m_stream, &m_lock, &m_interrupt}) {
        if (*descriptor >= 0) {
            ::close(*descriptor);
            *descriptor = -1;
        }
    }
    m_serialLine.reset();
}

void InterruptibleInput::Interrupt() const {
    ::eventfd_write(m_interrupt, 1);
}

void InterruptibleInput::Resume() const {
    eventfd_t count = 0;
    ::eventfd_read(m_interrupt, &count);
}

bool InterruptibleInput::waitForReadyRead(int milliseconds) {
    std::array<pollfd, 2> descriptors{{{m_stream, POLLIN, 0}, {m_interrupt, POLLIN, 0}}};
    int count = 0;
    do {
        count = ::poll(descriptors.data(), descriptors.size(), milliseconds);
    } while (count < 0 && errno == EINTR);
    return count != 0;
}

qint64 InterruptibleInput::readData(char* data, qint64 size) {
    for (;;) {
        waitForReadyRead(-1);
        pollfd interrupt{m_interrupt, POLLIN, 0};
        if (::poll(&interrupt, 1, 0) != 0) {
            return 0;
        }
        // A line end may have to be added to a datagram; an empty one is an empty line, not the end.
        const qint64 added = m_hasDatagrams ? 1 : 0;
        const ssize_t count = ::read(m_stream, data, static_cast<std::size_t>(size - added));
        if (count >= 0 && m_hasDatagrams && (count == 0 || data[count - 1] != '\n')) {
            data[count] = '\n';
            return count + 1;
        }
        if (count >= 0) {
            return count;
        }
        if (errno != EAGAIN && errno != EINTR) {
            setErrorString(qt_error_string(errno));
            return -1;
        }
    }
}

qint64 InterruptibleInput::writeData(const char* /*data*/, qint64 /*size*/) {
    return -1;
}
