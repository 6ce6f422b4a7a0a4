#pragma once

class ZANCharacteristics;

/// Prints what the device of the station is: type, options, antennas, limits per mode, and where the
/// converters change.
void PrintDevice(const ZANCharacteristics& characteristics);
