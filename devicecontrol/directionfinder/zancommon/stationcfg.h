#pragma once

#include "tolmappstartup/icfg.h"
#include "zancommon_export.h"

#include <QString>

/// The settings of each DF device that the application has been connected to, found by the device's address.
/// They are the sections "ZANStations/ZANStation0", "ZANStation1" and so on of the application's settings.
/// Belongs to the application's main thread.
class ZANCOMMON_EXPORT StationCfg {
public:
    /// The section of the device with this address; an empty address means "Default". Addresses are compared
    /// exactly; the first section that matches is used. When none matches and `create` is set, a section is
    /// appended. The caller releases it. Null when there is none. A "Count" that is not a number from 0 to
    /// 10000 is reported, and replaced by the number of consecutive sections from 0 on.
    [[nodiscard]] static ICfg* GetStationCfg(const QString& address, bool create);
    /// The address of the device that the application is connected to, from the value tree: host and port
    /// separated by ":", or any other text. The host is in its normal form (`ITolmOS::TranslateHostName`), so
    /// that one device has one address. "Default" without an address.
    [[nodiscard]] static QString GetStationAddress();
    /// An address in that form.
    [[nodiscard]] static QString GetNormalAddress(const QString& address);
    /// The name of that device; "Default" without a name.
    [[nodiscard]] static QString GetStationName();
};
