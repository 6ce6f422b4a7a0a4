#pragma once

#include "zanstation/finding.h"

#include <QString>

/// Looks the settings of a station through, without writing any and without a station. Errors are settings
/// that are no content of their value: numbers outside their range, texts where numbers belong, keys that a
/// selection does not have. Each tells name, value and what is allowed.
/// \param address of the station's device
Findings CheckSettings(const QString& address);

/// Warns of the keys of the application's settings that nobody reads, with the nearest one that somebody
/// does. \param directory of the settings
Findings CheckKeys(const QString& directory);
