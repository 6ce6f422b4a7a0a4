#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

/// Runs the event loop until a condition holds. False when it still does not after far longer than any test
/// needs.
template <class Condition>
bool SpinUntil(Condition condition) {
    constexpr qint64 DEADLINE_MS = 30'000;
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > DEADLINE_MS) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}
