#pragma once

#include "tolmappstartup/idllinstance.h"
#include "zancommon/driverdescription.h"
#include "zancommon/idriver.h"
#include "zancommon_export.h"

#include <memory>

namespace KvZANCommon {

/// A driver that is loaded at run time: the component library "libzandriver-NAME.so" in the component
/// directory, where NAME is that of its description. `ZAN_DEFINE_DRIVER` (`drivercomponent.h`) makes one of a
/// driver of either kind.
///
/// The component itself is made, asked and destroyed on the application's main thread; the driver that it
/// makes belongs to the thread that it is called on.
class ZANCOMMON_EXPORT IDriverComponent : public IDllInstance {
public:
    /// Changes with every change of the driver interfaces and their records that a built driver would not
    /// survive.
    static constexpr quint32 DRIVER_INTERFACE_VERSION = 1;

    ~IDriverComponent() override;

    // The order of the operations is part of the interface, and the version is asked for first.

    /// The `DRIVER_INTERFACE_VERSION` that the driver was built with.
    [[nodiscard]] virtual quint32 GetDriverInterfaceVersion() const = 0;
    [[nodiscard]] virtual DriverDescription Describe() const = 0;
    /// A driver without a callback, on the thread on which it will be called and destroyed. Not null. It is
    /// gone before the component.
    [[nodiscard]] virtual std::unique_ptr<IDriver> CreateDriver() const = 0;
};

} // namespace KvZANCommon
