#pragma once

#include "zanserver_export.h"

#include "zanserver/driverchoice.h"
#include "zanserver/finding.h"

#include <QString>

#include <optional>

/// Checks what the settings of the running station say about its device. The station works in spite of these
/// problems: they restrict what the device can do, or name parts that are missing. For the thread of the
/// tree.
namespace ZANServer::StationCheck {

/// Whether there is the driver, in the component directory, and its address has the form that it names. Warns
/// of the simulated device. Opens no device.
ZANSERVER_EXPORT Finding CheckDriver(const DriverChoice& choice);
/// Whether gpsd answers. Nothing when neither position nor heading is taken from it, or its address is wrong.
/// Runs the event loop meanwhile, for 2 s at most.
ZANSERVER_EXPORT std::optional<Finding> CheckGpsd();
/// Whether the type of the device is in the catalogue.
ZANSERVER_EXPORT Finding CheckDeviceType();
/// Whether the antennas cover their range without gaps and overlaps.
ZANSERVER_EXPORT Finding CheckAntennaSetup();
/// Whether all required components are installed, if the settings want that checked.
ZANSERVER_EXPORT Finding CheckHardware();
/// Whether an antenna serves a frequency in Hz.
ZANSERVER_EXPORT Finding CheckFrequency(double frequency);

} // namespace ZANServer::StationCheck
