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

} // namespace ZANServer
