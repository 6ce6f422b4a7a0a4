#pragma once

#include <QObject>
#include <QSocketNotifier>

/// Turns the signals that end a program (SIGINT, SIGTERM, SIGHUP) into a Qt signal on the event loop, so
/// that the program can end in its own order. A SIGHUP that is ignored stays ignored. One at a time; to be
/// made before further threads are started, and destroyed after they have ended.
class SignalWatcher final : public QObject {
    Q_OBJECT

public:
    SignalWatcher();
    SignalWatcher(const SignalWatcher&) = delete;
    SignalWatcher& operator=(const SignalWatcher&) = delete;
    /// From here on the signals are ignored: the program is at its end, which nothing shall cut short.
    ~SignalWatcher() override;

Q_SIGNALS:
    void Interrupted(int signal);

private:
    QSocketNotifier m_notifier;
};
