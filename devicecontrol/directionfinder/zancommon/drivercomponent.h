#pragma once

/// \file

#include "zancommon/idrivercomponent.h"
#include "zancommon/ilegacydriver.h"
#include "zancommon/legacydriveradapter.h"

#include <memory>
#include <type_traits>

namespace KvZANCommon {

/// A driver of the older kind with the adapter that makes it an `IDriver`. The driver is constructed with its
/// callback, and is gone before the adapter, to which it delivers until then.
template <class LegacyDriver>
class AdaptedDriver final : public LegacyDriverAdapter {
public:
    AdaptedDriver()
        : m_driver(static_cast<ILegacyDriverCallback&>(*this)) {
        SetLegacyDriver(&m_driver);
    }

private:
    LegacyDriver m_driver;
};

/// The component of one class of drivers.
template <class Driver>
class DriverComponent final : public IDriverComponent {
public:
    [[nodiscard]] quint32 GetDriverInterfaceVersion() const override { return DRIVER_INTERFACE_VERSION; }
    [[nodiscard]] DriverDescription Describe() const override { return Driver::Describe(); }
    [[nodiscard]] std::unique_ptr<IDriver> CreateDriver() const override {
        if constexpr (std::is_base_of_v<IDriver, Driver>) {
            return std::make_unique<Driver>();
        } else {
            return std::make_unique<AdaptedDriver<Driver>>();
        }
    }
};

} // namespace KvZANCommon

/// Makes a shared object, to be named "libzandriver-NAME.so", the component of a driver. The class has a
/// `static KvZANCommon::DriverDescription Describe()`, and is either an `IDriver` with a default constructor,
/// or an `ILegacyDriver` with one that takes an `ILegacyDriverCallback&`, which outlives it. Once, in a
/// source:
///
///     ZAN_DEFINE_DRIVER(MyDriver)
#define ZAN_DEFINE_DRIVER(DriverClass) ZAN_DEFINE_COMPONENT(KvZANCommon::DriverComponent<DriverClass>)
