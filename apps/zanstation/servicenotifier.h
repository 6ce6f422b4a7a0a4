#pragma once

#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>

/// Tells the service manager that has started the program (systemd, service type "notify") what the program
/// does. Nothing happens in a program that no service manager has started.
///
/// Everything is sent from the event loop of the thread that the object lives in. In particular, a loop that
/// hangs does not feed the watchdog, and the service manager starts the program again.
class ServiceNotifier final {
public:
    /// How often the status is determined.
    static constexpr std::chrono::seconds STATUS_INTERVAL{2};

    /// \param describeStatus what the program does at the moment, as one line; called from the event loop
    explicit ServiceNotifier(std::function<QString()> describeStatus);
    ServiceNotifier(const ServiceNotifier&) = delete;
    ServiceNotifier& operator=(const ServiceNotifier&) = delete;
    /// As `TellStopping`, if that was not called.
    ~ServiceNotifier();

    /// The program is ready for its work. From now on the status is sent whenever it has changed, and the
    /// watchdog is fed twice in the time that the service manager allows.
    void TellReady();
    /// The program ends. From now on nothing else is sent.
    void TellStopping();

private:
    void SendStatus();

    const std::function<QString()> m_describeStatus;
    QTimer m_statusTimer;
    QTimer m_watchdogTimer;
    QString m_status; // as sent last
    bool m_isReady = false;
};
