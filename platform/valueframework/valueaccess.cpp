#include "valueframework/valueaccess.h"

using namespace Qt::StringLiterals;

namespace {

const QString& SourceFile() {
    static const QString sourceFile = u"valueframework\\valueclasses\\valueobservermacros"_s;
    return sourceFile;
}

} // namespace

namespace ValueAccess {

void TraceRefusedValue(const QString& path) {
    TraceInformation(
        [&path] {
            return u"!!!!!!!MEMORY LEAK! The value with the path '%1' could not be created!!! A value of this name already exists for a different type!!!!!!!!"_s
                .arg(path);
        },
        SourceFile(), 297);
}

void ThrowWrongType(const ValueDescriptor& descriptor) {
    throw KWException(u"Wrong type assumed for %1."_s.arg(descriptor.PathName()), SourceFile(), {},
                      u"CreateValue"_s, __LINE__, KWException::NO_CODE);
}

} // namespace ValueAccess

Node* CreateNode(const ValueDescriptor& descriptor, IObserver* originator) {
    descriptor.Create(originator);
    if (Node* node = Tree::Instance()->GetNode(ValueDescriptor::GetBasePath() + descriptor.PathName())) {
        return node;
    }
    throw KWException(u"Could not create node according to value descriptor %1."_s.arg(descriptor.PathName()),
                      SourceFile(), {}, u"CreateNode"_s, 175, KWException::NO_CODE);
}
