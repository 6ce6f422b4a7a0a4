#include "zanserver/deviceproperties.h"

#include "stddevicedefinition/antbuilder.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "zancommon/hwstatustester.h"
#include "zancommon/zancharacteristicstools.h"
#include "zancommon/zanoptions.h"
#include "zancommon/zanpath.h"
#include "zanserver/antennaentries.h"
#include "zanserver/plural.h"
#include "zanserver/servervalue.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;
using namespace KvZANCommon;
using StdDeviceTree::Ant;

namespace ZANServer {

namespace {

QString DevicePath() {
    return ZANPath::DEVICE_NODE.toString();
}

const ConverterSetupStruct* FindConverter(const DeviceReading& reading, qint32 handle) {
    const auto found = std::ranges::find(reading.converters, handle, &ConverterSetupStruct::handle);
    return found == reading.converters.end() ? nullptr : &*found;
}

/// The methods of an antenna of the device, as its sub-ranges together have them.
void SetMethods(const DeviceReading::Antenna& source, AntennaData& antenna) {
    constexpr std::array<std::pair<qint32, EZANMethod>, 4> METHODS{{{METHODDETAILED_WAT, METHOD_WAT},
                                                                    {METHODDETAILED_COR, METHOD_COR},
                                                                    {METHODDETAILED_VEC, METHOD_VEC},
                                                                    {METHODDETAILED_SUPR, METHOD_SUPR}}};
    qint32 mask = source.subRange.dfMethods;
    if (source.setup) {
        for (const AntennaSubRangeStruct& each : source.setup->subRanges) {
            mask |= each.dfMethods;
        }
    }
    const ZANCharacteristicsTools tools;
    antenna.dfMethods.clear();
    antenna.dfAlgorithms.clear();
    for (const auto& [bit, method] : METHODS) {
        if ((mask & bit) != 0) {
            antenna.dfMethods.push_back(static_cast<quint32>(method));
            antenna.dfAlgorithms.append(tools.TranslateDfMethod(static_cast<unsigned long>(method)));
        }
    }
}

/// What only the device knows of an antenna.
void TakeOver(const DeviceReading& reading, const DeviceReading::Antenna& source, AntennaData& antenna) {
    const AntennaPropertyStruct& property = source.property;
    antenna.handle = property.handle;
    antenna.minFreq = property.minFrequency;
    antenna.maxFreq = property.maxFrequency;
    antenna.compassSupport = property.compassSupport;
    antenna.polarizationSupport = property.polarisationSupport;
    antenna.activePassiveSupport = property.activePassiveSupport;
    if (source.setup) {
        antenna.compassHandle = source.setup->compassHandle;
        antenna.converterHandle = source.setup->converterHandle;
    }
    if (const auto* const converter = FindConverter(reading, antenna.converterHandle)) {
        antenna.converterTypeName = converter->typeName;
    }
    const auto compass =
        std::ranges::find(reading.compasses, antenna.compassHandle,
                          [](const DeviceReading::Compass& each) { return each.property.handle; });
    antenna.compassValue =
        compass != reading.compasses.end() && compass->value ? static_cast<float>(*compass->value) : -1.0F;
    const FrequencyRange coverage = CoverageOf(antenna);
    if (!(antenna.minRange < antenna.maxRange) || !coverage.Contains(RangeOf(antenna))) {
        SetRange(antenna, coverage);
    }
    if (antenna.dfMethods.empty()) {
        SetMethods(source, antenna);
    }
}

/// An antenna as the device has set it up.
AntennaData Make(const DeviceReading& reading, const DeviceReading::Antenna& source) {
    AntennaData antenna;
    antenna.name = source.property.name;
    if (source.setup) {
        SetRange(antenna, {source.setup->range.first, source.setup->range.second});
        antenna.mechOffset = static_cast<float>(source.setup->mechanicalOffset);
        antenna.compassEnabled = source.setup->compassHandle >= 0;
        if (source.setup->polarisation >= POLARISATION_LEFT &&
            source.setup->polarisation <= POLARISATION_HORIZONTAL) {
            antenna.polarizationMode = static_cast<EZANPolarisation>(source.setup->polarisation);
        }
    }
    TakeOver(reading, source, antenna);
    return antenna;
}

} // namespace

void DeviceProperties::Publish(const DeviceReading& reading) {
    m_warnings = reading.faults;
    if (reading.type) {
        DeviceValue<ValueString>(g_vdDevType)->SetValue(*reading.type);
    }
    if (reading.options) {
        DeviceValue<ValueString>(g_vdDevOptions)->SetValue(*reading.options);
        if (!ZANOptions::Instance()->ReadFromValueTree(ZANPath::Device(g_vdDevOptions)) &&
            !reading.options->isEmpty()) {
            m_warnings.append(
                u"an option of the device is not known; it and the options after it are ignored: "_s +
                *reading.options);
        }
    }
    if (reading.maxChannelCount) {
        DeviceValue<ValueNumericInt>(g_vdDevMaxChannelCount)->SetValue(*reading.maxChannelCount);
    }
    if (!reading.antennas.empty()) {
        PublishAntennas(reading);
    }
    if (reading.components) {
        PublishComponents(reading);
    }
    auto* const warnings = DeviceValue<ValueStringList>(g_vdDevWarnings);
    const auto transaction = warnings->CreateTransaction({TChangeCode::ListReplaced});
    warnings->Clear();
    for (const QString& each : std::as_const(m_warnings)) {
        warnings->PushBack(each);
    }
}

void DeviceProperties::PublishAntennas(const DeviceReading& reading) {
    AntennaDataList published(DevicePath(), {});
    published.ReadAntennasFromValueTree({});
    AntennaDataList antennas(DevicePath(), {});
    std::set<QString> known;
    QStringList missing;
    std::set<QString> switchedOff;
    for (const auto& entry : published.GetAntennas()) {
        if (m_added.contains(entry->name)) {
            continue; // of the device before
        }
        AntennaData antenna = *entry;
        antenna.enabled = antenna.enabled || m_switchedOff.contains(antenna.name);
        const auto found =
            std::ranges::find_if(reading.antennas, [&antenna](const DeviceReading::Antenna& each) {
                return each.property.name == antenna.name;
            });
        known.insert(antenna.name);
        if (found != reading.antennas.end()) {
            TakeOver(reading, *found, antenna);
        } else {
            missing.append(antenna.name);
            if (antenna.enabled) {
                switchedOff.insert(antenna.name);
            }
            antenna.enabled = false;
            antenna.handle = -1;
        }
        antennas.AddAntenna(antenna);
    }
    m_switchedOff = switchedOff;
    m_added.clear();
    for (const DeviceReading::Antenna& each : reading.antennas) {
        if (!known.contains(each.property.name)) {
            m_added.insert(each.property.name);
            antennas.AddAntenna(Make(reading, each));
        }
    }
    antennas.DeleteAllAntennasFromValueTree({});
    antennas.WriteAntennasToValueTree({});
    missing.removeDuplicates();
    if (missing != m_namedMissing && !missing.isEmpty()) {
        m_warnings.append(u"the device does not have the %1 %2 of the settings; disabled"_s.arg(
            missing.size() == 1 ? u"antenna"_s : u"antennas"_s, missing.join(u", "_s)));
    }
    m_namedMissing = missing;
}

void DeviceProperties::PublishComponents(const DeviceReading& reading) {
    auto* const information = ServerValue<ValueSelection>(g_vdDevInfo);
    {
        const auto transaction = information->CreateTransaction({TChangeCode::Changed});
        information->Clear();
        long line = 0;
        const auto add = [&](const QString& text) { information->AddItem({text, 0.0, line++}); };
        // Each line: number; kind; version; component. A line with ">>" names none.
        add(u">>Components"_s);
        for (const ComponentInfo& each : *reading.components) {
            QString name = each.name;
            QString version = u"%1 (%2)"_s.arg(each.version, each.serialNumber);
            name.replace(u';', u',');
            version.replace(u';', u',');
            if (each.operational) {
                add(u"%1;component;%2;%3"_s.arg(QString::number(line), version, name));
            } else {
                add(u">>%1 does not work"_s.arg(name));
                m_warnings.append(u"the component %1 does not work"_s.arg(name));
            }
        }
    }
    information->SetState(TValueState::Valid);
    HwStatusTester hardware(ZANPath::SERVER.toString());
    hardware.ReadHwListFromTree();
    hardware.ReadHwRequirementsFromTree();
    if (hardware.GetCheckRequirements()) {
        const std::set<QString> missing = hardware.FindMissingRequiredHardware();
        if (!missing.empty()) {
            m_warnings.append(u"required hardware is missing: "_s +
                              QStringList(missing.begin(), missing.end()).join(u", "_s));
        }
    }
}

void DeviceProperties::PublishCompass(unsigned long handle, const std::optional<double>& value) {
    for (const Ant& antenna : AntennaEntries::GetNodes()) {
        const auto* const compass = antenna.GetValue<ValueNumericInt>(g_vdAntCompassHandle);
        auto* const shown = antenna.GetValue<ValueNumericDouble>(g_vdAntCompassValue);
        if (compass && shown && std::cmp_equal(compass->GetValue(), handle)) {
            const bool isShown = value && shown->SetValue(*value);
            shown->SetState(isShown ? TValueState::Valid : TValueState::NotMeasured);
        }
    }
}

void DeviceProperties::ForgetMeasured() {
    for (const Ant& antenna : AntennaEntries::GetNodes()) {
        if (auto* const value = antenna.GetValue<ValueBase>(g_vdAntCompassValue)) {
            value->SetState(TValueState::NotMeasured);
        }
    }
}

} // namespace ZANServer
