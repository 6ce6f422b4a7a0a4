#include "zancommon/drivercomponent.h"
#include "zancommon/idrivercallback.h"
#include "zancommon/nulldriver.h"

#include <string>

namespace {

/// A driver that only measures a fixed frequency.
class Fixed final : public KvZANCommon::NullDriver {
public:
    static KvZANCommon::DriverDescription Describe() {
        return {QStringLiteral("fixed"), QStringLiteral("measures a fixed frequency"), {}, {}, {EMODE_FFM}};
    }

    void SetCallback(KvZANCommon::IDriverCallback* callback) override { m_callback = callback; }
    int Initialize(std::string& /*address*/, bool /*simulation*/) override { return 0; }
    long SetMode(EMode mode) override {
        if (mode == EMODE_FFM) {
            KvZANCommon::FFMData result;
            result.time = 1000;
            result.frequency = 121.5e6;
            result.quality = 50;
            KvZANCommon::StatusStruct status;
            m_callback->fillFFMBuffer(result, status, false);
        }
        return mode == EMODE_FFM || mode == EMODE_STANDBY ? 0 : -1;
    }

private:
    KvZANCommon::IDriverCallback* m_callback = nullptr;
};

} // namespace

ZAN_DEFINE_DRIVER(Fixed)
