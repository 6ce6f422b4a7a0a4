#include "zanserver/stationcheck.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "valueframework/tree.h"
#include "valueframework/valuetypes.h"
#include "zancommon/hwstatustester.h"
#include "zancommon/zanpath.h"
#include "zanserver/driverlibrary.h"
#include "zanserver/frequencytext.h"
#include "zanserver/gpsdclient.h"
#include "zanserver/station.h"

#include <QEventLoop>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <chrono>

using namespace Qt::StringLiterals;

namespace ZANServer::StationCheck {

using Severity = Finding::Severity;

namespace {

/// Where a driver that cannot be used was looked for, and what is there instead.
QString DescribeMissingDriver(const QString& name, const QList<DriverLibrary::Entry>& entries) {
    QString fault;
    DriverLibrary::Load(name, fault);
    QStringList usable;
    QStringList refused;
    for (const DriverLibrary::Entry& entry : entries) {
        if (entry.fault.isEmpty()) {
            usable.append(entry.description.name);
        } else if (entry.fault != fault) {
            refused.append(entry.fault);
        }
    }
    const QString found = usable.isEmpty() ? u"no driver"_s : usable.join(u", "_s);
    return QStringList{fault, u"Found in %1: %2."_s.arg(CfgCenter::GetComponentDirectory(), found),
                       refused.join(u' ')}
        .join(u' ')
        .trimmed();
}

/// Whether an address may be one of a form with alternatives, such as "tcp://HOST:PORT|FILE": only the driver
/// knows for certain. It begins like an alternative that begins with a scheme, or has no scheme at all.
bool MayHaveForm(const QString& address, const QString& form) {
    static const QRegularExpression scheme(u"^[a-z][a-z0-9+.-]*://"_s,
                                           QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression separator(u"[| ,]+"_s);
    const QStringList alternatives = form.split(separator);
    return address.isEmpty() || std::ranges::any_of(alternatives, [&address](const QString& each) {
               return scheme.match(address).captured().compare(scheme.match(each).captured(),
                                                               Qt::CaseInsensitive) == 0;
           });
}

long GetKey(const ValueDescriptor& source) {
    return Tree::Instance()->Find<ValueSelection>(ZANPath::Server(source))->GetCurrentKey();
}

} // namespace

Finding CheckDriver(const DriverChoice& choice) {
    const QList<DriverLibrary::Entry> entries = DriverLibrary::List();
    const auto found = std::ranges::find_if(entries, [&choice](const DriverLibrary::Entry& each) {
        return each.fault.isEmpty() && each.description.name == choice.name;
    });
    if (found == entries.end()) {
        return {Severity::Error, DescribeMissingDriver(choice.name, entries)};
    }
    const KvZANCommon::DriverDescription& driver = found->description;
    if (driver.addressForm.isEmpty() && !choice.address.isEmpty()) {
        return {Severity::Warning, u"%1 takes no address, and has \"%2\""_s.arg(driver.name, choice.address)};
    }
    if (!MayHaveForm(choice.address, driver.addressForm)) {
        return {Severity::Warning,
                u"the address \"%1\" does not have the form that %2 wants: %3, such as %4"_s.arg(
                    choice.address, driver.name, driver.addressForm, driver.addressExample)};
    }
    if (choice.name == DriverChoice::SIMULATOR) {
        return {Severity::Warning, u"the device is simulated: none of its bearings is real. \"zanstation run "
                                   "--driver NAME --address ADDRESS\" chooses another one"_s};
    }
    return {Severity::Ok, choice.address.isEmpty() ? driver.name : driver.name + u' ' + choice.address};
}

std::optional<Finding> CheckGpsd() {
    using namespace StdDeviceDefinition;
    const QString text =
        CfgCenter::GetAppCfg(ICfg::View::Outputs).GetString(GpsdSettings::ADDRESS.toString(), {});
    const bool isChosen = GetKey(g_vdPosSource) == StationPosition::SOURCE_GPSD ||
                          GetKey(g_vdHeaSource) == StationAttitude::SOURCE_GPSD;
    if (!isChosen || (!text.isNull() && !GpsdAddress::Read(text))) {
        return {};
    }
    const GpsdAddress address = GpsdSettings::Read().address;
    GpsdClient::Timing timing;
    timing.answer = std::chrono::seconds(2); // gpsd greets at once, and an operator waits for all findings
    QEventLoop loop;
    std::optional<GpsdClient> client;
    const auto ignoreReport = [](const GpsdReport&) {};
    const auto endWhenItIsKnown = [&] {
        if (client->GetState() != GpsdClient::EState::CONNECTING) {
            loop.quit();
        }
    };
    client.emplace(address, timing, ignoreReport, endWhenItIsKnown);
    client->Start();
    loop.exec();
    if (client->GetState() == GpsdClient::EState::CONNECTED) {
        return Finding{Severity::Ok, address.ToText() + u" answers"_s};
    }
    return Finding{Severity::Warning, u"does not answer: "_s + client->GetLastFailure()};
}

Finding CheckDeviceType() {
    const QString type =
        Tree::Instance()->Find<ValueString>(ZANPath::Device(StdDeviceDefinition::g_vdDevType))->GetValue();
    QStringList known;
    for (const auto& row : ZANCharacteristics::s_aDeviceTypeNames) {
        known.append(row.name.toString());
    }
    return known.contains(type)
               ? Finding{Severity::Ok, type}
               : Finding{Severity::Error,
                         u"unknown type \"%1\", it is treated as ZANTIDE; known types are %2"_s.arg(
                             type, known.join(u", "_s))};
}

Finding CheckAntennaSetup() {
    QString verdict;
    const bool isValid = Station::GetCharacteristics().CheckAntennaSetupValidity(nullptr, verdict);
    return {isValid ? Severity::Ok : Severity::Error, verdict};
}

Finding CheckHardware() {
    HwStatusTester hardware(ZANPath::SERVER.toString());
    hardware.ReadHwRequirementsFromTree();
    hardware.ReadHwListFromTree();
    if (!hardware.GetCheckRequirements()) {
        return {Severity::Absent, u"not checked"_s};
    }
    const std::set<QString> missing = hardware.FindMissingRequiredHardware();
    return missing.empty()
               ? Finding{Severity::Ok, u"all required components are installed"_s}
               : Finding{Severity::Error, u"required and missing: "_s +
                                              QStringList(missing.begin(), missing.end()).join(u", "_s)};
}

Finding CheckFrequency(double frequency) {
    const QString text = FrequencyText::Format(frequency);
    return Station::GetCharacteristics().GetAntennaForFrequency(frequency, false)
               ? Finding{Severity::Ok, text}
               : Finding{Severity::Error, u"no enabled antenna serves "_s + text};
}

} // namespace ZANServer::StationCheck
