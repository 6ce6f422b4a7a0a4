#pragma once

#include "valueframework/valuedescriptor.h"

#include <span>

/// The standard device values. The rows, with paths, types and defaults, stand in stddevicedescriptors.def.
namespace StdDeviceDefinition {

#define ZAN_DESCRIPTOR(name, branch, path, maker) extern ZANPLATFORM_EXPORT const ValueDescriptor name;
#include "stddevicedefinition/stddevicedescriptors.def"
#undef ZAN_DESCRIPTOR

/// The branch of the tree that a standard value belongs to.
enum class EBranch { DEVICE, SERVER, ANTENNA, BUILDER };

/// The descriptors of one branch in the order of the table.
ZANPLATFORM_EXPORT std::span<const ValueDescriptor* const> GetDescriptors(EBranch branch);

/// Creates every value and node of a branch below a base path; what stands there already stays as it is.
/// The process-wide base path of the descriptors is as before afterwards.
ZANPLATFORM_EXPORT void CreateBranch(EBranch branch, const QString& basePath);

} // namespace StdDeviceDefinition
