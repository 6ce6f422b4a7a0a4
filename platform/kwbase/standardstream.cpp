#include "kwbase/standardstream.h"

#include <QByteArray>
#include <QDeadlineTimer>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int OpenAgain(int descriptor) {
    struct stat status {};
    const bool canHoldUp =
        fstat(descriptor, &status) == 0 && (S_ISFIFO(status.st_mode) || isatty(descriptor) != 0);
    const QByteArray name = "/proc/self/fd/" + QByteArray::number(descriptor);
    const int again =
        canHoldUp ? open(name.constData(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK) : -1;
    return again >= 0 ? again : descriptor;
}

} // namespace

StandardStream::StandardStream(int descriptor)
    : m_descriptor(OpenAgain(descriptor)) {}

std::size_t StandardStream::Write(std::string_view text, std::chrono::milliseconds patience) {
    const QDeadlineTimer deadline(patience.count());
    std::size_t written = 0;
    while (written < text.size()) {
        if (!WaitForRoom(static_cast<int>(deadline.remainingTime()))) {
            m_error = EWOULDBLOCK;
            break;
        }
        // A pipe that has room takes this many bytes without waiting.
        const std::string_view next = text.substr(written, PIPE_BUF);
        errno = EIO; // for a device that takes nothing without an error
        const ssize_t taken = write(m_descriptor, next.data(), next.size());
        if (taken > 0) {
            written += static_cast<std::size_t>(taken);
        } else if (errno != EINTR && (errno != EAGAIN || deadline.hasExpired())) {
            m_error = errno;
            break;
        }
    }
    return written;
}

bool StandardStream::WaitForRoom(int milliseconds) const {
    pollfd stream{m_descriptor, POLLOUT, 0};
    return poll(&stream, 1, milliseconds) > 0 || (milliseconds != 0 && errno == EINTR);
}
