#pragma once

#include "zanserver_export.h"

#include "zancommon/zandomain.h"

#include <QString>

#include <optional>

/// Operation modes as texts: ffm, wideband, scan, search, tdma, or the number of the mode.
namespace ZANServer::OperationModeText {

/// Nothing for any other text.
ZANSERVER_EXPORT std::optional<EOperationMode> Parse(const QString& text);
/// The name of a mode, or its number when it has no name.
ZANSERVER_EXPORT QString Format(EOperationMode mode);

} // namespace ZANServer::OperationModeText
