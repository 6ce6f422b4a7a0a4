#pragma once

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <chrono>

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

/// A loop that turns over and over wakes up thousands of times in the span of `CountWakeUps`.
inline constexpr int FEW_WAKE_UPS = 100;

/// How often the event loop wakes up in a span of time in which nothing happens. The span is what is
/// measured: "no busy wait" means few wake-ups in it.
inline int CountWakeUps() {
    constexpr std::chrono::milliseconds SPAN{300};
    int wakeUps = 0;
    QEventLoop loop;
    const auto connection = QObject::connect(QAbstractEventDispatcher::instance(),
                                             &QAbstractEventDispatcher::awake, [&wakeUps] { ++wakeUps; });
    QTimer::singleShot(SPAN, &loop, &QEventLoop::quit);
    loop.exec();
    QObject::disconnect(connection);
    return wakeUps;
}
