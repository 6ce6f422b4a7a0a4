#pragma once

/// The trace of the library, as the program shows it.
namespace StationTrace {

/// From now on shows trace lines on standard error, as far as they tell the user what the program does not
/// say itself; all of them with the application option "Trace". Where the user wants it quiet, only what is
/// told of settings that could not be saved or read.
void Show();

} // namespace StationTrace
