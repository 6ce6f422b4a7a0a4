#include "zancommon/antennadatalist.h"

#include "kwbase/tracesource.h"
#include "stddevicedefinition/antbuilder.h"
#include "tolmappstartup/icfg.h"
#include "valueframework/tree.h"
#include "zancommon/antennanode.h"
#include "zancommon/antennasection.h"
#include "zancommon/stationcfg.h"

#include <algorithm>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;
using StdDeviceDefinition::AntBuilder;
using StdDeviceDefinition::StdDeviceTree::Ant;

namespace {

// The lines of the list and of its records have one origin.
constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\antennadata");

/// Whether the first antenna is sorted before the second one. Not transitive for coverages within one
/// another.
bool IsBefore(const AntennaData& a, const AntennaData& b) {
    if (b.minFreq > a.minFreq && b.maxFreq >= a.maxFreq) {
        return true;
    }
    return !(b.maxFreq < a.maxFreq) && a.name < b.name;
}

/// The families whose compass is never switched on by default.
bool IsCompassLeftAlone(const AntennaData& antenna) {
    return antenna.name.contains("PX104"_L1) || antenna.name.contains("PX112"_L1);
}

QString ToText(double number) {
    return QString::number(number, 'g', 6);
}

} // namespace

// NOLINTNEXTLINE(modernize-pass-by-value): as the other operations take their texts
AntennaDataList::AntennaDataList(const QString& basePath, const QString& setupName)
    : m_basePath(basePath)
    , m_setupName(setupName.isEmpty() ? u"Default"_s : setupName) {}

AntennaDataList::~AntennaDataList() = default;

void AntennaDataList::Clear() {
    m_antennas.clear();
}

void AntennaDataList::CopyFrom(const AntennaDataList& other) {
    std::vector<std::shared_ptr<AntennaData>>
        antennas; // a new vector, because the other list may be this one
    for (const auto& antenna : other.m_antennas) {
        antennas.push_back(std::make_shared<AntennaData>(*antenna));
    }
    m_antennas = std::move(antennas);
    m_basePath = other.m_basePath;
    m_setupName = other.m_setupName;
    m_allowSave = other.m_allowSave;
    SortAntennasByFrequencyRanges();
}

bool AntennaDataList::AddAntenna(AntennaData* ant) {
    if (ant) {
        m_antennas.emplace_back(ant);
    }
    return true;
}

void AntennaDataList::AddAntenna(const AntennaData& antenna) {
    m_antennas.push_back(std::make_shared<AntennaData>(antenna));
}

bool AntennaDataList::DeleteAntenna(AntennaData* ant) {
    if (!ant) {
        return false;
    }
    const auto found =
        std::ranges::find_if(m_antennas, [ant](const auto& each) { return each->name == ant->name; });
    if (found == m_antennas.end()) {
        return false;
    }
    m_antennas.erase(found);
    return true;
}

AntennaData* AntennaDataList::GetAntennaByIndex(int i) const {
    const auto index = static_cast<std::size_t>(i);
    return index < m_antennas.size() ? m_antennas[index].get() : nullptr;
}

AntennaData* AntennaDataList::GetAntennaByHandle(long h) const {
    const auto found = std::ranges::find_if(m_antennas, [h](const auto& each) { return each->handle == h; });
    return found == m_antennas.end() ? nullptr : found->get();
}

AntennaData* AntennaDataList::GetAntennaForFreqRange(double lo, double hi) const {
    const auto found = std::ranges::find_if(m_antennas, [lo, hi](const auto& each) {
        return each->enabled && RangeOf(*each).Contains(FrequencyRange{lo, hi});
    });
    return found == m_antennas.end() ? nullptr : found->get();
}

AntennaData* AntennaDataList::GetAntennaForFrequency(double f, bool preferRangeStart,
                                                     EZANPolarisation pol) const {
    if (preferRangeStart) {
        for (const auto& antenna : m_antennas) {
            if (antenna->enabled && antenna->minRange == f) {
                return antenna.get();
            }
        }
    }
    AntennaData* fallback = nullptr;
    for (const auto& antenna : m_antennas) {
        if (antenna->enabled && RangeOf(*antenna).Contains(f)) {
            if (antenna->polarizationMode == pol) {
                return antenna.get();
            }
            fallback = antenna.get();
        }
    }
    return fallback;
}

bool AntennaDataList::ContainsHFAntenna() const {
    constexpr double HF = 1e7;
    return GetAntennaForFrequency(HF, false, POLARISATION_VERTICAL) != nullptr;
}

std::set<long> AntennaDataList::GetAntennaHandles(bool onlyEnabled) const {
    std::set<long> handles;
    for (const auto& antenna : m_antennas) {
        if (antenna->enabled || !onlyEnabled) {
            handles.insert(antenna->handle);
        }
    }
    return handles;
}

bool AntennaDataList::GetCommonAntennaByHandle(long h, AntennaData& out) const {
    bool isFound = false;
    bool isAnyEnabled = false;
    for (const auto& antenna : m_antennas) {
        if (antenna->handle != h) {
            continue;
        }
        isAnyEnabled = isAnyEnabled || antenna->enabled;
        if (!isFound) {
            isFound = true;
            out = *antenna;
            if (!antenna->enabled) { // only enabled entries contribute to the range
                out.minRange = std::numeric_limits<double>::max();
                out.maxRange = 0.0;
            }
            continue;
        }
        out.minFreq = std::min(out.minFreq, antenna->minFreq);
        out.maxFreq = std::max(out.maxFreq, antenna->maxFreq);
        if (antenna->enabled) {
            out.minRange = std::min(out.minRange, antenna->minRange);
            out.maxRange = std::max(out.maxRange, antenna->maxRange);
        }
    }
    out.enabled = isAnyEnabled;
    if (isFound && out.maxRange == 0.0) {
        out.minRange = out.minFreq;
        out.maxRange = out.minFreq;
        out.enabled = false;
    }
    return isFound;
}

void AntennaDataList::SortAntennasByFrequencyRanges() {
    // An insertion sort stays within the list although the comparison is not transitive; the standard sorts
    // do not guarantee that. There are only about a dozen antennas.
    for (auto entry = m_antennas.begin(); entry != m_antennas.end(); ++entry) {
        auto place = entry;
        while (place != m_antennas.begin() && IsBefore(**entry, **std::prev(place))) {
            --place;
        }
        std::rotate(place, entry, std::next(entry));
    }
}

void AntennaDataList::MakeAntennaRangesDisjoint() {
    double previousEnd = std::numeric_limits<double>::lowest();
    for (const auto& antenna : m_antennas) {
        if (!antenna->enabled) {
            continue;
        }
        if (previousEnd > 0.0 && previousEnd == antenna->minRange) {
            antenna->minRange += FrequencyRange::STEP;
        }
        previousEnd = antenna->maxRange;
    }
}

void AntennaDataList::SetStartupDefaults(bool compassA, bool compassB) {
    const auto setCompass = [isOn = compassA || compassB](AntennaData& antenna) {
        if (!IsCompassLeftAlone(antenna)) {
            antenna.compassEnabled = isOn;
        }
    };
    AntennaData* previous = nullptr;
    for (const auto& antenna : m_antennas) {
        if (previous) {
            if (!antenna->enabled) {
                continue;
            }
            const bool isSamePolarisation = antenna->polarizationMode == previous->polarizationMode;
            if (isSamePolarisation && antenna->minRange == previous->minRange &&
                antenna->maxRange == previous->maxRange) {
                antenna->enabled = false;
            } else if (isSamePolarisation && previous->maxRange >= antenna->minRange) {
                previous->maxRange = antenna->minRange;
                antenna->minRange += FrequencyRange::STEP;
            }
        }
        setCompass(*antenna);
        previous = antenna.get(); // also a disabled first entry, and one that was just disabled
    }
}

void AntennaDataList::PrintAntennaTrace() const {
    for (const auto& antenna : m_antennas) {
        TRACE.Information([&antenna] {
            return u"Antenna name=%1 handle=%2 enabled=%3 frequency=%4-%5 range=%6-%7 (at converter %8)"_s
                .arg(antenna->name, QString::number(antenna->handle), antenna->enabled ? u"1"_s : u"0"_s,
                     ToText(antenna->minFreq), ToText(antenna->maxFreq), ToText(antenna->minRange),
                     ToText(antenna->maxRange), antenna->converterTypeName);
        });
    }
}

int AntennaDataList::BuildAntennasFromCfg(const QString& station) {
    const CfgPtr cfg(StationCfg::GetStationCfg(station, false));
    if (!cfg) {
        return 0;
    }
    const int count = static_cast<int>(
        std::clamp<qint64>(cfg->GetInt(u"SystemConfiguration/AntennaCount"_s, 1), 0, MAX_ANTENNA_COUNT));
    for (int i = 0; i < count; ++i) {
        const CfgPtr section = AntennaSection::Open(*cfg, i);
        if (!section) {
            continue;
        }
        AntennaData antenna;
        AntennaSection::Read(*section, AntennaSection::EKeys::ALL, antenna);
        for (const QString& method : std::as_const(antenna.dfAlgorithms)) {
            antenna.dfMethods.push_back(static_cast<quint32>(m_tools.TranslateDfMethod(method)));
        }
        AddAntenna(antenna);
    }
    MakeAntennaRangesDisjoint();
    return count;
}

bool AntennaDataList::ReadAntennaSetupFromCfg(const QString& station) {
    SortAntennasByFrequencyRanges();
    const CfgPtr cfg(StationCfg::GetStationCfg(station, false));
    if (!cfg) {
        return false;
    }
    int next = 0;
    double previousMaxFreq = -1.0;
    for (const auto& antenna : m_antennas) {
        CfgPtr section;
        QString name;
        do {
            section = AntennaSection::Open(*cfg, next++);
            name = section ? AntennaSection::ReadName(*section) : QString();
        } while (!name.isEmpty() && name != antenna->name);
        if (name.isEmpty()) {
            break;
        }
        AntennaSection::Read(*section, AntennaSection::EKeys::CHOICE, *antenna);
        if (antenna->minRange == previousMaxFreq) {
            antenna->minRange += FrequencyRange::STEP;
        }
        previousMaxFreq = antenna->maxFreq; // its coverage, not the range in which it is used
    }
    MakeAntennaRangesDisjoint();
    return true;
}

void AntennaDataList::WriteAntennaSetupToCfg(const QString& station) {
    if (!m_allowSave) {
        return;
    }
    const CfgPtr cfg(StationCfg::GetStationCfg(station, true));
    if (!cfg) {
        return;
    }
    int count = 0;
    for (const auto& antenna : m_antennas) {
        if (const CfgPtr section = AntennaSection::Open(*cfg, count)) {
            AntennaSection::Write(*section, *antenna);
            ++count;
        }
    }
    const QString countKey = u"SystemConfiguration/AntennaCount"_s;
    cfg->SetInt(countKey, count);
    cfg->CommitKey(countKey);
}

int AntennaDataList::ReadAntennasFromValueTree(const QString& path) {
    Clear();
    for (Node* item : GetAntennaNodes(path)) {
        auto antenna = std::make_shared<AntennaData>();
        AntennaNode(item, m_tools).Read(AntennaNode::EValues::ALL, *antenna);
        m_antennas.push_back(std::move(antenna));
    }
    return static_cast<int>(m_antennas.size());
}

int AntennaDataList::UpdateAntennasFromValueTree(const QString& path) {
    int count = 0;
    for (Node* item : GetAntennaNodes(path)) {
        const AntennaNode node(item, m_tools);
        AntennaData published;
        node.Read(AntennaNode::EValues::IDENTITY, published);
        AntennaData* const antenna = GetAntennaByIndex(count);
        if (antenna && antenna->name == published.name && CoverageOf(*antenna) == CoverageOf(published)) {
            node.Read(AntennaNode::EValues::EDITABLE, *antenna);
            ++count;
        } else {
            TRACE.Information([&published] {
                return u"WARNING: antenna %1 %2 - %3 (handle=%4) in value tree does not match AntennaDataList"_s
                    .arg(published.name, ToText(published.minFreq), ToText(published.maxFreq),
                         QString::number(published.handle));
            });
        }
    }
    return count;
}

void AntennaDataList::WriteAntennasToValueTree(const QString& path) {
    Node* const parent = GetNode(path);
    for (const auto& antenna : m_antennas) {
        Node* const pAnt = AntBuilder::InsertChild(parent);
        if (!pAnt) {
            TRACE.Assertion(L"pAnt");
            continue;
        }
        AntennaNode(pAnt, m_tools).Write(*antenna);
    }
}

void AntennaDataList::DeleteAllAntennasFromValueTree(const QString& path) {
    // Observers may change the tree when a node is removed, so the nodes are remembered by their paths.
    QStringList paths;
    for (const Node* node : GetAntennaNodes(path)) {
        paths.append(node->GetPath());
    }
    Tree& tree = *Tree::Instance();
    for (const QString& each : std::as_const(paths)) {
        if (Node* const node = tree.GetNode(each); Ant::IsAntenna(node)) {
            tree.Remove(node);
        }
    }
}

Node* AntennaDataList::GetNode(const QString& path) const {
    return Tree::Instance()->GetNode(path.isEmpty() ? m_basePath : path);
}

std::vector<Node*> AntennaDataList::GetAntennaNodes(const QString& path) const {
    std::vector<Node*> nodes;
    if (const Node* const parent = GetNode(path)) {
        for (ITreeItem* item : parent->GetTreeItems()) {
            if (Ant::IsAntenna(item)) {
                nodes.push_back(static_cast<Node*>(item));
            }
        }
    }
    return nodes;
}
