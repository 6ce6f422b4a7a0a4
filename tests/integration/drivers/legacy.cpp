#include "zancommon/drivercomponent.h"
#include "zancommon/nulllegacydriver.h"

namespace {

/// A driver of the older kind, which tells each mode that it is set to.
class Legacy final : public KvZANCommon::NullLegacyDriver {
public:
    explicit Legacy(KvZANCommon::ILegacyDriverCallback& callback)
        : m_callback(callback) {}

    static KvZANCommon::DriverDescription Describe() {
        return {QStringLiteral("legacy"), QStringLiteral("a driver of the older kind"), {}, {}, {EMODE_SCAN}};
    }

    long SetMode(EMode mode) override {
        QString command = QStringLiteral("mode %1").arg(mode);
        m_callback.SetCommandLog(command);
        return 0;
    }

private:
    KvZANCommon::ILegacyDriverCallback& m_callback;
};

} // namespace

ZAN_DEFINE_DRIVER(Legacy)
