#pragma once

#include "zanserver_export.h"

#include <QString>

namespace ZANServer {

/// Which driver the station uses, and the address of its device: the section `[Driver]` of the application's
/// settings. Main thread.
struct ZANSERVER_EXPORT DriverChoice {
    static constexpr QStringView REPLAY = u"replay";
    /// The driver of a station that has not chosen one.
    static constexpr QStringView SIMULATOR = u"simulator";

    QString name = SIMULATOR.toString();
    QString address; ///< in the driver's notation; empty: the driver needs none, or has one by itself

    /// What the settings choose.
    [[nodiscard]] static DriverChoice FromSettings();
    /// Keeps the choice in the settings.
    void Store() const;

    /// The address by which the settings of the device are found, in the normal form of
    /// `StationCfg::GetStationAddress`: that of the device; without one, the name of the driver. All
    /// recordings share the settings "replay", which the simulator takes over as long as it has none of its
    /// own.
    [[nodiscard]] QString GetStationAddress() const;
    /// What the device is, for operators.
    [[nodiscard]] QString GetDeviceName() const;
};

} // namespace ZANServer
