#include "fuzz.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "zancommon/hwstatustester.h"

using namespace Qt::StringLiterals;

/// Lists of required and optional hardware, and the lines of device information.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace StdDeviceDefinition;
    static const bool isPublished = (CreateBranch(EBranch::SERVER, u"/ZANServer"_s), true);
    Require(isPublished);
    const QString text = TextOf(data, size);
    Tree& tree = *Tree::Instance();
    auto* const required = tree.Find<ValueString>(u"/ZANServer"_s + g_vdDevRequiredComponents.PathName());
    auto* const optional = tree.Find<ValueString>(u"/ZANServer"_s + g_vdDevOptionalComponents.PathName());
    auto* const information = tree.Find<ValueSelection>(u"/ZANServer"_s + g_vdDevInfo.PathName());
    required->SetValue(text.section(u'\n', 0, 0), nullptr);
    optional->SetValue(text.section(u'\n', 1, 1), nullptr);
    information->Clear(nullptr);
    for (const QString& line : text.split(u'\n')) {
        information->AddItem({line, 0.0, 0}, nullptr);
    }
    HwStatusTester hardware(u"/ZANServer"_s);
    hardware.ReadHwRequirementsFromTree();
    hardware.ReadHwListFromTree();
    for (const QString& component : hardware.FindMissingRequiredHardware()) {
        Require(hardware.GetComponentState(component) == HwStatusTester::RequiredMissing);
    }
    hardware.WriteHwRequirementsToTree();
    return 0;
}
