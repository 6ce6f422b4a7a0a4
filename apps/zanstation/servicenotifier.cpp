#include "zanstation/servicenotifier.h"

#include <QByteArray>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr const char* SOCKET_VARIABLE = "NOTIFY_SOCKET";

bool IsService() {
    return !qEnvironmentVariableIsEmpty(SOCKET_VARIABLE);
}

/// Sends a message to the service manager. False when it was not taken. `sd_notify` would wait for room.
bool Post(const QByteArray& message) {
    const QByteArray name = qgetenv(SOCKET_VARIABLE);
    sockaddr_un address{};
    if (name.isEmpty() || static_cast<std::size_t>(name.size()) >= sizeof(address.sun_path)) {
        return false;
    }
    address.sun_family = AF_UNIX;
    std::ranges::copy(name, address.sun_path);
    if (name.startsWith('@')) {
        address.sun_path[0] = '\0'; // an abstract socket
    }
    const std::size_t length = offsetof(sockaddr_un, sun_path) + static_cast<std::size_t>(name.size());
    const int sender = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const bool isSent =
        ::sendto(sender, message.constData(), static_cast<std::size_t>(message.size()), MSG_NOSIGNAL,
                 reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(length)) >= 0;
    ::close(sender);
    return isSent;
}

/// The time that the service manager allows between two signs of life; nothing when it does not watch this
/// process.
std::optional<std::chrono::microseconds> GetWatchdogTime() {
    std::uint64_t microseconds = 0;
    return ::sd_watchdog_enabled(0, &microseconds) > 0
               ? std::optional(std::chrono::microseconds(microseconds))
               : std::nullopt;
}

} // namespace

ServiceNotifier::ServiceNotifier(std::function<QString()> describeStatus)
    : m_describeStatus(std::move(describeStatus)) {
    m_watchdogTimer.setTimerType(Qt::PreciseTimer);
    m_watchdogTimer.callOnTimeout([this] { Send("WATCHDOG=1"); });
    m_statusTimer.callOnTimeout([this] { SendStatus(); });
}

ServiceNotifier::~ServiceNotifier() {
    TellStopping();
    if (!m_unsent.isEmpty()) {
        Post(m_unsent);
    }
}

void ServiceNotifier::TellReady() {
    if (!IsService()) {
        return;
    }
    m_isReady = true;
    SendSurely("READY=1");
    SendStatus();
    m_statusTimer.start(STATUS_INTERVAL);
    if (const std::optional<std::chrono::microseconds> time = GetWatchdogTime()) {
        m_watchdogTimer.start(std::chrono::duration_cast<std::chrono::milliseconds>(*time / 2));
    }
}

void ServiceNotifier::TellStopping() {
    if (std::exchange(m_isReady, false)) {
        m_statusTimer.stop();
        m_watchdogTimer.stop();
        SendSurely("STOPPING=1");
    }
}

/// Whether the service manager takes it makes no difference to the work of the program.
bool ServiceNotifier::Send(const QByteArray& state) {
    const bool isSent = Post(m_unsent + state);
    if (isSent) {
        m_unsent.clear();
    }
    return isSent;
}

void ServiceNotifier::SendSurely(const QByteArray& state) {
    if (!Send(state)) {
        m_unsent += state + '\n';
    }
}

void ServiceNotifier::SendStatus() {
    // A line break would begin another assignment of the protocol.
    const QString status = m_describeStatus().simplified();
    if (status != m_status && Send("STATUS=" + status.toUtf8())) {
        m_status = status;
    }
}
