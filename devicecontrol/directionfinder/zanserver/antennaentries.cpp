#include "zanserver/antennaentries.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "valueframework/valuetypes.h"
#include "zancommon/antennadatalist.h"
#include "zancommon/zanpath.h"

#include <algorithm>

using namespace StdDeviceDefinition;
using KvZANCommon::AntennaSetupStruct;
using StdDeviceTree::Ant;

namespace ZANServer::AntennaEntries {

namespace {

QString DevicePath() {
    return ZANPath::DEVICE_NODE.toString();
}

template <class T, class Content>
void Set(const Ant& node, const ValueDescriptor& descriptor, Content content, IObserver* originator) {
    if (T* const value = node.GetValue<T>(descriptor)) {
        value->SetValue(content, originator);
    }
}

/// What an operator has chosen of an antenna, in that of the device.
void Apply(const AntennaData& entry, AntennaSetupStruct& setup) {
    setup.mechanicalOffset = static_cast<double>(entry.mechOffset);
    if (entry.polarizationSupport) {
        setup.polarisation = entry.polarizationMode;
    }
    setup.compassHandle = entry.compassEnabled ? entry.compassHandle : -1;
}

/// The other way round. The device tells of a compass only which one it uses.
void TakeOver(const AntennaSetupStruct& setup, AntennaData& entry) {
    entry.mechOffset = static_cast<float>(setup.mechanicalOffset);
    if (entry.polarizationSupport && setup.polarisation >= POLARISATION_LEFT &&
        setup.polarisation <= POLARISATION_HORIZONTAL) {
        entry.polarizationMode = static_cast<EZANPolarisation>(setup.polarisation);
    }
    entry.compassEnabled = setup.compassHandle >= 0;
}

} // namespace

std::vector<Ant> GetNodes() {
    std::vector<Ant> nodes;
    if (const Node* const device = Tree::Instance()->GetNode(DevicePath())) {
        for (ITreeItem* const item : device->GetTreeItems()) {
            if (Ant::IsAntenna(item)) {
                nodes.emplace_back(static_cast<Node*>(item));
            }
        }
    }
    return nodes;
}

std::vector<AntennaData> Read() {
    AntennaDataList list;
    list.ReadAntennasFromValueTree(DevicePath());
    std::vector<AntennaData> entries;
    for (const auto& antenna : list.GetAntennas()) {
        entries.push_back(*antenna);
    }
    return entries;
}

std::vector<AntennaSetupStruct> ToSetups(const std::vector<AntennaData>& entries,
                                         const std::vector<AntennaSetupStruct>& device) {
    std::vector<AntennaSetupStruct> setups;
    for (const AntennaSetupStruct& ofDevice : device) {
        FrequencyRange range = FrequencyRange::None();
        AntennaSetupStruct setup = ofDevice;
        for (const AntennaData& entry : entries) {
            if (entry.enabled && entry.handle == ofDevice.handle) {
                if (range == FrequencyRange::None()) {
                    Apply(entry, setup);
                }
                range = range.Join(RangeOf(entry));
            }
        }
        if (range != FrequencyRange::None()) {
            setup.range = {range.low, range.high};
            setups.push_back(setup);
        }
    }
    return setups;
}

std::vector<AntennaData> FromSetups(std::vector<AntennaData> entries,
                                    const std::vector<AntennaSetupStruct>& setups) {
    for (const AntennaSetupStruct& setup : setups) {
        AntennaData* lowest = nullptr;
        AntennaData* highest = nullptr;
        for (AntennaData& entry : entries) {
            if (!entry.enabled || entry.handle != setup.handle) {
                continue;
            }
            TakeOver(setup, entry);
            lowest = lowest && lowest->minRange <= entry.minRange ? lowest : &entry;
            highest = highest && highest->maxRange >= entry.maxRange ? highest : &entry;
        }
        if (lowest && highest) {
            lowest->minRange = setup.range.first;
            highest->maxRange = setup.range.second;
        }
    }
    return entries;
}

void WriteBack(const std::vector<AntennaData>& entries, IObserver* originator) {
    const std::vector<Ant> nodes = GetNodes();
    for (std::size_t i = 0; i < std::min(nodes.size(), entries.size()); ++i) {
        const AntennaData& entry = entries[i];
        const auto* const name = nodes[i].GetValue<ValueString>(g_vdAntName);
        if (!name || name->GetValue() != entry.name) {
            continue;
        }
        Set<ValueBool>(nodes[i], g_vdAntEnabled, entry.enabled, originator);
        Set<ValueNumericDouble>(nodes[i], g_vdAntMinRange, entry.minRange, originator);
        Set<ValueNumericDouble>(nodes[i], g_vdAntMaxRange, entry.maxRange, originator);
        Set<ValueNumericDouble>(nodes[i], g_vdAntMechOffset, static_cast<double>(entry.mechOffset),
                                originator);
        Set<ValueBool>(nodes[i], g_vdAntCompassEnabled, entry.compassEnabled, originator);
        Set<ValueNumericInt>(nodes[i], g_vdAntPolarizationMode, static_cast<int>(entry.polarizationMode),
                             originator);
    }
}

void Observe(IObserver* observer) {
    for (const Ant& node : GetNodes()) {
        for (const ValueDescriptor* const each :
             {&g_vdAntEnabled, &g_vdAntMinRange, &g_vdAntMaxRange, &g_vdAntMechOffset, &g_vdAntCompassEnabled,
              &g_vdAntPolarizationMode}) {
            if (auto* const value = node.GetValue<ValueBase>(*each)) {
                value->AddObserver(observer);
            }
        }
    }
}

} // namespace ZANServer::AntennaEntries
