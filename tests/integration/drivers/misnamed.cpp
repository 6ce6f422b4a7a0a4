#include "zancommon/drivercomponent.h"
#include "zancommon/nulldriver.h"

namespace {

/// A driver whose file has another name.
class Misnamed final : public KvZANCommon::NullDriver {
public:
    static KvZANCommon::DriverDescription Describe() { return {QStringLiteral("renamed"), {}, {}, {}, {}}; }
};

} // namespace

ZAN_DEFINE_DRIVER(Misnamed)
