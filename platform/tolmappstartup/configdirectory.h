#pragma once

#include "zanplatform_export.h"

#include <QString>

/// The default directory of the settings. It is the one that the service manager has created for the service
/// (STATE_DIRECTORY, because the station writes its settings, or else CONFIGURATION_DIRECTORY); without a
/// service manager "zanstation" below the user's configuration directory (XDG_CONFIG_HOME, or else ".config"
/// in HOME; when HOME is not set, the home directory of the user database). Variables that hold a relative
/// path or the root directory are ignored. An absolute path; empty when there is none.
ZANPLATFORM_EXPORT QString GetDefaultConfigDirectory();
