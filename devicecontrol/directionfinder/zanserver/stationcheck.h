#pragma once

#include "zanserver_export.h"

#include "zanserver/finding.h"

#include <QString>

/// Checks what the settings of the running station say about its device. The station works in spite of these
/// problems: they restrict what the device can do, or name parts that are missing. For the thread of the
/// tree.
namespace ZANServer::StationCheck {

/// Whether the type of the device is in the catalogue.
ZANSERVER_EXPORT Finding CheckDeviceType();
/// Whether the antennas cover their range without gaps and overlaps.
ZANSERVER_EXPORT Finding CheckAntennaSetup();
/// Whether all required components are installed, if the settings want that checked.
ZANSERVER_EXPORT Finding CheckHardware();
/// Whether an antenna serves a frequency in Hz.
ZANSERVER_EXPORT Finding CheckFrequency(double frequency);

} // namespace ZANServer::StationCheck
