#pragma once

#include "zancommon_export.h"

#include <QString>

class ValueDescriptor;

/// \file

/// The paths in the value tree: the prefixes, and functions that append a name. A name is one of
/// `ZANValueName` or one that the application has defined, without a leading slash.
namespace ZANPath {

inline constexpr QStringView SERVER = u"/ZANServer";          ///< root of the server's values
inline constexpr QStringView SERVER_CHILD = u"/ZANServer/";   ///< the same with a slash, to append a name
inline constexpr QStringView DEVICE = u"/DEVICES/ZANServer/"; ///< the device node
inline constexpr QStringView DEVICE_NODE = DEVICE.chopped(1); ///< the same, as a base path
inline constexpr QStringView CONTROL = u"/ZANCONTROL/";       ///< values of the control application

/// The path of a standard value or node of the server.
[[nodiscard]] ZANCOMMON_EXPORT QString Server(const ValueDescriptor& descriptor);
/// The path of a value of the server with this name.
[[nodiscard]] ZANCOMMON_EXPORT QString Server(QStringView name);
/// The path of a standard value or node of the device.
[[nodiscard]] ZANCOMMON_EXPORT QString Device(const ValueDescriptor& descriptor);
/// The path of a value of the control application with this name.
[[nodiscard]] ZANCOMMON_EXPORT QString Control(QStringView name);

} // namespace ZANPath
