#include "zanserver/stationcheck.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "valueframework/valuetypes.h"
#include "zancommon/hwstatustester.h"
#include "zancommon/zanpath.h"
#include "zanserver/frequencytext.h"
#include "zanserver/station.h"

#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ZANServer::StationCheck {

using Severity = Finding::Severity;

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
