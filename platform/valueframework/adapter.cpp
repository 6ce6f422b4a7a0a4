#include "valueframework/adapter.h"

#include "kwbase/errorhandler.h"

using namespace Qt::StringLiterals;

Adapter::~Adapter() = default;

void Adapter::TraceMissing(const ValueDescriptor& descriptor) {
    TraceInformation(
        [&descriptor] { return u"_GETVALUE "_s + descriptor.GetName() + u" failed - ignored"_s; },
        u"devicecontrol\\stddevicedefinition\\stdadapter"_s, 219);
}
