#pragma once

#include "zanplatform_export.h"

#include <QString>

/// What the library asks of the operating system. The real one answers on any thread.
class ZANPLATFORM_EXPORT ITolmOS {
public:
    ITolmOS() = default;
    ITolmOS(const ITolmOS&) = delete;
    ITolmOS& operator=(const ITolmOS&) = delete;
    virtual ~ITolmOS();

    /// The clock: milliseconds since 1970-01-01 00:00:00 UTC, as `Tolm::DateTime` takes them.
    [[nodiscard]] virtual unsigned long long GetCurrentTime() const = 0;
    /// Brings the name of a host into the one form in which this system writes it, the same on every run:
    /// lower case, without the dot that may end a whole domain name. Nothing is looked up. False, with
    /// `translated` as it was, for a name that is empty.
    virtual bool TranslateHostName(const QString& host, QString& translated) const = 0;
};

/// Gives access to the operating system of this process.
class ZANPLATFORM_EXPORT TolmOS {
public:
    /// The system in use: always the same object until `Replace`, and not the caller's to destroy.
    static ITolmOS& Create();
    /// Replaces the system that `Create` returns, for example by one with a clock under control. Does not
    /// take ownership; null brings back the real one. To be called while one thread runs.
    static void Replace(ITolmOS* os);
};
