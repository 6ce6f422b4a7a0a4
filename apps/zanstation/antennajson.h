#pragma once

#include "zancommon/antennadata.h"

#include <QJsonObject>

/// Describes antennas in JSON.
namespace AntennaJson {

/// Name, whether the antenna is enabled, the range in which it is used in Hz, and its converter, if it has
/// one.
QJsonObject Describe(const AntennaData& antenna);

} // namespace AntennaJson
