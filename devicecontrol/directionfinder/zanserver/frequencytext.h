#pragma once

#include "zanserver_export.h"

#include <QString>

#include <optional>

/// Frequencies and bandwidths as texts that people write and read.
namespace ZANServer::FrequencyText {

/// The frequency in Hz of a text such as "145.5M", "145.5 MHz", "300k", "1e6" or "9000 Hz": a number not
/// below 0 and a unit (Hz, kHz, MHz, GHz, in upper or lower case; "Hz" may be left out). Nothing for any
/// other text.
ZANSERVER_EXPORT std::optional<double> Parse(const QString& text);

/// A frequency with its unit, such as "145.5 MHz"; exact to 1 Hz.
ZANSERVER_EXPORT QString Format(double frequency);

/// "300 kHz - 30 MHz"
ZANSERVER_EXPORT QString FormatRange(double low, double high);

} // namespace ZANServer::FrequencyText
