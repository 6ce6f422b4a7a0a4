#pragma once

#include <QObject>
#include <QSocketNotifier>

/// Turns the signals that end a program (SIGINT, SIGTERM, SIGHUP) into a Qt signal on the event loop, so
/// that the program can end in its own order. A SIGHUP that is ignored stays ignored. One in a program.
class SignalWatcher final : public QObject {
    Q_OBJECT

public:
    SignalWatcher();
    SignalWatcher(const SignalWatcher&) = delete;
    SignalWatcher& operator=(const SignalWatcher&) = delete;
    /// From here on the signals wait: the program is at its end, which nothing shall cut short.
    ~SignalWatcher() override;
    /// From here on they end the program again, also those that have waited. To be called when there is
    /// nothing left that must not be cut short; without a watcher before it does nothing.
    static void LetSignalsEndTheProgram();

Q_SIGNALS:
    void Interrupted(int signal);

private:
    QSocketNotifier m_notifier;
};
