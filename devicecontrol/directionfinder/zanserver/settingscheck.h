#pragma once

#include "zanserver_export.h"

#include "zanserver/finding.h"

#include <QString>

namespace ZANServer {

/// Looks the settings of a station through, without writing any and without a station. Errors are settings
/// that are no content of their value: numbers outside their range, texts where numbers belong, keys that a
/// selection does not have. Each tells name, value and what is allowed.
/// \param address of the station's device
ZANSERVER_EXPORT Findings CheckSettings(const QString& address);

/// Warns of settings that can be used and still do not mean what they seem to: an antenna model, a DF method
/// or a port of the hub that there is not, and a manual position that is not set.
/// \param address of the station's device
ZANSERVER_EXPORT Findings CheckMeaning(const QString& address);

/// Warns of the keys of the application's settings that nobody reads, with the nearest one that somebody
/// does.
/// \param directory of the settings
ZANSERVER_EXPORT Findings CheckKeys(const QString& directory);

} // namespace ZANServer
