#pragma once

#include "valueframework/valuedescriptor.h"

#include <span>

/// The standard device values. The rows, with paths, types, ranges, defaults and units, stand in
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
    BUILDER  ///< node types that only a builder makes
};

/// The descriptors of one branch in the order of the table; good for the whole run. From any thread.
ZANPLATFORM_EXPORT std::span<const ValueDescriptor* const> GetDescriptors(EBranch branch);

/// Creates every value and node of a branch below a base path; what stands there already stays as it is, and
/// what cannot be made is left out without a word. The process-wide base path of the descriptors is as before
/// afterwards. Belongs to the thread of the value tree.
ZANPLATFORM_EXPORT void CreateBranch(EBranch branch, const QString& basePath);

} // namespace StdDeviceDefinition
