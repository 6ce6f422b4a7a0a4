#pragma once

#include "zanplatform_export.h"

#include <QString>

/// What the library needs from the operating system. The default implementation may be called from any
/// thread.
class ZANPLATFORM_EXPORT ITolmOS {
public:
    ITolmOS() = default;
    ITolmOS(const ITolmOS&) = delete;
    ITolmOS& operator=(const ITolmOS&) = delete;
    virtual ~ITolmOS();

    /// The clock: milliseconds since 1970-01-01 00:00:00 UTC, as `Tolm::DateTime` takes them.
    [[nodiscard]] virtual unsigned long long GetCurrentTime() const = 0;
    /// Converts the name of a host into its normal form, the same on every run: lower case, without the dot
    /// that may end a full domain name. Nothing is looked up. False, with `translated` unchanged, for an
    /// empty name.
    virtual bool TranslateHostName(const QString& host, QString& translated) const = 0;
};

/// Gives access to the operating system of this process.
class ZANPLATFORM_EXPORT TolmOS {
public:
    /// The system in use: the same object until `Replace`. The caller does not own it.
    static ITolmOS& Create();
    /// Replaces the system that `Create` returns, for example by one whose clock a test controls. Does not
    /// take ownership; null restores the default. Call it while only one thread runs.
    static void Replace(ITolmOS* os);
};
