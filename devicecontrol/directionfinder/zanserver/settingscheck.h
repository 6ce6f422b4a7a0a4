#pragma once

#include "zanserver_export.h"

#include "zanserver/finding.h"

#include <QString>

namespace ZANServer {

/// Checks the settings of a station, without writing any and without creating the station. Errors are
/// settings that their values do not accept: numbers outside their range, texts instead of numbers, keys that
/// a selection does not have. Each finding has name, value and what is allowed.
/// \param address of the station's device
ZANSERVER_EXPORT Findings CheckSettings(const QString& address);

/// Warns about settings that are accepted but have no effect: an unknown antenna model, DF method
/// or converter, an antenna without a name, an impossible port of the hub, and a manual position that is not
/// set.
/// \param address of the station's device
ZANSERVER_EXPORT Findings CheckMeaning(const QString& address);

/// Warns about keys in the application's settings that are not used, with the most similar one that is.
/// \param directory of the settings
ZANSERVER_EXPORT Findings CheckKeys(const QString& directory);

} // namespace ZANServer
