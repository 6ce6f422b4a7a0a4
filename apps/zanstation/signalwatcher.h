#pragma once

#include <QObject>
#include <QSocketNotifier>

/// Turns the signals that end a program (SIGINT, SIGTERM, SIGHUP) into a Qt signal in the event loop, so that
/// the program can end in an orderly way. A SIGHUP that is ignored stays ignored. One object per program.
class SignalWatcher final : public QObject {
    Q_OBJECT

public:
    SignalWatcher();
    SignalWatcher(const SignalWatcher&) = delete;
    SignalWatcher& operator=(const SignalWatcher&) = delete;
    /// From here on the signals wait, so that they do not interrupt the end of the program.
    ~SignalWatcher() override;
    /// From here on signals end the program again, also those that have waited. Call it when nothing is left
    /// that must not be interrupted. Does nothing when there was no watcher.
    static void LetSignalsEndTheProgram();

Q_SIGNALS:
    void Interrupted(int signal);

private:
    QSocketNotifier m_notifier;
};
