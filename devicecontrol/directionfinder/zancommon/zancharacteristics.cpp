// Longer than other sources, because applications expect some sixty operations in this one class. Each has a
// few lines; larger tasks are in separate classes (AntennaSetup, FrequencyAdjuster, SampleModeQuery, ...).

#include "zancommon/zancharacteristics.h"

#include "kwbase/tolmos.h"
#include "kwbase/tracesource.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "zancommon/antennamethods.h"
#include "zancommon/antennasetup.h"
#include "zancommon/bandwidthtext.h"
#include "zancommon/closedtable.h"
#include "zancommon/displayazimuth.h"
#include "zancommon/frequencyadjuster.h"
#include "zancommon/samplemodequery.h"
#include "zancommon/selectionfiller.h"
#include "zancommon/truncation.h"
#include "zancommon/zancharacteristicstools.h"
#include "zancommon/zanpath.h"

#include <QDateTime>

#include <algorithm>
#include <span>
#include <utility>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace {

constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\zancharacteristics");

/// The values of a list of resolution bandwidths, which ends at the first value that is not above 0.
auto ResolutionBandwidths(const ZANCharacteristics::SampleModeDescription& row) {
    const double* end = row.resolutionBandwidths;
    while (*end > 0.0) {
        ++end;
    }
    return std::span(row.resolutionBandwidths, end);
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
    m_antennas = AntennaDataList(); // a copy of a list would share its records
    for (const auto& antenna : other.m_antennas.GetAntennas()) {
        m_antennas.AddAntenna(*antenna);
    }
    m_polarisationMode = other.m_polarisationMode;
    m_limits = other.m_limits;
    m_vuhfStart = other.m_vuhfStart;
    m_hfEnd = other.m_hfEnd;
    m_isSuperResolutionAvailable = other.m_isSuperResolutionAvailable;
    return *this;
}

ZANCharacteristics::~ZANCharacteristics() = default;

bool ZANCharacteristics::SetBase_ValuePath(const QString& path, bool autoUpdate) {
    const Node* const device = Tree::Instance()->GetNode(path);
    if (!device) {
        m_baseValuePath.clear();
        DisconnectFromValues();
        return false;
    }
    m_baseValuePath = device->GetPath(); // without the slash that a node's path may have at its end
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
    m_pCfgNode.Find(m_baseValuePath + g_vdNodeCfg.PathName(), this);
    m_pDevType.Find(m_baseValuePath + g_vdDevType.PathName(), this);
    m_pDevMaxChannelCount.Find(m_baseValuePath + g_vdDevMaxChannelCount.PathName(), this);
    m_pCfgModifyTime.Find(m_baseValuePath + g_vdCfgModifyTime.PathName(), this);
    m_pPolarisation.Find(ZANPath::Server(g_vdPolarisation), this);
    return m_pCfgNode && m_pDevType && m_pDevMaxChannelCount && m_pCfgModifyTime;
}

void ZANCharacteristics::DisconnectFromValues() {
    m_pCfgNode.LetGo();
    m_pDevType.LetGo();
    m_pDevMaxChannelCount.LetGo();
    m_pCfgModifyTime.LetGo();
    m_pPolarisation.LetGo();
}

void ZANCharacteristics::Update(Observable* subject, TChangeCode code) {
    // What does not notify this object any more is not forgotten.
    const auto forget = [this, subject](auto& held) {
        const bool isGoing = held.Is(subject) && held->DeleteObserver(this);
        if (isGoing) {
            held.LetGo();
        }
        return isGoing;
    };
    if (code == TChangeCode::GoingAway) {
        // What was read from a value that goes away gets its default.
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
        if (m_pDevType.Is(subject)) {
            UpdateZANType();
        } else if (m_pCfgModifyTime.Is(subject)) {
            UpdateCachedDataFromValueTree();
        } else if (m_pDevMaxChannelCount.Is(subject)) {
            UpdateMaxChannelCount();
        } else if (m_pPolarisation.Is(subject)) {
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
        TRACE.Information([&name] { return u"WARNING: device type "_s + name + u" not fully supported"_s; });
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
    m_limits.Clear();
    for (const auto& antenna : m_antennas.GetAntennas()) {
        ConsiderAntennaForMinMaxFreqs(*antenna);
    }
    m_limits.Copy(OPMODE_FFM, OPMODE_0);
}

void ZANCharacteristics::ConsiderAntennaForMinMaxFreqs(const AntennaData& antenna) {
    if (!antenna.enabled) {
        return;
    }
    for (const EOperationMode mode :
         {OPMODE_FFM, OPMODE_WIDEBAND_FFM, OPMODE_SEARCH, OPMODE_SCAN, OPMODE_TDMA, OPMODE_9}) {
        if (IsAntennaSupportedByDevice(&antenna, mode)) {
            m_limits.Extend(mode, RangeOf(antenna));
        }
    }
}

EZANType ZANCharacteristics::GetZANType() const {
    return m_zanType;
}

int ZANCharacteristics::GetMaxChannelCount() const {
    return m_maxChannelCount;
}

double ZANCharacteristics::GetMinFreq(EOperationMode mode) const {
    return m_limits.GetLowest(mode, m_zanType);
}

double ZANCharacteristics::GetMaxFreq(EOperationMode mode) const {
    return m_limits.GetHighest(mode, m_zanType);
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
    return AntennaSetup::IsOneOfPair(antenna->name) ? antenna->name.chopped(2) : antenna->name;
}

bool ZANCharacteristics::IsAntennaSupportedByDevice(const AntennaData* antenna, EOperationMode mode) const {
    return antenna &&
           GetBestSampleModeDescription(mode, GetConverterForTypeName(antenna->converterTypeName),
                                        antenna->minRange, antenna->maxRange, fBANDWIDTH_ANY) != nullptr;
}

bool ZANCharacteristics::IsAntennaSupportedByDevice(int index, EOperationMode mode) const {
    return IsAntennaSupportedByDevice(GetAntennaByIndex(index), mode);
}

AntennaSupport ZANCharacteristics::GetAntennaSupport(const AntennaData& antenna, EOperationMode mode) const {
    return MakeQuery(mode, GetConverterForTypeName(antenna.converterTypeName), antenna.minRange,
                     antenna.maxRange, fBANDWIDTH_ANY)
        .Explain();
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

AntennaSetup::IsSupported ZANCharacteristics::GetSupportTest() const {
    return [this](const AntennaData& antenna) { return IsAntennaSupportedByDevice(&antenna, OPMODE_ANY); };
}

bool ZANCharacteristics::CheckAntennaSetupValidity(const AntennaDataList* list, QString& message) const {
    AntennaSetup::Verdict verdict = AntennaSetup::Check(list ? *list : m_antennas, GetSupportTest());
    message = std::move(verdict.message);
    return verdict.isValid;
}

AntennaSetup::Proposal ZANCharacteristics::ProposeAntennaSetup() const {
    QString verdict;
    return CheckAntennaSetupValidity(&m_antennas, verdict)
               ? AntennaSetup::Keep(m_antennas)
               : AntennaSetup::Repair(m_antennas, GetSupportTest());
}

bool ZANCharacteristics::MakeAntennaSetupValid(QString& message) {
    const AntennaSetup::Proposal proposal = ProposeAntennaSetup();
    if (proposal.isRepair) {
        Publish(proposal.antennas);
    }
    message = proposal.message;
    return proposal.isPossible;
}

void ZANCharacteristics::Publish(const AntennaDataList& antennas) {
    // The object's own list comes last, because observers of the nodes may cause it to be read again
    // meanwhile.
    AntennaDataList written;
    written.CopyFrom(antennas);
    written.DeleteAllAntennasFromValueTree(m_baseValuePath);
    written.WriteAntennasToValueTree(m_baseValuePath);
    m_antennas = written;
    if (m_pCfgModifyTime) {
        const auto now =
            QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(TolmOS::Create().GetCurrentTime()));
        const QString text = now.toString(u"ddMMyyhhmmss"_s);
        if (m_pCfgModifyTime->GetValue() == text) {
            // Notify also for a second repair within a second, when the text has not changed.
            m_pCfgModifyTime->HasChanged(TChangeCode::Changed);
        } else {
            m_pCfgModifyTime->SetValue(text);
        }
    }
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

SampleModeQuery ZANCharacteristics::MakeQuery(EOperationMode mode, EZANConverter converter, double start,
                                              double stop, double realtimeBandwidth) const {
    return {GetZANType(), mode, converter, start, stop, realtimeBandwidth};
}

bool ZANCharacteristics::DoesSampleModeMatch(const SampleModeDescription* row, EOperationMode mode,
                                             EZANConverter converter, double start, double stop,
                                             double realtimeBandwidth) const {
    return MakeQuery(mode, converter, start, stop, realtimeBandwidth).Fits(*row);
}

std::vector<const ZANCharacteristics::SampleModeDescription*>
ZANCharacteristics::GetAllMatchingSampleModeDescriptions(EOperationMode mode, EZANConverter converter,
                                                         double start, double stop,
                                                         double realtimeBandwidth) const {
    return MakeQuery(mode, converter, start, stop, realtimeBandwidth).FindAll();
}

const ZANCharacteristics::SampleModeDescription*
ZANCharacteristics::GetBestSampleModeDescription(EOperationMode mode, EZANConverter converter, double start,
                                                 double stop, double realtimeBandwidth) const {
    const auto* const best = MakeQuery(mode, converter, start, stop, realtimeBandwidth).FindBest();
    if (!best) {
        TRACE.Information([=] {
            return QString::asprintf("No sample mode matching eConverter=%d, eOpMode=%d, fStartFreq=%f, "
                                     "fStopFreq=%f, fRealtimeBw=%f",
                                     converter, mode, start, stop, realtimeBandwidth);
        });
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
    TRACE.Information([=] {
        return QString::asprintf("WARNING: No sample mode found for eOpMode=%d, fStartFreq=%f, "
                                 "fStopFreq=%f, fRealtimeBw=%d",
                                 mode, start, stop, Truncate<int>(realtimeBandwidth));
    });
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
    return BandwidthText::Format(bandwidth, precision, keepTrailingZeros);
}

// Range class

EFreqRange ZANCharacteristics::GetRangeTypeOfAntenna(const AntennaData* antenna, EOperationMode mode) const {
    if (!antenna) {
        TRACE.Information([] { return u"WARNING: cannot determine range type for unknown antenna"_s; });
        return FREQRANGE_UNKNOWN;
    }
    if (const auto* best =
            GetBestSampleModeDescription(mode, antenna->minRange, antenna->maxRange, fBANDWIDTH_ANY)) {
        return best->range;
    }
    TRACE.Information([antenna] {
        return u"WARNING: cannot determine range type for antenna "_s + antenna->name +
               QString::asprintf(" %f - %f", antenna->minRange, antenna->maxRange);
    });
    constexpr double LOWEST_VUHF = 1e7;
    return antenna->minFreq >= LOWEST_VUHF ? FREQRANGE_VUHF : FREQRANGE_HF;
}

EFreqRange ZANCharacteristics::GetRangeTypeForFrequency(double frequency) {
    return GetRangeTypeOfAntenna(GetAntennaForFrequency(frequency, false), OPMODE_ANY);
}

// DF methods and polarisations

long ZANCharacteristics::GetDfMethodsDetailedForAntennaAndFrequency(const AntennaData* antenna,
                                                                    double frequency) const {
    return antenna ? AntennaMethods::GetDetailed(*antenna, frequency) : long{METHODDETAILED_NONE};
}

bool ZANCharacteristics::HasAntennaDFMethod(const AntennaData* antenna, double frequency,
                                            EZANMethodDetailed method) const {
    return (GetDfMethodsDetailedForAntennaAndFrequency(antenna, frequency) & method) == method;
}

std::list<EZANMethod> ZANCharacteristics::GetAvailableDfMethodsForFreq(double frequency, double /*unused*/) {
    std::list<EZANMethod> methods = AntennaMethods::GetAvailable(m_antennas, frequency);
    if (std::ranges::find(methods, METHOD_SUPR) != methods.end()) {
        m_isSuperResolutionAvailable = true;
    }
    return methods;
}

std::list<EZANPolarisation>
ZANCharacteristics::GetAvailablePolarisationModesForFreq(double frequency, double secondFrequency) const {
    return AntennaMethods::GetPolarisations(m_antennas, frequency, secondFrequency);
}

// Selections

void ZANCharacteristics::FillSelectionWithDfMethods(ValueSelection& selection,
                                                    const std::list<EZANMethod>& methods,
                                                    IObserver* observer) {
    SelectionFiller::FillWithMethods(selection, methods, observer);
}

void ZANCharacteristics::FillSelectionWithPolarisationModes(ValueSelection& selection,
                                                            const std::list<EZANPolarisation>& modes,
                                                            IObserver* observer) {
    SelectionFiller::FillWithPolarisations(selection, modes, observer);
}

void ZANCharacteristics::UpdateResolutionBandwidthSelection(ValueSelection* selection, EOperationMode mode,
                                                            double start, double stop,
                                                            double realtimeBandwidth,
                                                            IObserver* observer) const {
    SelectionFiller::FillWithBandwidths(
        selection, GetResolutionBandwidths(mode, start, stop, realtimeBandwidth), observer);
}

void ZANCharacteristics::UpdateHopBandwidthSelection(ValueSelection* selection, EOperationMode mode,
                                                     double start, double stop, IObserver* observer) const {
    SelectionFiller::FillWithBandwidths(selection, GetRealtimeBandwidths(mode, start, stop), observer);
}

void ZANCharacteristics::UpdateRfAttenuatorValuesAtVT(ValueSelection* selection, int count,
                                                      IObserver* observer) {
    SelectionFiller::FillWithAttenuations(selection, count, observer);
}

// Adjustments

FrequencyAdjustment ZANCharacteristics::AdjustFrequency(EOperationMode mode, double frequency,
                                                        std::optional<double> bandwidth) {
    return FrequencyAdjuster(*this).Adjust(mode, frequency, bandwidth);
}

RangeAdjustment ZANCharacteristics::AdjustFrequencyRange(EOperationMode mode, const FrequencyRange& asked,
                                                         double realtimeBandwidth, EAdjustMode adjustMode) {
    return FrequencyAdjuster(*this).Adjust(mode, asked, realtimeBandwidth, adjustMode);
}

const AntennaData* ZANCharacteristics::ToNextValidFrequency(EOperationMode mode, double& frequency,
                                                            double& bandwidth) {
    const FrequencyAdjustment adjustment = FrequencyAdjuster(*this).Adjust(mode, frequency, bandwidth);
    frequency = adjustment.frequency;
    return adjustment.antenna;
}

const AntennaData* ZANCharacteristics::ToNextValidFrequencyRange(EOperationMode mode, double& start,
                                                                 double& stop, double& realtimeBandwidth,
                                                                 double& /*unused*/, EAdjustMode adjustMode) {
    const RangeAdjustment adjustment =
        AdjustFrequencyRange(mode, {start, stop}, realtimeBandwidth, adjustMode);
    if (!adjustment.IsServed()) {
        return nullptr;
    }
    start = adjustment.range.low;
    stop = adjustment.range.high;
    return adjustment.antennaOfStart;
}

bool ZANCharacteristics::AdjustAzimuthToDisplayMode(unsigned short& azimuth, int displayMode) const {
    return DisplayAzimuth::Adjust(azimuth, displayMode);
}
