#pragma once

#include "zancommon/idriver.h"
#include "zancommon/nulldriverof.h"

namespace KvZANCommon {

/// A driver whose device can do nothing: each operation answers as for a device without the feature. Derive a
/// driver from it and override what its device can do.
///
/// The operations answer as `NullDriverOf` says, and the callback is not used.
class NullDriver : public NullDriverOf<IDriver> {
public:
    void SetCallback(IDriverCallback*) override {}
};

} // namespace KvZANCommon
