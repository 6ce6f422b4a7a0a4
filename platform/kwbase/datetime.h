#pragma once

#include "zanplatform_export.h"

#include <QString>

namespace Tolm {

/// A time stamp as the drivers and the tree carry it: milliseconds since 1970-01-01 00:00:00 UTC.
class ZANPLATFORM_EXPORT DateTime {
public:
    explicit DateTime(unsigned long long timeStamp)
        : m_timeStamp(timeStamp) {}

    [[nodiscard]] unsigned long long GetTimeStamp() const { return m_timeStamp; }

    /// Formats the time in UTC with the format letters of `QDateTime::toString` ("hhmmss"). UTC, because
    /// bearings of several stations are compared. Empty for a time that a calendar cannot show.
    [[nodiscard]] QString toString(const QString& format) const;

private:
    unsigned long long m_timeStamp;
};

} // namespace Tolm
