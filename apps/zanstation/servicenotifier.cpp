#include "zanstation/servicenotifier.h"

#include <QByteArray>

#include <chrono>
#include <cstdint>
#include <optional>
#include <systemd/sd-daemon.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Whether the service manager takes it makes no difference to the work of the program.
void Send(const QByteArray& state) {
    ::sd_notify(0, state.constData());
}

bool IsService() {
    return !qEnvironmentVariableIsEmpty("NOTIFY_SOCKET");
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
    m_watchdogTimer.callOnTimeout([] { Send("WATCHDOG=1"); });
    m_statusTimer.callOnTimeout([this] { SendStatus(); });
}

ServiceNotifier::~ServiceNotifier() {
    TellStopping();
}

void ServiceNotifier::TellReady() {
    if (!IsService()) {
        return;
    }
    m_isReady = true;
    Send("READY=1");
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
        Send("STOPPING=1");
    }
}

void ServiceNotifier::SendStatus() {
    // A line break would begin another assignment of the protocol.
    const QString status = m_describeStatus().simplified();
    if (std::exchange(m_status, status) != status) {
        Send("STATUS=" + status.toUtf8());
    }
}
