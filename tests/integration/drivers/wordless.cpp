#include "zancommon/drivercomponent.h"
#include "zancommon/nulldriver.h"

namespace {

/// A driver that does not say who it is, and not even why.
class Wordless final : public KvZANCommon::NullDriver {
public:
    static KvZANCommon::DriverDescription Describe() { throw 1; }
};

} // namespace

ZAN_DEFINE_DRIVER(Wordless)
