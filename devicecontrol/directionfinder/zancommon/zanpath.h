#pragma once

#include "zancommon_export.h"

#include <QString>

class ValueDescriptor;

/// \file

/// The paths in the value tree: the prefixes, and what is made of them. A name is one of `ZANValueName` or of
/// the application's own, without a slash in front.
namespace ZANPath {

inline constexpr QStringView SERVER = u"/ZANServer";          ///< root of the server's values
inline constexpr QStringView SERVER_CHILD = u"/ZANServer/";   ///< the same, to put a name behind
inline constexpr QStringView DEVICE = u"/DEVICES/ZANServer/"; ///< the device node
inline constexpr QStringView DEVICE_NODE = DEVICE.chopped(1); ///< the same, as a base path
inline constexpr QStringView CONTROL = u"/ZANCONTROL/";       ///< values of the control application

/// The path of a standard value or node of the server.
[[nodiscard]] ZANCOMMON_EXPORT QString Server(const ValueDescriptor& descriptor);
/// The path of a value that the server has by a name.
[[nodiscard]] ZANCOMMON_EXPORT QString Server(QStringView name);
/// The path of a standard value or node of the device.
[[nodiscard]] ZANCOMMON_EXPORT QString Device(const ValueDescriptor& descriptor);
/// The path of a value that the control application has by a name.
[[nodiscard]] ZANCOMMON_EXPORT QString Control(QStringView name);

} // namespace ZANPath
