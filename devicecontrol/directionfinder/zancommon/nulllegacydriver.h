#pragma once

#include "zancommon/ilegacydriver.h"
#include "zancommon/nulldriverof.h"

namespace KvZANCommon {

/// A driver of the older interface whose device can do nothing, like `NullDriver`. Derive a driver from it
/// and override what its device can do.
class NullLegacyDriver : public NullDriverOf<ILegacyDriver> {
protected:
    ~NullLegacyDriver() = default; // destroyed only through its own type
};

} // namespace KvZANCommon
