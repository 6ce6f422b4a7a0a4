#include "zancommon/drivercomponent.h"
#include "zancommon/nulldriver.h"

namespace {

/// A driver of the current kind.
class Current final : public KvZANCommon::NullDriver {
public:
    static KvZANCommon::DriverDescription Describe() {
        return {QStringLiteral("current"),
                QStringLiteral("a driver of the current kind"),
                QStringLiteral("tcp://HOST:PORT"),
                QStringLiteral("tcp://127.0.0.1:4000"),
                {EMODE_FFM, EMODE_SCAN}};
    }
};

} // namespace

ZAN_DEFINE_DRIVER(Current)
