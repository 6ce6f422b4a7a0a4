#pragma once

#include "zancommon/antennadata.h"

#include <QJsonObject>

/// An antenna as programs read it.
namespace AntennaJson {

/// Its name, whether it is used, the range that it is used for in Hz, and its converter, where it has one.
QJsonObject Describe(const AntennaData& antenna);

} // namespace AntennaJson
