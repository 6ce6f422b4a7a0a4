#pragma once

#include "zanserver_export.h"

#include "zanserver/finding.h"

#include <QString>

/// Looks into what the running station has been told about its device. Everything works on all the same:
/// what is wrong narrows what the device can do, or is not there. For the thread of the tree.
namespace ZANServer::StationCheck {

/// Whether the type of the device is one of the catalogue.
ZANSERVER_EXPORT Finding CheckDeviceType();
/// Whether the antennas cover their range without gaps and overlaps.
ZANSERVER_EXPORT Finding CheckAntennaSetup();
/// Whether all required components are there, where they are to be checked.
ZANSERVER_EXPORT Finding CheckHardware();
/// Whether an antenna serves a frequency in Hz.
ZANSERVER_EXPORT Finding CheckFrequency(double frequency);

} // namespace ZANServer::StationCheck
