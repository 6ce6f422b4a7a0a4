#pragma once

#include <QByteArray>
#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>

/// Tells the service manager that has started the program (systemd, service type "notify") what the program
/// does. Nothing happens in a program that no service manager has started.
///
/// Nothing waits for a service manager that does not read: a message for which there is no room is dropped.
/// That the program is ready, and that it ends, is then sent again with the next message.
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
    bool Send(const QByteArray& state);
    void SendSurely(const QByteArray& state);
    void SendStatus();

    const std::function<QString()> m_describeStatus;
    QTimer m_statusTimer;
    QTimer m_watchdogTimer;
    QString m_status;    // as sent last
    QByteArray m_unsent; // what could not be sent and goes with the next message
    bool m_isReady = false;
};
