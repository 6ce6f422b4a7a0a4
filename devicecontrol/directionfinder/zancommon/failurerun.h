#pragma once

#include <QString>

#include <utility>

/// A run of equal failures of something that is used repeatedly. Only its beginning and its end are reported,
/// so that a full disk does not flood the trace.
class FailureRun {
public:
    /// Notes a failure. True when it is not the same as the one before.
    bool Add(const QString& text) { return std::exchange(m_text, text) != text; }
    /// Notes a success. True when there were failures before it.
    bool End() { return !std::exchange(m_text, {}).isEmpty(); }
    /// The failure that lasts; empty after a success.
    [[nodiscard]] const QString& GetText() const { return m_text; }

private:
    QString m_text;
};
