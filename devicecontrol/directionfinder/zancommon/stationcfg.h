#pragma once

#include "tolmappstartup/icfg.h"
#include "zancommon_export.h"

#include <QString>

/// The settings of each DF device that the application has been connected to, found by the device's address.
/// They are the sections "ZANStations/ZANStation0", "ZANStation1" and so on of the application's settings.
/// Belongs to the application's main thread.
class ZANCOMMON_EXPORT StationCfg {
public:
    /// The section of the device with this address; "Default" stands for an empty address. Addresses are
    /// compared exactly, the first section that matches counts. Without one a section is appended when
    /// `create` is set. The caller releases it. Null when there is none.
    /// A "Count" that is no number from 0 to 10000 is reported, and stands for the number of sections that
    /// follow one another from 0 on.
    [[nodiscard]] static ICfg* GetStationCfg(const QString& address, bool create);
    /// The address of the device that the application is connected to, from the value tree: host and port
    /// with ":" between them, or any other text. The host is in the form that the operating system gives it,
    /// so that one device has one address. "Default" without an address.
    [[nodiscard]] static QString GetStationAddress();
    /// The name of that device; "Default" without a name.
    [[nodiscard]] static QString GetStationName();
};
