#include "valueframework/adapter.h"

#include "kwbase/tracesource.h"

using namespace Qt::StringLiterals;

Adapter::~Adapter() = default;

void Adapter::TraceMissing(const ValueDescriptor& descriptor) {
    // Source and line are fixed: readers of the trace know this message by them.
    constexpr TraceSource TRACE(u"devicecontrol\\stddevicedefinition\\stdadapter");
    TRACE.Information(
        [&descriptor] { return u"_GETVALUE "_s + descriptor.GetName() + u" failed - ignored"_s; }, 219);
}
