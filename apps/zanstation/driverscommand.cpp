#include "tolmappstartup/cfgcenter.h"
#include "zanserver/driverlibrary.h"
#include "zanserver/operationmodetext.h"
#include "zanstation/commandline.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/table.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using KvZANCommon::DriverDescription;

namespace {

QStringList GetModes(const DriverDescription& driver) {
    QStringList modes;
    for (const EMode mode : driver.modes) {
        modes.append(OperationModeText::Format(static_cast<EOperationMode>(mode)));
    }
    return modes;
}

void PrintTable(const QList<DriverLibrary::Entry>& drivers) {
    Table table({u"driver"_s, u"modes"_s, u"what it is for"_s, u"example"_s, u"address"_s});
    for (const auto& [file, driver, fault] : drivers) {
        if (fault.isEmpty()) {
            table.Add({driver.name, GetModes(driver).join(u' '), driver.summary, driver.addressExample,
                       driver.addressForm});
        }
    }
    table.Print();
    Console::Print({});
    const QString directory = CfgCenter::GetComponentDirectory();
    Console::Print(u"looked for in "_s + directory +
                   (QFileInfo(directory).isDir() ? QString() : u", which is no directory"_s));
}

void PrintDocument(const QList<DriverLibrary::Entry>& drivers) {
    QJsonArray usable;
    QJsonArray refused;
    for (const auto& [file, driver, fault] : drivers) {
        if (!fault.isEmpty()) {
            refused.append(QJsonObject{{u"file"_s, file}, {u"fault"_s, fault}});
            continue;
        }
        QJsonObject object{{u"name"_s, driver.name},
                           {u"summary"_s, driver.summary},
                           {u"modes"_s, QJsonArray::fromStringList(GetModes(driver))},
                           {u"file"_s, file}};
        if (!driver.addressForm.isEmpty()) {
            object[u"address_form"_s] = driver.addressForm;
            object[u"address_example"_s] = driver.addressExample;
        }
        usable.append(object);
    }
    Console::PrintJson(QJsonDocument(QJsonObject{{u"directory"_s, CfgCenter::GetComponentDirectory()},
                                                 {u"drivers"_s, usable},
                                                 {u"refused"_s, refused}}));
}

} // namespace

namespace Commands {

int Drivers(const QStringList& arguments) {
    CommandLine line(u"drivers"_s, u"Lists the drivers that are installed, and why one cannot be used."_s,
                     {CommandLine::ComponentsOption(), CommandLine::JsonOption()});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    line.TakeComponentDirectory();
    const QList<DriverLibrary::Entry> drivers = DriverLibrary::List();
    for (const DriverLibrary::Entry& driver : drivers) {
        if (!driver.fault.isEmpty()) {
            Console::Warn(driver.fault);
        }
    }
    if (line.AsJson()) {
        PrintDocument(drivers);
    } else {
        PrintTable(drivers);
    }
    return std::ranges::any_of(drivers, [](const auto& driver) { return driver.fault.isEmpty(); })
               ? EXIT_OK
               : EXIT_FAILED;
}

} // namespace Commands
