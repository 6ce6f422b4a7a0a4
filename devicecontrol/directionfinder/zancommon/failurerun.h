#pragma once

#include <QString>

#include <utility>

/// A run of equal failures of something that is used again and again. Only its begin and its end are told, so
/// that a full disk does not flood the trace.
class FailureRun {
public:
    /// True when the failure is another one than the last time.
    bool Add(const QString& text) { return std::exchange(m_text, text) != text; }
    /// Notes a success. True when there were failures before it.
    bool End() { return !std::exchange(m_text, {}).isEmpty(); }

private:
    QString m_text;
};
