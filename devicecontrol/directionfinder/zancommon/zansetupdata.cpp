#include "zancommon/zansetupdata.h"

#include "kwbase/tracesource.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/icfg.h"
#include "valueframework/tree.h"
#include "valueframework/valuefactory.h"
#include "valueframework/valuetypes.h"
#include "zancommon/closedtable.h"
#include "zancommon/hwstatustester.h"
#include "zancommon/stationcfg.h"
#include "zancommon/zanvaluenames.h"

#include <utility>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

std::array<ZANSetupData::DataEntry, 23> ZANSetupData::s_aDataEntries{{
    {u"LastModification"_s, &g_vdCfgModifyTime, {}, nullptr},
    {u"Message4CalError"_s, &g_vdKnownCalErrorMessage, {}, nullptr},
    {u"Message4Startup"_s, &g_vdKnownDevErrorMessage, {}, nullptr},
    {u"UseJobSettings4FFM"_s, nullptr, ZANValueName::USEJOBSETTINGSFORFFM.toString(), nullptr},
    {u"SynFastMode"_s, &g_vdSynFastMode, {}, nullptr},
    {u"LocationLatitude"_s, &g_vdPosLatitude, {}, nullptr},
    {u"LocationLongitude"_s, &g_vdPosLongitude, {}, nullptr},
    {u"LocationChoice"_s, &g_vdPosSource, {}, nullptr},
    {u"PreAmplifierHf"_s, &g_vdPreAmplifierHf, {}, nullptr},
    {u"PreAmplifierVuhf"_s, &g_vdPreAmplifierVuhf, {}, nullptr},
    {u"GainControlMode"_s, &g_vdGainControlMode, {}, nullptr},
    {u"AGCDecay"_s, &g_vdAGCDecay, {}, nullptr},
    {u"MGCLevel"_s, &g_vdMGCLevel, {}, nullptr},
    {u"AntennaActive"_s, &g_vdAntennaActive, {}, nullptr},
    {u"AntennaPolarization"_s, &g_vdPolarisation, {}, nullptr},
    {u"GPSSynchronization"_s, &g_vdPosCalculation, {}, nullptr},
    {u"CompassChoice"_s, &g_vdHeaSource, {}, nullptr},
    {u"DFMechOffset"_s, &g_vdHeaOffset, {}, nullptr},
    {u"Declination"_s, &g_vdDeclination, {}, nullptr},
    {u"PitchThreshold"_s, &g_vdPitchThreshold, {}, nullptr},
    {u"RollThreshold"_s, &g_vdRollThreshold, {}, nullptr},
    {u"CalibrationSchedule"_s, nullptr, u"CalibrationSchedule"_s, nullptr},
    {},
}};

namespace {

constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\zansetupdata");

/// Loads a snapshot. A setting that is not valid for its value is traced, and the snapshot is not changed.
void ReadSnapshot(const ICfg& cfg, const QString& key, ValueBase& value) {
    bool isLoaded = true;
    if (auto* selection = dynamic_cast<ValueSelection*>(&value)) {
        const long current = selection->GetCurrentKey();
        const auto stored = static_cast<long>(cfg.GetInt(key, current));
        isLoaded = stored == current || selection->SetCurrentKey(stored, nullptr);
    } else if (auto* flag = dynamic_cast<ValueBool*>(&value)) {
        flag->SetValue(cfg.GetBool(key, flag->GetValue()), nullptr);
    } else {
        isLoaded = value.SetStringValue(cfg.GetString(key, value.GetStringValue()), nullptr);
    }
    if (!isLoaded) {
        TRACE.Information([&key] { return u"WARNING: the setting "_s + key + u" cannot be used"_s; });
    }
}

void WriteSnapshot(ICfg& cfg, const QString& key, const ValueBase& value) {
    if (const auto* selection = dynamic_cast<const ValueSelection*>(&value)) {
        cfg.SetInt(key, selection->GetCurrentKey());
    } else if (const auto* flag = dynamic_cast<const ValueBool*>(&value)) {
        cfg.SetBool(key, flag->GetValue());
    } else {
        cfg.SetString(key, value.GetStringValue());
    }
}

} // namespace

QString ZANSetupData::DataEntry::PathBelowBase() const {
    return descriptor ? descriptor->PathName() : u'/' + alternativeName;
}

ZANSetupData::ZANSetupData(QString name, QString basePath)
    : m_name(std::move(name))
    , m_basePath(std::move(basePath)) {}

ZANSetupData::~ZANSetupData() {
    for (DataEntry& row : Rows(s_aDataEntries)) {
        row.value.reset();
    }
}

void ZANSetupData::ReadFromValueTree(const QString& path) {
    for (DataEntry& row : Rows(s_aDataEntries)) {
        const ValueBase* const value = FindValue(path, &row);
        // A snapshot cannot take over a value that has another type now.
        if (!value || !row.value || !row.value->Assign(*value)) {
            row.value = value ? ValueFactory::Instance().CloneValue(*value) : nullptr;
        }
    }
}

void ZANSetupData::WriteToValueTree(IObserver* originator, const QString& path) {
    for (const DataEntry& row : Rows(s_aDataEntries)) {
        ValueBase* const value = row.value ? FindValue(path, &row) : nullptr;
        if (value) {
            value->SetStringValue(row.value->GetStringValue(), originator);
        }
    }
}

void ZANSetupData::ReadFromCfg(const QString& station) {
    if (const CfgPtr cfg{StationCfg::GetStationCfg(station, false)}) {
        for (const DataEntry& row : Rows(s_aDataEntries)) {
            if (row.value) {
                ReadSnapshot(*cfg, row.key, *row.value);
            }
        }
    }
}

void ZANSetupData::WriteToCfg(const QString& station) {
    const CfgPtr cfg(StationCfg::GetStationCfg(station, true));
    if (!cfg) {
        return;
    }
    for (const DataEntry& row : Rows(s_aDataEntries)) {
        if (row.value) {
            WriteSnapshot(*cfg, row.key, *row.value);
        }
    }
    HwStatusTester hardware(ZANPath::SERVER.toString());
    hardware.ReadHwRequirementsFromTree();
    hardware.WriteHwRequirementsToCfg(cfg.get());
}

void ZANSetupData::PrintSetupTrace() const {
    const auto trace = [](const QString& key, const QString& path, const QString& value) {
        TRACE.Information(
            [&] { return key.leftJustified(30) + u' ' + path.leftJustified(30) + u' ' + value; });
    };
    trace(u"KEY"_s, u"PATH"_s, u"VALUE"_s);
    for (const DataEntry& row : Rows(s_aDataEntries)) {
        trace(row.key, row.PathBelowBase(), row.value ? row.value->GetStringValue() : u"NULL"_s);
    }
}

std::span<const ZANSetupData::DataEntry> ZANSetupData::GetEntries() {
    return Rows(s_aDataEntries);
}

ValueBase* ZANSetupData::FindValue(const QString& path, const DataEntry* row) const {
    const QString& base = path.isEmpty() ? m_basePath : path;
    return base.isEmpty() ? nullptr : Tree::Instance()->GetValue(Tree::PathBelow(base, row->PathBelowBase()));
}
