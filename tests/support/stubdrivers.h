#pragma once

#include "support/driveroperations.h"

namespace KvZANCommon {

template <class Result, class... Arguments>
Result Nothing(const Arguments&... /*arguments*/) {
    return Result();
}

#define ZAN_DO_NOTHING(identifier, result, name, parameters, arguments, constness)                           \
    result name parameters constness override {                                                              \
        return Nothing<result> arguments;                                                                    \
    }
#define ZAN_KEEP_DEFAULT(...)

// Partners that do nothing. They override exactly what their interfaces leave without a body.

class StubDriver : public IDriver {
public:
    ZAN_DRIVER_OPERATIONS(ZAN_DO_NOTHING, ZAN_KEEP_DEFAULT)
};

class StubLegacyDriver : public ILegacyDriver {
public:
    virtual ~StubLegacyDriver() = default;
    ZAN_LEGACY_DRIVER_OPERATIONS(ZAN_DO_NOTHING, ZAN_KEEP_DEFAULT)
};

class StubCallback : public IDriverCallback {
public:
    virtual ~StubCallback() = default;
    ZAN_CALLBACK_OPERATIONS(ZAN_DO_NOTHING)
};

#undef ZAN_DO_NOTHING
#undef ZAN_KEEP_DEFAULT

} // namespace KvZANCommon
