#include "zancommon/zancharacteristics.h"

#include "kwbase/errorhandler.h"
#include "kwbase/tolmos.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "zancommon/closedtable.h"
#include "zancommon/truncation.h"
#include "zancommon/zancharacteristicstools.h"
#include "zancommon/zanoptions.h"
#include "zancommon/zanvaluenames.h"

#include <QCoreApplication>
#include <QDateTime>

#include <algorithm>
#include <ranges>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace {

const QString& TraceOrigin() {
    static const QString origin = u"devicecontrol\\directionfinder\\zancommon\\zancharacteristics"_s;
    return origin;
}

QString ServerPath(const ValueDescriptor& descriptor) {
    return ZANPath::SERVER.toString() + descriptor.PathName();
}

/// The values of a list of resolution bandwidths, which ends at the first value that is not above 0.
auto ResolutionBandwidths(const ZANCharacteristics::SampleModeDescription& row) {
    const double* end = row.resolutionBandwidths;
    while (*end > 0.0) {
        ++end;
    }
    return std::span(row.resolutionBandwidths, end);
}

bool IsSuperResolutionAntenna(const AntennaData& antenna) {
    return antenna.name.contains("SR"_L1);
}

/// Whether the antenna is one of a pair that differs by polarisation or side only.
bool IsOneOfPair(const QString& name) {
    return name.endsWith("_H"_L1) || name.endsWith("_V"_L1) || name.endsWith("_L"_L1) ||
           name.endsWith("_R"_L1);
}

void CollapseRange(AntennaData& antenna) {
    antenna.minRange = antenna.maxRange;
}

/// A frequency in MHz, as the messages for the user show it.
QString ToMHz(double frequency) {
    return QString::number(frequency / 1e6, 'g', 6);
}

QString Translate(const char* text) {
    return QCoreApplication::translate("ZANCharacteristics", text);
}

/// Replaces the items of a selection by one for each element; `toItem` makes it of the element and its
/// position.
template <class Elements, class ToItem>
void Fill(ValueSelection& selection, const Elements& elements, IObserver* observer, ToItem toItem) {
    const ValueTransaction transaction = selection.CreateTransaction({TChangeCode::Changed}, observer);
    selection.Clear(observer);
    long position = 0;
    for (const auto& element : elements) {
        selection.AddItem(toItem(element, position++), observer);
    }
}

void FillWithBandwidths(ValueSelection* selection, const std::set<double>& bandwidths, IObserver* observer) {
    if (selection && !bandwidths.empty()) {
        Fill(*selection, bandwidths, observer, [](double bandwidth, long position) {
            return SelectionItem(ZANCharacteristics::FormatBandwidth(bandwidth, 2, false), bandwidth,
                                 position);
        });
    }
}

} // namespace

// Connection to the tree

ZANCharacteristics::ZANCharacteristics(const ZANCharacteristics& other)
    : IObserver(other)
    , Observable(other) {
    *this = other;
}

ZANCharacteristics& ZANCharacteristics::operator=(const ZANCharacteristics& other) {
    if (this == &other) {
        return *this;
    }
    Observable::operator=(other);
    m_baseValuePath = other.m_baseValuePath;
    m_autoUpdate = other.m_autoUpdate;
    ConnectToValues();

    m_zanType = other.m_zanType;
    m_maxChannelCount = other.m_maxChannelCount;
    m_antennas = AntennaDataList(); // the records of a list are shared with its copies
    for (const auto& antenna : other.m_antennas.GetAntennas()) {
        m_antennas.AddAntenna(new AntennaData(*antenna));
    }
    m_polarisationMode = other.m_polarisationMode;
    m_limits = other.m_limits;
    m_vuhfStart = other.m_vuhfStart;
    m_hfEnd = other.m_hfEnd;
    m_isSuperResolutionAvailable = other.m_isSuperResolutionAvailable;
    return *this;
}

ZANCharacteristics::~ZANCharacteristics() {
    DisconnectFromValues();
}

bool ZANCharacteristics::SetBase_ValuePath(const QString& path, bool autoUpdate) {
    const Node* const device = Tree::Instance()->GetNode(path);
    if (!device) {
        m_baseValuePath.clear();
        DisconnectFromValues();
        return false;
    }
    m_baseValuePath = device->GetPath(); // without the slash that may stand at the end of a node's path
    m_autoUpdate = autoUpdate;
    const bool isConnected = ConnectToValues();
    UpdateCachedDataFromValueTree();
    return isConnected;
}

bool ZANCharacteristics::ConnectToValues() {
    DisconnectFromValues();
    if (m_baseValuePath.isEmpty()) {
        return false;
    }
    const Tree& tree = *Tree::Instance();
    const auto attach = [this](auto* subject) {
        if (subject) {
            subject->AddObserver(this);
        }
        return subject;
    };
    m_pCfgNode = attach(tree.GetNode(m_baseValuePath + g_vdNodeCfg.PathName()));
    m_pDevType = attach(tree.Find<ValueString>(m_baseValuePath + g_vdDevType.PathName()));
    m_pDevMaxChannelCount =
        attach(tree.Find<ValueNumericInt>(m_baseValuePath + g_vdDevMaxChannelCount.PathName()));
    m_pCfgModifyTime = attach(tree.Find<ValueString>(m_baseValuePath + g_vdCfgModifyTime.PathName()));
    m_pPolarisation = attach(tree.Find<ValueString>(ServerPath(g_vdPolarisation)));
    return m_pCfgNode && m_pDevType && m_pDevMaxChannelCount && m_pCfgModifyTime;
}

void ZANCharacteristics::DisconnectFromValues() {
    const auto detach = [this](auto*& subject) {
        if (subject) {
            subject->DeleteObserver(this);
            subject = nullptr;
        }
    };
    detach(m_pCfgNode);
    detach(m_pDevType);
    detach(m_pDevMaxChannelCount);
    detach(m_pCfgModifyTime);
    detach(m_pPolarisation);
}

void ZANCharacteristics::Update(Observable* subject, TChangeCode code) {
    const auto forget = [this, subject](auto*& member) {
        const bool isGoing = member && member == subject && member->DeleteObserver(this);
        if (isGoing) {
            member = nullptr;
        }
        return isGoing;
    };
    if (code == TChangeCode::GoingAway) {
        // What was known from a value that is gone becomes its default.
        if (forget(m_pDevType)) {
            UpdateZANType();
        } else if (forget(m_pDevMaxChannelCount)) {
            UpdateMaxChannelCount();
        } else if (forget(m_pPolarisation)) {
            UpdatePolarisationMode();
        } else {
            forget(m_pCfgModifyTime);
        }
    } else if (code == TChangeCode::NodeGoingAway) {
        forget(m_pCfgNode);
    } else if (code == TChangeCode::Changed && m_autoUpdate && subject) {
        if (subject == m_pDevType) {
            UpdateZANType();
        } else if (subject == m_pCfgModifyTime) {
            UpdateCachedDataFromValueTree();
        } else if (subject == m_pDevMaxChannelCount) {
            UpdateMaxChannelCount();
        } else if (subject == m_pPolarisation) {
            UpdatePolarisationMode();
        } else {
            return;
        }
        NotifyObservers(TChangeCode::Changed, nullptr);
    }
}

// What is cached

void ZANCharacteristics::UpdateCachedDataFromValueTree() {
    if (m_baseValuePath.isEmpty()) {
        return;
    }
    m_antennas.ReadAntennasFromValueTree(m_baseValuePath);
    UpdateConverterSwitchFreqs();
    UpdateZANType();
    UpdateAntennaMinMaxFreqs();
    UpdateMaxChannelCount();
    UpdatePolarisationMode();
}

void ZANCharacteristics::UpdateZANType() {
    m_zanType = ZANTYPE_ZANTIDE;
    if (!m_pDevType) {
        return;
    }
    const QString& name = m_pDevType->GetValue();
    const auto* const known = std::ranges::find(s_aDeviceTypeNames, name, &DeviceTypeName::name);
    if (known != s_aDeviceTypeNames.end()) {
        m_zanType = known->type;
    } else {
        TraceInformation([&name] { return u"WARNING: device type "_s + name + u" not fully supported"_s; },
                         TraceOrigin(), __LINE__);
    }
}

void ZANCharacteristics::UpdateMaxChannelCount() {
    const int count = m_pDevMaxChannelCount ? m_pDevMaxChannelCount->GetValue() : 0;
    m_maxChannelCount = count < 1 ? MAX_CHANNEL_COUNT_DEFAULT : count;
}

void ZANCharacteristics::UpdatePolarisationMode() {
    m_polarisationMode =
        m_pPolarisation ? static_cast<EZANPolarisation>(ZANCharacteristicsTools().TranslatePolarisationMode(
                              m_pPolarisation->GetValue()))
                        : POLARISATION_LEFT;
}

void ZANCharacteristics::UpdateConverterSwitchFreqs() {
    constexpr double HF_END = 3e7;
    constexpr double LOWEST_VUHF_START = 2e7;
    constexpr double HIGHEST_VUHF_START = 30000001.0; // 1 Hz above the end of HF, for ranges without overlap
    m_vuhfStart = 0.0;
    m_hfEnd = 0.0;
    for (const auto& antenna : m_antennas.GetAntennas()) {
        if (!antenna->enabled) {
            continue;
        }
        if (antenna->maxRange <= HF_END) {
            m_hfEnd = antenna->maxRange;
        } else if (antenna->minRange >= LOWEST_VUHF_START && antenna->minRange <= HIGHEST_VUHF_START) {
            m_vuhfStart = antenna->minRange;
        }
    }
}

void ZANCharacteristics::UpdateAntennaMinMaxFreqs() {
    m_limits.fill({});
    for (const auto& antenna : m_antennas.GetAntennas()) {
        ConsiderAntennaForMinMaxFreqs(*antenna);
    }
}

void ZANCharacteristics::ConsiderAntennaForMinMaxFreqs(const AntennaData& antenna) {
    if (antenna.enabled) {
        for (const EOperationMode mode :
             {OPMODE_FFM, OPMODE_WIDEBAND_FFM, OPMODE_SEARCH, OPMODE_SCAN, OPMODE_TDMA, OPMODE_9}) {
            if (IsAntennaSupportedByDevice(&antenna, mode)) {
                FrequencyLimits& limits = m_limits[static_cast<std::size_t>(mode)];
                limits.min = std::min(limits.min, antenna.minRange);
                limits.max = std::max(limits.max, antenna.maxRange);
            }
        }
    }
    m_limits[OPMODE_0] = m_limits[OPMODE_FFM];
}

EZANType ZANCharacteristics::GetZANType() const {
    return m_zanType;
}

int ZANCharacteristics::GetMaxChannelCount() const {
    return m_maxChannelCount;
}

ZANCharacteristics::FrequencyLimits ZANCharacteristics::GetLimits(EOperationMode mode) const {
    const auto index = static_cast<std::size_t>(mode);
    return index < MODE_COUNT ? m_limits[index] : FrequencyLimits();
}

double ZANCharacteristics::ToPlausibleLimit(double frequency) const {
    if (m_zanType == ZANTYPE_ZANFERN) {
        constexpr double LOWEST = 1e8;
        constexpr double HIGHEST = 4.5e8;
        return frequency < LOWEST ? LOWEST : std::min(frequency, HIGHEST);
    }
    constexpr double LOWEST = 9000.0;
    constexpr double HIGHEST = 3.6e9;
    constexpr double WITHOUT_ANTENNA = 2.5e7;
    return frequency > HIGHEST || frequency < LOWEST ? WITHOUT_ANTENNA : frequency;
}

double ZANCharacteristics::GetMinFreq(EOperationMode mode) const {
    return ToPlausibleLimit(GetLimits(mode).min);
}

double ZANCharacteristics::GetMaxFreq(EOperationMode mode) const {
    return ToPlausibleLimit(GetLimits(mode).max);
}

bool ZANCharacteristics::GetConverterSwitchFreq(double& vuhfStart, double& hfEnd) const {
    vuhfStart = m_vuhfStart;
    hfEnd = m_hfEnd;
    return m_vuhfStart != 0.0;
}

// Antennas

AntennaData* ZANCharacteristics::GetAntennaByHandle(long handle) const {
    return m_antennas.GetAntennaByHandle(handle);
}

AntennaData* ZANCharacteristics::GetAntennaByIndex(int index) const {
    return m_antennas.GetAntennaByIndex(index);
}

std::set<long> ZANCharacteristics::GetAntennaHandles(bool onlyEnabled) const {
    return m_antennas.GetAntennaHandles(onlyEnabled);
}

AntennaData* ZANCharacteristics::GetAntennaForFrequency(double frequency, bool preferRangeStart) {
    UpdatePolarisationMode();
    return m_antennas.GetAntennaForFrequency(frequency, preferRangeStart, m_polarisationMode);
}

QString ZANCharacteristics::GetAntennaDisplayName(const AntennaData* antenna) const {
    if (!antenna) {
        return {};
    }
    return IsOneOfPair(antenna->name) ? antenna->name.chopped(2) : antenna->name;
}

bool ZANCharacteristics::IsAntennaSupportedByDevice(const AntennaData* antenna, EOperationMode mode) const {
    return antenna &&
           GetBestSampleModeDescription(mode, GetConverterForTypeName(antenna->converterTypeName),
                                        antenna->minRange, antenna->maxRange, fBANDWIDTH_ANY) != nullptr;
}

bool ZANCharacteristics::IsAntennaSupportedByDevice(int index, EOperationMode mode) const {
    return IsAntennaSupportedByDevice(GetAntennaByIndex(index), mode);
}

bool ZANCharacteristics::DoesAntennaSupportPolarization(long handle) const {
    const AntennaData* const antenna = GetAntennaByHandle(handle);
    return antenna && antenna->polarizationSupport;
}

bool ZANCharacteristics::DoesAntennaSupportActivePassive(long handle) const {
    const AntennaData* const antenna = GetAntennaByHandle(handle);
    return antenna && !antenna->name.contains("PX120"_L1) && antenna->activePassiveSupport;
}

// Validity of the antenna setup

bool ZANCharacteristics::CheckAntennaSetupValidity(const AntennaDataList* list, QString& message) const {
    const auto& antennas = (list ? *list : m_antennas).GetAntennas();
    if (antennas.empty()) {
        message = Translate("No antennas connected to device.");
        return false;
    }
    constexpr double STEP = 1.0; // Hz, between ranges that adjoin without sharing a frequency
    double low = -1.0;           // the span that is covered so far
    double high = -1.0;
    int count = 0;
    for (const auto& antenna : antennas) {
        if (!antenna->enabled) {
            continue;
        }
        if (!IsAntennaSupportedByDevice(antenna.get(), OPMODE_ANY)) {
            message = Translate("Antenna %1 (%2 MHz - %3 MHz) is not supported by the ZAN device with the "
                                "currently installed options. It must be disabled.")
                          .arg(antenna->name, ToMHz(antenna->minFreq), ToMHz(antenna->maxFreq));
            return false;
        }
        const double begin = antenna->minRange;
        const double end = antenna->maxRange;
        if (!(low > 0.0) || !(high > 0.0)) {
            low = begin;
            high = end;
        } else if (end == low || end + STEP == low) {
            low = begin;
        } else if (high == begin || high + STEP == begin) {
            high = end;
        } else if (low > end || begin > high) {
            message = Translate("Frequency range is not entirely covered without gaps.");
            return false;
        } else if ((end != high && begin != low) || !IsOneOfPair(antenna->name)) {
            message = Translate("Frequency ranges are overlapping.");
            return false;
        }
        // An antenna of a pair that shares an edge leaves the span as it is, also when it reaches beyond it.
        ++count;
    }
    message = count > 0 ? Translate("Antenna setup is valid.") : Translate("No antennas enabled.");
    return count > 0;
}

bool ZANCharacteristics::MakeAntennaSetupValid(QString& message) {
    if (CheckAntennaSetupValidity(&m_antennas, message)) {
        message = Translate("Antenna setup is already valid. Nothing changed.");
        return true;
    }
    AntennaDataList repaired;
    repaired.CopyFrom(m_antennas);
    bool isAnySupported = false;
    for (const auto& antenna : repaired.GetAntennas()) {
        antenna->enabled = IsAntennaSupportedByDevice(antenna.get(), OPMODE_ANY);
        antenna->minRange = antenna->minFreq;
        antenna->maxRange = antenna->maxFreq;
        isAnySupported = isAnySupported || antenna->enabled;
    }
    if (!isAnySupported) {
        message = Translate("No antenna is supported by device.");
        return false;
    }
    repaired.SortAntennasByFrequencyRanges();

    constexpr double STEP = 1.0; // Hz, from one range to the next
    double first = -1.0;
    double last = -1.0;
    for (const auto& antenna : repaired.GetAntennas()) {
        if (antenna->enabled && last >= 0.0) {
            if (last >= antenna->maxRange) {
                // Left and right half of this antenna cover the same range, and stay side by side.
                antenna->enabled = antenna->name == "PX104_R"_L1;
            } else if (antenna->minRange > last + STEP) {
                antenna->enabled = false; // it would leave a gap
            } else {
                antenna->minRange = last + STEP;
            }
        }
        if (!antenna->enabled) {
            CollapseRange(*antenna);
            continue;
        }
        if (first < 0.0) {
            first = antenna->minRange;
        }
        last = antenna->maxRange;
    }

    // The own list comes last: observers of the nodes may have it read anew meanwhile.
    AntennaDataList written;
    written.CopyFrom(repaired);
    written.DeleteAllAntennasFromValueTree(m_baseValuePath);
    written.WriteAntennasToValueTree(m_baseValuePath);
    m_antennas = written;
    if (m_pCfgModifyTime) {
        const auto now =
            QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(TolmOS::Create().GetCurrentTime()));
        const QString text = now.toString(u"ddMMyyhhmmss"_s);
        if (m_pCfgModifyTime->GetValue() == text) {
            // The second repair within a second is news all the same.
            m_pCfgModifyTime->HasChanged(TChangeCode::Changed, nullptr);
        } else {
            m_pCfgModifyTime->SetValue(text, nullptr);
        }
    }
    message = Translate("Auto configuration of antennas successfully covered range from %1 MHz to %2 MHz.")
                  .arg(ToMHz(first), ToMHz(last));
    return true;
}

// Converters and sample modes

EZANConverter ZANCharacteristics::GetConverterForTypeName(const QString& typeName) {
    const auto* const known = std::ranges::find(s_aConverterTypeNames, typeName, &ConverterTypeName::name);
    return known == s_aConverterTypeNames.end() ? CONVERTER_NONE : known->converter;
}

EZANConverter ZANCharacteristics::GetConverterForFrequencyRange(double start, double stop) const {
    const AntennaData* const antenna = m_antennas.GetAntennaForFreqRange(start, stop);
    return antenna ? GetConverterForTypeName(antenna->converterTypeName) : CONVERTER_NONE;
}

std::set<EZANConverter> ZANCharacteristics::GetAvailableConverters() const {
    std::set<EZANConverter> converters;
    for (const auto& antenna : m_antennas.GetAntennas()) {
        converters.insert(GetConverterForTypeName(antenna->converterTypeName));
    }
    converters.erase(CONVERTER_NONE);
    return converters;
}

bool ZANCharacteristics::IsHfConverter(EZANConverter converter) const {
    return IsInGroup(s_aHF_CONVERTERS, converter);
}

bool ZANCharacteristics::IsVuhfConverter(EZANConverter converter) const {
    return IsInGroup(s_aVUHF_CONVERTERS, converter);
}

bool ZANCharacteristics::IsPreampAvailable(std::span<const EZANConverter> converters) const {
    return std::ranges::any_of(m_antennas.GetAntennas(), [this, converters](const auto& antenna) {
        const EZANConverter converter = GetConverterForTypeName(antenna->converterTypeName);
        return antenna->enabled && IsInGroup(converters, converter) &&
               std::ranges::any_of(Rows(s_aSampleModeDescription), [this, converter](const auto& row) {
                   return row.preamplifierAvailable != 0 &&
                          DoesSampleModeMatch(&row, OPMODE_ANY, converter, fFREQUENCY_ANY, fFREQUENCY_ANY,
                                              fBANDWIDTH_ANY);
               });
    });
}

bool ZANCharacteristics::IsHfPreampAvailable() const {
    return IsPreampAvailable(s_aHF_CONVERTERS);
}

bool ZANCharacteristics::IsVuhfPreampAvailable() const {
    return IsPreampAvailable(s_aVUHF_CONVERTERS);
}

bool ZANCharacteristics::DoesSampleModeMatch(const SampleModeDescription* row, EOperationMode mode,
                                             EZANConverter converter, double start, double stop,
                                             double realtimeBandwidth) const {
    // All of these must hold. The searches for options cost most and stand last.
    if (converter == CONVERTER_NONE ||
        (converter != row->firstConverter && converter != row->secondConverter)) {
        return false;
    }
    if (realtimeBandwidth != fBANDWIDTH_ANY && !(realtimeBandwidth == row->realtimeBandwidth)) {
        return false;
    }
    if (!LimitsHold(row->minFrequency, row->maxFrequency, start, stop)) {
        return false;
    }
    const EZANType type = GetZANType();
    const auto endsTypes = [type](EZANType each) { return each == type || each == ZANTYPE_END; };
    if (*std::ranges::find_if(row->deviceTypes, endsTypes) == ZANTYPE_END) {
        return false;
    }
    const auto endsModes = [mode](EOperationMode each) {
        return each == mode || each == OPMODE_ANY || each == OPMODE_END;
    };
    if (mode != OPMODE_ANY && *std::ranges::find_if(row->operationModes, endsModes) == OPMODE_END) {
        return false;
    }
    const ZANOptions& options = *ZANOptions::Instance();
    return options.HasOption(row->requiredOption) &&
           (row->excludedOption == OPTION_NONE || !options.HasOption(row->excludedOption));
}

std::vector<const ZANCharacteristics::SampleModeDescription*>
ZANCharacteristics::GetAllMatchingSampleModeDescriptions(EOperationMode mode, EZANConverter converter,
                                                         double start, double stop,
                                                         double realtimeBandwidth) const {
    std::vector<const SampleModeDescription*> rows;
    for (const SampleModeDescription& row : Rows(s_aSampleModeDescription)) {
        if (DoesSampleModeMatch(&row, mode, converter, start, stop, realtimeBandwidth)) {
            rows.push_back(&row);
        }
    }
    return rows;
}

const ZANCharacteristics::SampleModeDescription*
ZANCharacteristics::GetBestSampleModeDescription(EOperationMode mode, EZANConverter converter, double start,
                                                 double stop, double realtimeBandwidth) const {
    const SampleModeDescription* best = nullptr;
    int bestPriority = -100000;
    for (const SampleModeDescription& row : Rows(s_aSampleModeDescription)) {
        if (row.priority > bestPriority &&
            DoesSampleModeMatch(&row, mode, converter, start, stop, realtimeBandwidth)) {
            best = &row;
            bestPriority = row.priority;
        }
    }
    if (!best) {
        TraceInformation(
            [=] {
                return QString::asprintf("No sample mode matching eConverter=%d, eOpMode=%d, fStartFreq=%f, "
                                         "fStopFreq=%f, fRealtimeBw=%f",
                                         converter, mode, start, stop, realtimeBandwidth);
            },
            TraceOrigin(), __LINE__);
    }
    return best;
}

const ZANCharacteristics::SampleModeDescription*
ZANCharacteristics::GetBestSampleModeDescription(EOperationMode mode, double start, double stop,
                                                 double realtimeBandwidth) const {
    const AntennaData* const antenna = m_antennas.GetAntennaForFreqRange(start, stop);
    if (!antenna) {
        return nullptr;
    }
    constexpr double LOWEST_BANDWIDTH = 1.0;
    return GetBestSampleModeDescription(
        mode, GetConverterForTypeName(antenna->converterTypeName), antenna->minRange, antenna->maxRange,
        realtimeBandwidth < LOWEST_BANDWIDTH ? fBANDWIDTH_ANY : realtimeBandwidth);
}

EZANSampleMode ZANCharacteristics::GetBestSampleMode(EOperationMode mode, double start, double stop,
                                                     double realtimeBandwidth) const {
    if (const auto* best = GetBestSampleModeDescription(mode, start, stop, realtimeBandwidth)) {
        return best->sampleMode;
    }
    TraceInformation(
        [=] {
            return QString::asprintf("WARNING: No sample mode found for eOpMode=%d, fStartFreq=%f, "
                                     "fStopFreq=%f, fRealtimeBw=%d",
                                     mode, start, stop, Truncate<int>(realtimeBandwidth));
        },
        TraceOrigin(), __LINE__);
    return SAMPLEMODE_END;
}

// Bandwidths

std::set<double> ZANCharacteristics::GetRealtimeBandwidths(EOperationMode mode, double start,
                                                           double stop) const {
    std::set<double> bandwidths;
    if (const AntennaData* const antenna = m_antennas.GetAntennaForFreqRange(start, stop)) {
        for (const SampleModeDescription* row :
             GetAllMatchingSampleModeDescriptions(mode, GetConverterForTypeName(antenna->converterTypeName),
                                                  antenna->minRange, antenna->maxRange, fBANDWIDTH_ANY)) {
            bandwidths.insert(row->realtimeBandwidth);
        }
    }
    return bandwidths;
}

double ZANCharacteristics::GetDefaultRealtimeBandwidth(EOperationMode mode, double start, double stop) const {
    const auto* const best = GetBestSampleModeDescription(mode, start, stop, fBANDWIDTH_ANY);
    return best ? best->realtimeBandwidth : 0.0;
}

std::set<double> ZANCharacteristics::GetResolutionBandwidths(EOperationMode mode, double start, double stop,
                                                             double realtimeBandwidth) const {
    const auto* const best = GetBestSampleModeDescription(mode, start, stop, realtimeBandwidth);
    if (!best) {
        return {};
    }
    const auto bandwidths = ResolutionBandwidths(*best);
    return {bandwidths.begin(), bandwidths.end()};
}

double ZANCharacteristics::ToNextValidResolutionBandwidth(EOperationMode mode, double start, double stop,
                                                          double realtimeBandwidth, double wanted) const {
    const auto* const best = GetBestSampleModeDescription(mode, start, stop, realtimeBandwidth);
    if (!best) {
        return 0.0;
    }
    const auto bandwidths = ResolutionBandwidths(*best);
    const auto next =
        std::ranges::find_if(bandwidths, [wanted](double bandwidth) { return bandwidth >= wanted; });
    return next == bandwidths.end() ? bandwidths.back() : *next;
}

double ZANCharacteristics::GetDefaultResolutionBandwidth(EOperationMode mode, double start, double stop,
                                                         double realtimeBandwidth) const {
    constexpr double USUAL_BANDWIDTH = 20000.0;
    return ToNextValidResolutionBandwidth(mode, start, stop, realtimeBandwidth, USUAL_BANDWIDTH);
}

QString ZANCharacteristics::FormatBandwidth(double bandwidth, int precision, bool keepTrailingZeros) {
    double number = bandwidth;
    QStringView unit;
    if (bandwidth < 1e3) {
        unit = u" Hz";
    } else if (bandwidth < 1e6) {
        unit = u" kHz";
        number = bandwidth / 1e3;
    } else if (bandwidth < 1e9) {
        unit = u" MHz";
        number = bandwidth / 1e6;
    }
    constexpr int DEFAULT_PRECISION = 6;
    QString text = QString::number(number, 'f', precision < 0 ? DEFAULT_PRECISION : precision);
    if (!keepTrailingZeros) {
        while (text.endsWith(u'0')) {
            text.chop(1);
        }
        if (text.endsWith(u'.')) {
            text.chop(1);
        }
    }
    text += unit;
    return text;
}

// Range class

EFreqRange ZANCharacteristics::GetRangeTypeOfAntenna(const AntennaData* antenna, EOperationMode mode) const {
    if (!antenna) {
        TraceInformation([] { return u"WARNING: cannot determine range type for unknown antenna"_s; },
                         TraceOrigin(), __LINE__);
        return FREQRANGE_UNKNOWN;
    }
    if (const auto* best =
            GetBestSampleModeDescription(mode, antenna->minRange, antenna->maxRange, fBANDWIDTH_ANY)) {
        return best->range;
    }
    TraceInformation(
        [antenna] {
            return u"WARNING: cannot determine range type for antenna "_s + antenna->name +
                   QString::asprintf(" %f - %f", antenna->minRange, antenna->maxRange);
        },
        TraceOrigin(), __LINE__);
    constexpr double LOWEST_VUHF = 1e7;
    return antenna->minFreq >= LOWEST_VUHF ? FREQRANGE_VUHF : FREQRANGE_HF;
}

EFreqRange ZANCharacteristics::GetRangeTypeForFrequency(double frequency) {
    return GetRangeTypeOfAntenna(GetAntennaForFrequency(frequency, false), OPMODE_ANY);
}

// DF methods and polarisations

long ZANCharacteristics::GetDfMethodsDetailedForAntennaAndFrequency(const AntennaData* antenna,
                                                                    double frequency) const {
    if (!antenna) {
        return METHODDETAILED_NONE;
    }
    for (const AntennaDescription& row : Rows(s_aAntennaLibrary)) {
        if (row.name == antenna->name && row.minFrequency <= frequency && row.maxFrequency >= frequency) {
            return row.dfMethods;
        }
    }
    return IsSuperResolutionAntenna(*antenna) ? METHODDETAILED_COR | METHODDETAILED_SUPR : METHODDETAILED_COR;
}

bool ZANCharacteristics::HasAntennaDFMethod(const AntennaData* antenna, double frequency,
                                            EZANMethodDetailed method) const {
    return (GetDfMethodsDetailedForAntennaAndFrequency(antenna, frequency) & method) == method;
}

std::list<EZANMethod> ZANCharacteristics::GetAvailableDfMethodsForFreq(double frequency, double /*unused*/) {
    std::list<EZANMethod> methods;
    for (const auto& antenna : m_antennas.GetAntennas()) {
        if (!antenna->enabled || !(antenna->minRange <= frequency && antenna->maxRange >= frequency)) {
            continue;
        }
        for (const quint32 code : antenna->dfMethods) {
            const auto method = static_cast<EZANMethod>(code);
            if (std::ranges::find(methods, method) == methods.end()) {
                methods.push_back(method);
                m_isSuperResolutionAvailable = m_isSuperResolutionAvailable || method == METHOD_SUPR;
            }
        }
    }
    return methods;
}

std::list<EZANPolarisation>
ZANCharacteristics::GetAvailablePolarisationModesForFreq(double frequency, double secondFrequency) const {
    std::list<EZANPolarisation> modes;
    for (const auto& antenna : m_antennas.GetAntennas()) {
        const bool isInRange = antenna->minRange <= frequency && antenna->maxRange >= frequency &&
                               (!(secondFrequency > 0.0) || antenna->maxRange >= secondFrequency);
        if (isInRange && antenna->enabled && antenna->polarizationSupport &&
            std::ranges::find(modes, antenna->polarizationMode) == modes.end()) {
            modes.push_back(antenna->polarizationMode);
        }
    }
    return modes;
}

// Selections

void ZANCharacteristics::FillSelectionWithDfMethods(ValueSelection& selection,
                                                    const std::list<EZANMethod>& methods,
                                                    IObserver* observer) {
    const ZANCharacteristicsTools tools;
    Fill(selection, methods, observer, [&tools](EZANMethod method, long position) {
        return SelectionItem(tools.TranslateDfMethod(static_cast<unsigned long>(method)), 0.0, position);
    });
}

void ZANCharacteristics::FillSelectionWithPolarisationModes(ValueSelection& selection,
                                                            const std::list<EZANPolarisation>& modes,
                                                            IObserver* observer) {
    const ZANCharacteristicsTools tools;
    Fill(selection, modes, observer, [&tools](EZANPolarisation mode, long position) {
        return SelectionItem(tools.TranslatePolarisationMode(static_cast<unsigned long>(mode)), 0.0,
                             position);
    });
}

void ZANCharacteristics::UpdateResolutionBandwidthSelection(ValueSelection* selection, EOperationMode mode,
                                                            double start, double stop,
                                                            double realtimeBandwidth,
                                                            IObserver* observer) const {
    FillWithBandwidths(selection, GetResolutionBandwidths(mode, start, stop, realtimeBandwidth), observer);
}

void ZANCharacteristics::UpdateHopBandwidthSelection(ValueSelection* selection, EOperationMode mode,
                                                     double start, double stop, IObserver* observer) const {
    FillWithBandwidths(selection, GetRealtimeBandwidths(mode, start, stop), observer);
}

void ZANCharacteristics::UpdateRfAttenuatorValuesAtVT(ValueSelection* selection, int count,
                                                      IObserver* observer) {
    static const std::array<SelectionItem, 4> attenuations{{
        {u"0 dB"_s, 0.0, 0},
        {u"12 dB"_s, 12.0, 12},
        {u"24 dB"_s, 24.0, 24},
        {u"30 dB"_s, 30.0, 30},
    }};
    if (selection) {
        const bool hasTwo = count == 0 || count == 2;
        Fill(*selection, std::span(attenuations).first(hasTwo ? 2 : attenuations.size()), observer,
             [](const SelectionItem& item, long /*position*/) { return item; });
    }
}

// Adjustments

const AntennaData* ZANCharacteristics::ToNextValidFrequency(EOperationMode mode, double& frequency,
                                                            double& bandwidth) {
    frequency = std::max(frequency, GetMinFreq(mode));
    frequency = std::min(frequency, GetMaxFreq(mode));
    switch (mode) {
    case OPMODE_0:
    case OPMODE_FFM:
    case OPMODE_SCAN:
    case OPMODE_SEARCH:
    case OPMODE_TDMA:
    case OPMODE_9:
        return GetAntennaForFrequency(frequency, false);
    case OPMODE_WIDEBAND_FFM: {
        const AntennaData* const antenna = GetAntennaForFrequency(frequency, false);
        if (antenna) {
            const double half = bandwidth / 2.0;
            if (frequency - half < antenna->minRange) {
                frequency = antenna->minRange + half;
            } else if (frequency + half > antenna->maxRange) {
                frequency = antenna->maxRange - half;
            }
        }
        return antenna;
    }
    default:
        return nullptr;
    }
}

const AntennaData* ZANCharacteristics::ToNextValidFrequencyRange(EOperationMode mode, double& start,
                                                                 double& stop, double& realtimeBandwidth,
                                                                 double& /*unused*/, EAdjustMode adjustMode) {
    double shift = 0.0;
    if (const double lowest = GetMinFreq(mode); lowest > start) {
        shift = lowest - start;
    }
    if (const double highest = GetMaxFreq(mode); stop > highest) {
        shift = highest - stop;
    }
    double movedStart = start + shift;
    double movedStop = stop + shift;

    const AntennaData* const antennaOfStart = GetAntennaForFrequency(movedStart, false);
    const AntennaData* const antennaOfStop = GetAntennaForFrequency(movedStop, false);
    if (antennaOfStart && antennaOfStop && antennaOfStart != antennaOfStop) {
        double move = 0.0;
        if (adjustMode == ADJUST_DOWN) {
            move = antennaOfStart->maxRange - movedStop;
        } else if (adjustMode == ADJUST_UP) {
            move = antennaOfStop->minRange - movedStart;
        }
        movedStart += move;
        movedStop += move;
    }
    if (!GetBestSampleModeDescription(mode, movedStart, movedStop, realtimeBandwidth)) {
        return nullptr;
    }
    start = movedStart;
    stop = movedStop;
    return antennaOfStart;
}

bool ZANCharacteristics::AdjustAzimuthToDisplayMode(unsigned short& azimuth, int displayMode) const {
    static const QString declinationPath = ServerPath(g_vdDeclination);
    static const QString headingSourcePath = ServerPath(g_vdHeaSource);
    const auto* const declinationValue = Tree::Instance()->Find<ValueNumericInt>(declinationPath);
    // Which source the heading comes from makes no difference; that there is none does.
    if (!declinationValue || !Tree::Instance()->Find<ValueSelection>(headingSourcePath)) {
        return false;
    }
    constexpr int HALF_CIRCLE = 1800;
    const int declination = static_cast<qint16>(declinationValue->GetValue());
    int adjusted = azimuth; // cut to 16 bits, as angles are kept, when it is brought into range
    switch (displayMode) {
    case 0:
        break;
    case 1:
        adjusted -= declination;
        break;
    case 2:
        adjusted += HALF_CIRCLE;
        break;
    case 3:
        adjusted += HALF_CIRCLE - declination;
        break;
    default:
        return false;
    }
    azimuth = static_cast<unsigned short>(ValidateAzimuthRange(static_cast<qint16>(adjusted)));
    return true;
}

int ZANCharacteristics::ValidateAzimuthRange(int azimuth) {
    constexpr int FULL_CIRCLE = 3600;
    const int remainder = azimuth % FULL_CIRCLE;
    return remainder < 0 ? remainder + FULL_CIRCLE : remainder;
}
