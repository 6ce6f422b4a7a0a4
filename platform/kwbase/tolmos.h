#pragma once

#include "zanplatform_export.h"

/// What the library asks of the operating system.
class ZANPLATFORM_EXPORT ITolmOS {
public:
    ITolmOS() = default;
    ITolmOS(const ITolmOS&) = delete;
    ITolmOS& operator=(const ITolmOS&) = delete;
    virtual ~ITolmOS();

    /// The clock: milliseconds since 1970-01-01 00:00:00 UTC, as `Tolm::DateTime` takes them.
    [[nodiscard]] virtual unsigned long long GetCurrentTime() const = 0;
};

/// Gives access to the operating system of this process.
class ZANPLATFORM_EXPORT TolmOS {
public:
    static ITolmOS& Create();
    /// Replaces the system that `Create` returns, for example by one with a clock under control. Does not
    /// take ownership; null brings back the real one.
    static void Replace(ITolmOS* os);
};
