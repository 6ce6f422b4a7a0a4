#pragma once

#include <QString>

/// The traffic-control frequencies of the station, which are kept in the settings file "TrafficControl.ini".
namespace FrequenciesCommand {

/// Replaces the list by the channels of a CSV file, and reports the rows that were left out. Returns the exit
/// code.
int Import(const QString& fileName);
/// Prints the list. Returns the exit code.
int List();

} // namespace FrequenciesCommand
