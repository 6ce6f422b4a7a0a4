#pragma once

/// Shows the trace of the library.
namespace StationTrace {

/// From now on shows trace lines on standard error, except those that report what the program reports itself;
/// all of them with the application option "Trace". With --quiet only those about settings that could not be
/// saved or read.
void Show();

} // namespace StationTrace
