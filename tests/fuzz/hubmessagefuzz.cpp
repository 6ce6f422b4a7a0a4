#include "fuzz.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"

using namespace Qt::StringLiterals;

/// What reaches the tree from the hub: texts and command lines for values of every type. What a value has
/// taken it gives back in a form that it takes.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace StdDeviceDefinition;
    static const bool isPublished = (CreateBranch(EBranch::SERVER, u"/ZANServer"_s), true);
    Require(isPublished);
    const QString text = TextOf(data, size);
    for (const ValueDescriptor* descriptor : GetDescriptors(EBranch::SERVER)) {
        ValueBase* const value = Tree::Instance()->GetValue(u"/ZANServer"_s + descriptor->PathName());
        if (!value) {
            continue;
        }
        if (value->SetStringValue(text, nullptr)) {
            Require(value->SetStringValue(value->GetStringValue(), nullptr));
        }
        value->SetCommandString(text, nullptr);
        Require(value->GetStringValue().isEmpty() ||
                value->SetCommandString(value->GetCommandStringForRecording(0), nullptr));
    }
    return 0;
}
