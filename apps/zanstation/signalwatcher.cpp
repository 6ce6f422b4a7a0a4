#include "zanstation/signalwatcher.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr std::array SIGNALS{SIGINT, SIGTERM, SIGHUP};

// A signal handler may do little more than write to a descriptor; the event loop reads from the other end.
std::array<int, 2> sockets{-1, -1};

sigset_t watched{}; // the signals that were not ignored

void OnSignal(int signal) {
    const int savedErrno = errno;
    const char byte = static_cast<char>(signal);
    [[maybe_unused]] const ssize_t written = ::write(sockets[0], &byte, 1);
    errno = savedErrno;
}

/// Whether the program was started to survive the end of its terminal, as by nohup.
bool IsHangupIgnored() {
    struct sigaction action {};
    return ::sigaction(SIGHUP, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

int OpenSockets() {
    return ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets.data()) == 0
               ? sockets[1]
               : -1;
}

} // namespace

SignalWatcher::SignalWatcher()
    : m_notifier(OpenSockets(), QSocketNotifier::Read) {
    connect(&m_notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        if (::read(sockets[1], &byte, 1) == 1) {
            Q_EMIT Interrupted(byte);
        }
    });
    for (const int signal : SIGNALS) {
        if (signal != SIGHUP || !IsHangupIgnored()) {
            sigaddset(&watched, signal);
            std::signal(signal, OnSignal);
        }
    }
}

SignalWatcher::~SignalWatcher() {
    m_notifier.setEnabled(false); // signals are kept in the socket from here on
}

void SignalWatcher::LetSignalsEndTheProgram() {
    for (const int signal : SIGNALS) {
        if (sigismember(&watched, signal) == 1) {
            std::signal(signal, SIG_DFL);
        }
    }
    char byte = 0;
    if (::read(sockets[1], &byte, 1) == 1) {
        std::raise(byte);
    }
}
