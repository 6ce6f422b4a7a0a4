#include "zanstation/hardwarecommand.h"

#include "zancommon/hwstatustester.h"
#include "zancommon/zanvaluenames.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/table.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

QString Describe(HwStatusTester::HwComponentState state) {
    switch (state) {
    case HwStatusTester::RequiredMissing:
        return u"required, missing"_s;
    case HwStatusTester::RequiredInstalled:
        return u"required, found"_s;
    case HwStatusTester::OptionalInstalled:
        return u"optional, found"_s;
    case HwStatusTester::OptionalMissing:
        return u"optional, missing"_s;
    case HwStatusTester::NotRequired:
        break;
    }
    return u"found, unknown"_s;
}

} // namespace

int PrintHardware() {
    HwStatusTester hardware(ZANPath::SERVER.toString());
    hardware.ReadHwRequirementsFromTree();
    hardware.ReadHwListFromTree();
    Table table({u"component"_s, u"state"_s});
    for (const QString& component : hardware.GetAllComponents()) {
        table.Add({component, Describe(hardware.GetComponentState(component))});
    }
    table.Print();
    const std::set<QString> missing = hardware.FindMissingRequiredHardware();
    if (!missing.empty()) {
        Console::Error(u"missing: "_s + QStringList(missing.begin(), missing.end()).join(u", "_s));
    }
    return missing.empty() ? EXIT_OK : EXIT_FAILED;
}
