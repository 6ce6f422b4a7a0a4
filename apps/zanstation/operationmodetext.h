#pragma once

#include "zancommon/zandomain.h"

#include <QString>

#include <optional>

/// Operation modes as people write them: ffm, wideband, scan, search, tdma, or the number of the mode.
namespace OperationModeText {

/// Nothing for any other text.
std::optional<EOperationMode> Parse(const QString& text);
/// The name of a mode; of one without a name its number.
QString Format(EOperationMode mode);

} // namespace OperationModeText
