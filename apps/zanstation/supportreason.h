#pragma once

#include "zancommon/antennadata.h"
#include "zancommon/zancharacteristics.h"

#include <QString>

/// Why the device does not support an antenna, in words for the operator; empty when it does support it.
QString GetSupportProblem(const ZANCharacteristics& characteristics, const AntennaData& antenna);
