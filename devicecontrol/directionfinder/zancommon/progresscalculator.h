#pragma once

#include "zancommon_export.h"

#include <QObject>

#include <functional>

class QTimer;

/// Emits the progress of an operation in percent once a second, computed from its expected duration. Ticks
/// come at whole seconds from the start, never early. Needs an event loop; belongs to the thread that it
/// lives in.
class ZANCOMMON_EXPORT ProgressCalculator : public QObject {
    Q_OBJECT

public:
    /// Milliseconds from a fixed point in the past; never goes back. Called on the thread of the calculator.
    using Clock = std::function<qint64()>;

    /// \param clock measures the time; without one the system's monotonic clock is used
    explicit ProgressCalculator(QObject* parent, Clock clock = {});
    ~ProgressCalculator() override;

    /// Begins a calculation and ends a running one; the first signal comes after a second. 0 is ignored.
    void Start(unsigned int durationMs);

Q_SIGNALS:
    /// Emitted with the part of the duration that has passed, 0 to 100, rounded down. The calculation ends
    /// without a signal when the part is above 100, so that 100 may never be emitted. After 11.9 hours the
    /// calculation overflows and begins at 0 again.
    void Progress(uint percent);

private Q_SLOTS:
    ZANCOMMON_NO_EXPORT void SlotCalculateProgress();

private:
    ZANCOMMON_NO_EXPORT void Stop();

    quint32 m_duration = 0; // milliseconds
    QTimer* m_pTimer;       // owned as a child
    qint64 m_start = 0;     // time of `m_clock` at the start
    Clock m_clock;
};
