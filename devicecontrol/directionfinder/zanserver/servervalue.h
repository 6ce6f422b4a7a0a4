#pragma once

#include "valueframework/valueaccess.h"
#include "zancommon/zanpath.h"

namespace ZANServer {

/// The server's value of a descriptor, created when it is missing; T must be the descriptor's type. Never
/// null: throws the `KWException` of `CreateValue`.
template <class T>
T* ServerValue(const ValueDescriptor& descriptor) {
    return ZANPlatform::CreateValue<T>(ZANPath::SERVER.toString(), descriptor, nullptr);
}

/// The same for a value of the device.
template <class T>
T* DeviceValue(const ValueDescriptor& descriptor) {
    return ZANPlatform::CreateValue<T>(ZANPath::DEVICE_NODE.toString(), descriptor, nullptr);
}

} // namespace ZANServer
