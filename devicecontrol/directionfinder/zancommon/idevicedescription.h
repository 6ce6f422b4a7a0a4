#pragma once

#include "zancommon_export.h"

#include <QString>

namespace KvZANCommon {

/// What a driver says of its device beyond `IDriver`. A driver that knows it derives from this class as well;
/// the application asks for it by a dynamic_cast of the driver, on the driver's thread, while the device is
/// connected.
class ZANCOMMON_EXPORT IDeviceDescription {
public:
    virtual ~IDeviceDescription();

    /// The device type, by its name in the catalogue ("ZANTIDE"); empty: not known.
    [[nodiscard]] virtual QString GetDeviceType() = 0;
    /// The installed options by their names, separated by ";" ("ZAN-HFR;ZANTIDE-SR"). Null: not known; empty:
    /// none.
    [[nodiscard]] virtual QString GetDeviceOptions() = 0;

protected:
    IDeviceDescription() = default;
    IDeviceDescription(const IDeviceDescription&) = default;
    IDeviceDescription& operator=(const IDeviceDescription&) = default;
};

} // namespace KvZANCommon
