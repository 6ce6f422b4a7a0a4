#include "zancommon/hwstatustester.h"
#include "zancommon/zanvaluenames.h"
#include "zanstation/commandline.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/table.h"

#include <QJsonArray>
#include <QJsonObject>
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

QJsonObject DescribeForPrograms(const QString& component, HwStatusTester::HwComponentState state) {
    using H = HwStatusTester;
    return {{u"name"_s, component},
            {u"required"_s, state == H::RequiredInstalled || state == H::RequiredMissing},
            {u"optional"_s, state == H::OptionalInstalled || state == H::OptionalMissing},
            {u"found"_s, state != H::RequiredMissing && state != H::OptionalMissing}};
}

/// Prints the hardware components of the station's device: required and optional, found, missing and unknown
/// ones. Returns the exit code: failed when a required component is missing.
int PrintHardware(bool asJson) {
    HwStatusTester hardware(ZANPath::SERVER.toString());
    hardware.ReadHwRequirementsFromTree();
    hardware.ReadHwListFromTree();
    const std::set<QString> components = hardware.GetAllComponents();
    const std::set<QString> missing = hardware.FindMissingRequiredHardware();
    if (asJson) {
        QJsonArray array;
        for (const QString& component : components) {
            array.append(DescribeForPrograms(component, hardware.GetComponentState(component)));
        }
        Console::PrintJson(
            QJsonDocument(QJsonObject{{u"complete"_s, missing.empty()}, {u"components"_s, array}}));
    } else {
        Table table({u"component"_s, u"state"_s});
        for (const QString& component : components) {
            table.Add({component, Describe(hardware.GetComponentState(component))});
        }
        table.Print();
    }
    if (!missing.empty()) {
        Console::Error(u"missing: "_s + QStringList(missing.begin(), missing.end()).join(u", "_s));
    }
    return missing.empty() ? EXIT_OK : EXIT_FAILED;
}

} // namespace

namespace Commands {

int Hardware(const QStringList& arguments) {
    CommandLine line(u"hardware"_s,
                     u"Compares the components that the device reports with those that the settings require. "
                     "Fails when a required one is missing."_s,
                     {CommandLine::JsonOption()});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    return line.WithStation([&line] { return PrintHardware(line.AsJson()); });
}

} // namespace Commands
