#pragma once

#include "zanplatform_export.h"

#include <QString>

/// The default directory of the settings. It is the one that the service manager has created for the
/// service (STATE_DIRECTORY, for the station writes its settings, or else CONFIGURATION_DIRECTORY), or
/// "zanstation" below the user's configuration directory (XDG_CONFIG_HOME, or else ".config" in HOME, which
/// the user database knows when the environment does not). An absolute path, never one below the root
/// directory itself; empty when there is none.
ZANPLATFORM_EXPORT QString GetDefaultConfigDirectory();
