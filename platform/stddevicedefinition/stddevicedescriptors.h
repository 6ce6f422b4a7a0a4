#pragma once

#include "valueframework/valuedescriptor.h"

#include <span>

/// The standard device values. The rows, with paths, types, ranges, defaults and units, are in
/// stddevicedescriptors.def.
namespace StdDeviceDefinition {

#define ZAN_DESCRIPTOR(name, branch, path, maker) extern ZANPLATFORM_EXPORT const ValueDescriptor name;
#include "stddevicedefinition/stddevicedescriptors.def"
#undef ZAN_DESCRIPTOR

/// The branch of the tree that a standard value belongs to.
enum class EBranch {
    DEVICE,  ///< below the device node, "/DEVICES/ZANServer"
    SERVER,  ///< below "/ZANServer"
    ANTENNA, ///< below one antenna node
    BUILDER  ///< node types that only a builder creates
};

/// The descriptors of one branch in the order of the table; valid for the whole run. From any thread.
ZANPLATFORM_EXPORT std::span<const ValueDescriptor* const> GetDescriptors(EBranch branch);

/// Creates every value and node of a branch below a base path. What exists already stays as it is; what
/// cannot be created is left out without a report. The process-wide base path of the descriptors is unchanged
/// afterwards. Belongs to the thread of the value tree.
ZANPLATFORM_EXPORT void CreateBranch(EBranch branch, const QString& basePath);

} // namespace StdDeviceDefinition
