#include "zancommon/drivercomponent.h"
#include "zancommon/nulldriver.h"

#include <stdexcept>

namespace {

/// A driver that does not say who it is.
class Silent final : public KvZANCommon::NullDriver {
public:
    static KvZANCommon::DriverDescription Describe() { throw std::runtime_error("no comment"); }
};

} // namespace

ZAN_DEFINE_DRIVER(Silent)
