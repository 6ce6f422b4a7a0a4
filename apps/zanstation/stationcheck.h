#pragma once

#include "zanstation/finding.h"

#include <QString>

/// Looks into what the running station has been told about its device. Everything works on all the same:
/// what is wrong narrows what the device can do, or is not there. For the thread of the tree.
namespace StationCheck {

/// Whether the type of the device is one of the catalogue.
Finding CheckDeviceType();
/// Whether the antennas cover their range without gaps and overlaps.
Finding CheckAntennaSetup();
/// Whether all required components are there, where they are to be checked.
Finding CheckHardware();
/// Whether an antenna serves a frequency in Hz.
Finding CheckFrequency(double frequency);

} // namespace StationCheck
