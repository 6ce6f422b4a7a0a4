#include "zancommon/progresscalculator.h"

#include <QDeadlineTimer>
#include <QTimer>

#include <utility>

namespace {

constexpr int TICK_MS = 1000;

qint64 MonotonicMilliseconds() {
    return QDeadlineTimer::current().deadline();
}

} // namespace

ProgressCalculator::ProgressCalculator(QObject* parent, Clock clock)
    : QObject(parent)
    , m_pTimer(new QTimer(this))
    , m_clock(clock ? std::move(clock) : MonotonicMilliseconds) {
    // A coarse timer fires up to 50 ms early; the last tick would then be 99, and 100 would never be emitted.
    m_pTimer->setTimerType(Qt::PreciseTimer);
    connect(m_pTimer, &QTimer::timeout, this, &ProgressCalculator::SlotCalculateProgress);
}

ProgressCalculator::~ProgressCalculator() {
    disconnect(m_pTimer, nullptr, this, nullptr);
    Stop();
    delete m_pTimer;
}

void ProgressCalculator::Start(unsigned int durationMs) {
    if (durationMs == 0) {
        return;
    }
    Stop();
    m_duration = durationMs;
    m_start = m_clock();
    m_pTimer->start(TICK_MS);
}

void ProgressCalculator::Stop() {
    if (m_pTimer->isActive()) {
        m_pTimer->stop();
    }
}

void ProgressCalculator::SlotCalculateProgress() {
    if (m_duration == 0) {
        return;
    }
    // Computed in 32 bits: the product overflows after 11.9 hours.
    const auto elapsed = static_cast<quint32>(m_clock() - m_start);
    const quint32 percent = elapsed * 100U / m_duration;
    if (static_cast<qint32>(percent) > 100) {
        Stop();
        return;
    }
    Q_EMIT Progress(percent);
}
