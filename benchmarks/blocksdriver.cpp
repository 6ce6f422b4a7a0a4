// The driver of a benchmark: takes ranges and modes, and delivers bearings from within a call.

#include "bearingdelivery.h"
#include "zancommon/drivercomponent.h"
#include "zancommon/idrivercallback.h"
#include "zancommon/nulldriver.h"

namespace {

class BlocksDriver final : public KvZANCommon::NullDriver {
public:
    static KvZANCommon::DriverDescription Describe() {
        return {QStringLiteral("blocks"), QStringLiteral("the driver of a benchmark"), {}, {}, {EMODE_SCAN}};
    }

    void SetCallback(KvZANCommon::IDriverCallback* callback) override { m_callback = callback; }
    int Initialize(std::string& /*address*/, bool /*isSimulated*/) override { return 0; }
    long SetMode(EMode mode) override {
        QString command = QStringLiteral("mode %1").arg(mode);
        m_callback->SetCommandLog(command);
        return 0;
    }
    long DeleteAllChannels() override { return 0; }
    long AddFreqRange(KvZANCommon::FreqRangeDefinition* /*range*/) override { return 0; }
    /// Delivers all bearings in blocks of as many as the command says.
    long SetTest(QString command) override {
        DeliverBearings(*m_callback, command.toUInt());
        return 0;
    }

private:
    KvZANCommon::IDriverCallback* m_callback = nullptr;
};

} // namespace

ZAN_DEFINE_DRIVER(BlocksDriver)
