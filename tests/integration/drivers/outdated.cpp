#include "zancommon/idrivercomponent.h"

#include <stdexcept>

namespace {

/// A driver that was built with another version of the driver interface: nothing else of it may be called.
class Outdated final : public KvZANCommon::IDriverComponent {
public:
    [[nodiscard]] quint32 GetDriverInterfaceVersion() const override { return DRIVER_INTERFACE_VERSION + 1; }
    [[nodiscard]] KvZANCommon::DriverDescription Describe() const override {
        throw std::logic_error("called");
    }
    [[nodiscard]] std::unique_ptr<KvZANCommon::IDriver> CreateDriver() const override {
        throw std::logic_error("called");
    }
};

} // namespace

ZAN_DEFINE_COMPONENT(Outdated)
