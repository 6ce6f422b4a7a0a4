#include "valueframework/adapter.h"

#include "kwbase/tracesource.h"

using namespace Qt::StringLiterals;

Adapter::~Adapter() = default;

void Adapter::TraceMissing(const ValueDescriptor& descriptor) {
    // Place and line are those by which readers of the trace know this message.
    constexpr TraceSource TRACE(u"devicecontrol\\stddevicedefinition\\stdadapter");
    TRACE.Information(
        [&descriptor] { return u"_GETVALUE "_s + descriptor.GetName() + u" failed - ignored"_s; }, 219);
}
