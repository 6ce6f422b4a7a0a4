#pragma once

#include "zanserver_export.h"

#include "zancommon/antennadata.h"
#include "zancommon/zancharacteristics.h"

#include <QString>

namespace ZANServer {

/// Why the device does not support an antenna, in words for the operator; empty when it does support it.
ZANSERVER_EXPORT QString GetSupportProblem(const ZANCharacteristics& characteristics,
                                           const AntennaData& antenna);

} // namespace ZANServer
