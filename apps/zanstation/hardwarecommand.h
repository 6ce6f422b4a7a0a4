#pragma once

/// Prints the hardware components of the station's device: what is required and optional, found, missing and
/// unknown. Returns the exit code: failed when a required component is missing.
int PrintHardware();
