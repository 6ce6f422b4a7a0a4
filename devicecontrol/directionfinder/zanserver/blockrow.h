#pragma once

#include "zanserver_export.h"

#include "zancommon/recordedbearing.h"
#include "zanserver/driverreceiver.h"

#include <cstddef>

/// Rows of a recording, made of what a driver has delivered.
namespace ZANServer::BlockRow {

/// What is the same for all bearings of a block: time, receive frequency and mode.
[[nodiscard]] ZANSERVER_EXPORT KvZANCommon::RecordedBearing Begin(const BearingBlock& block);
/// Puts one bearing of the block into its row: azimuth, elevation, quality, level, and the emitter of super
/// resolution. The frequency stays.
ZANSERVER_EXPORT void Put(const BearingBlock& block, std::size_t bearing, KvZANCommon::RecordedBearing& row);

} // namespace ZANServer::BlockRow
