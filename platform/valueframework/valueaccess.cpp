#include "valueframework/valueaccess.h"

#include "kwbase/tracesource.h"

using namespace Qt::StringLiterals;

namespace {

// Source and line numbers are fixed: readers of the trace know these failures by them.
constexpr TraceSource TRACE(u"valueframework\\valueclasses\\valueobservermacros");

} // namespace

namespace ZANPlatform {

namespace ValueAccess {

void TraceRefusedValue(const QString& path) {
    TRACE.Information(
        [&path] {
            return u"!!!!!!!MEMORY LEAK! The value with the path '%1' could not be created!!! A value of this name already exists for a different type!!!!!!!!"_s
                .arg(path);
        },
        297);
}

void ThrowWrongType(const ValueDescriptor& descriptor) {
    throw KWException(u"Wrong type assumed for %1."_s.arg(descriptor.PathName()), TRACE.GetPath(), {},
                      u"CreateValue"_s, __LINE__, KWException::NO_CODE);
}

} // namespace ValueAccess

Node* CreateNode(const ValueDescriptor& descriptor, IObserver* originator) {
    descriptor.Create(originator);
    if (Node* node = Tree::Instance()->GetNode(ValueDescriptor::GetBasePath() + descriptor.PathName())) {
        return node;
    }
    throw KWException(u"Could not create node according to value descriptor %1."_s.arg(descriptor.PathName()),
                      TRACE.GetPath(), {}, u"CreateNode"_s, 175, KWException::NO_CODE);
}

} // namespace ZANPlatform
