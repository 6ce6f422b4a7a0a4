#include "zanserver/station.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "valueframework/tree.h"
#include "valueframework/valueaccess.h"
#include "zancommon/ohpparamspersistency.h"
#include "zancommon/stationcfg.h"
#include "zancommon/zaninformationcenter.h"
#include "zancommon/zanoptions.h"
#include "zancommon/zanvaluenames.h"
#include "zanserver/driversource.h"
#include "zanserver/gpsdsource.h"
#include "zanserver/servervalue.h"
#include "zanserver/settingscheck.h"
#include "zanserver/tenths.h"
#include "zanserver/valuelink.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

using namespace Qt::StringLiterals;
using ZANPlatform::GetOrCreateValue;

namespace ZANServer {
using StdDeviceDefinition::EBranch;

namespace {

const QString& OutputName() {
    static const QString name = u"DF data output"_s;
    return name;
}

/// The offset to add to the azimuths of a block, in tenths of a degree: the mounting of the antenna that
/// serves its frequency, if the driver leaves the correction to the application.
int GetMechOffset(const KvZANCommon::StatusStruct& status) {
    const AntennaData* const antenna =
        status.withoutMechOffset
            ? Station::GetCharacteristics().GetAntennaForFrequency(status.frequency, false)
            : nullptr;
    return antenna ? ToTenths(static_cast<double>(antenna->mechOffset)) : 0;
}

/// Latitude or longitude from the settings; nothing when it is missing or not valid.
std::optional<double> GetStoredHalf(const ICfg* station, const QString& key,
                                    const ValueDescriptor& descriptor) {
    auto* const value = ServerValue<ValueNumericDouble>(descriptor);
    const QString text = station ? station->GetString(key, {}) : QString();
    return !text.isNull() && value->SetStringValue(text, nullptr) ? std::optional(value->GetValue())
                                                                  : std::nullopt;
}

} // namespace

Station::Station(const DriverChoice& driver)
    : m_setup(u"Station"_s, ZANPath::SERVER.toString())
    , m_overheadFilter(m_overheadParams) {
    using namespace StdDeviceDefinition;

    const QString address = driver.GetStationAddress();
    CheckSettings(address);
    CreateBranch(EBranch::SERVER, ZANPath::SERVER.toString());
    m_device.emplace(address, driver.GetDeviceName());
    m_warnings += m_device->GetWarnings();
    ServerValue<ValueSelection>(g_vdOperationMode)->SetCurrentKey(OPMODE_SCAN, nullptr);
    ReadOptions();
    GetCharacteristics().SetBase_ValuePath(ZANPath::DEVICE.toString(), true);

    m_pAzimuth = ServerValue<ValueBearing>(g_vdAzimuth);
    m_pEmitters = ServerValue<ValueBearingList>(g_vdAzimuthList);
    m_pEmitterCount = ServerValue<ValueInt>(g_vdSRNumEmitterResult);
    m_pPitchThreshold = ServerValue<ValueNumericDouble>(g_vdPitchThreshold);
    m_pRollThreshold = ServerValue<ValueNumericDouble>(g_vdRollThreshold);
    m_pDataValid = GetOrCreateValue<ValueBool>(ZANPath::Server(ZANValueName::ZANDATAVALID));
    m_pDataStateInfo = GetOrCreateValue<ValueString>(ZANPath::Server(ZANValueName::ZANDATASTATEINFO));
    m_pConnectionSpeed = GetOrCreateValue<ValueInt>(ZANPath::Server(u"ConnectionSpeed"));

    PublishSetup();
    ConnectSources(driver.name == DriverChoice::REPLAY);

    // Connects the filters with their values.
    m_pitchRollFilter.SetPitchValuePath(ZANPath::Server(g_vdPitch));
    m_pitchRollFilter.SetRollValuePath(ZANPath::Server(g_vdRoll));
    m_pitchRollFilter.SetPitchThresholdValuePath(ZANPath::Server(g_vdPitchThreshold));
    m_pitchRollFilter.SetRollThresholdValuePath(ZANPath::Server(g_vdRollThreshold));
    m_pitchRollFilter.SetZANDataValidValuePath(ZANPath::Server(ZANValueName::ZANDATAVALID));
    m_pitchRollFilter.SetZANDataStateInfoValuePath(ZANPath::Server(ZANValueName::ZANDATASTATEINFO));
    m_connectionSpeedFilter.SetConnectionSpeedValuePath(ZANPath::Server(u"ConnectionSpeed"));
    RestoreOverheadParams();
    m_overheadSynchronizer.emplace(m_overheadParams, ZANPath::SERVER.toString());
}

/// Warns about errors in the settings; when there are any, the settings are not written.
void Station::CheckSettings(const QString& address) {
    for (const Finding& finding : ZANServer::CheckSettings(address)) {
        m_warnings.append(finding.text);
        m_areSettingsUsable = false;
    }
}

void Station::ReadOptions() {
    const QString path = ZANPath::Device(StdDeviceDefinition::g_vdDevOptions);
    const QString options = Tree::Instance()->Find<ValueString>(path)->GetValue();
    if (!ZANOptions::Instance()->ReadFromValueTree(path) && !options.isEmpty()) {
        m_warnings.append(
            u"an option of the device is not known; it and the options after it are ignored: "_s + options);
    }
}

/// Publishes the operator's setup of the device from the settings. The time of the last modification is below
/// the device node, where the characteristics observe it, and below the server, where the setup finds it; a
/// link keeps both equal.
void Station::PublishSetup() {
    auto* const deviceTime =
        Tree::Instance()->Find<ValueString>(ZANPath::Device(StdDeviceDefinition::g_vdCfgModifyTime));
    m_modifyTimes = std::make_unique<ValueLink>(
        *deviceTime, *ServerValue<ValueString>(StdDeviceDefinition::g_vdSetupModifyTime));

    m_setup.ReadFromValueTree({});
    m_setup.ReadFromCfg(GetDeviceAddress());
    m_setup.WriteToValueTree(nullptr, {});
}

/// \param isRecording the driver replays one
void Station::ConnectSources(bool isRecording) {
    const CfgPtr station(StationCfg::GetStationCfg(GetDeviceAddress(), false));
    m_position.emplace(
        GetStoredHalf(station.get(), u"LocationLatitude"_s, StdDeviceDefinition::g_vdPosLatitude),
        GetStoredHalf(station.get(), u"LocationLongitude"_s, StdDeviceDefinition::g_vdPosLongitude));
    const GpsdSettings gpsd = GpsdSettings::Read();
    m_attitude.emplace(gpsd.usePitchAndRoll);
    m_driver = std::make_unique<DriverSource>(*m_position, *m_attitude,
                                              isRecording ? std::nullopt : std::optional(gpsd.maxAge));
}

/// `Restore` writes the default for missing keys, but also for texts that are not valid. Those are left for
/// the operator to correct, so unusable settings are only read.
void Station::RestoreOverheadParams() {
    if (m_areSettingsUsable) {
        KvZANCommon::OHPParamsPersistency(m_overheadParams).Restore();
        return;
    }
    constexpr qint64 HIGHEST_THRESHOLD = 900;
    const ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::OverheadPass);
    const qint64 threshold = cfg.GetInt(u"OverheadPass/Threshold"_s, m_overheadParams.GetThreshold());
    if (threshold >= 0 && threshold <= HIGHEST_THRESHOLD) {
        m_overheadParams.SetThreshold(static_cast<int>(threshold), nullptr);
    }
    m_overheadParams.SetValid(cfg.GetBool(u"OverheadPass/Valid"_s, m_overheadParams.IsValid()), nullptr);
}

void Station::StartOutput(const QString& fileOfThisRun) {
    m_pOutput = new DFDataOutput(OutputName(), fileOfThisRun);
    ZANInformationCenter::Instance()->GetZANInterfaces().Add(m_pOutput);
    m_gpsd = std::make_unique<GpsdSource>(*m_position, *m_attitude, GpsdSettings::Read());
}

QString Station::GetDeviceAddress() {
    return StationCfg::GetStationAddress();
}

ZANCharacteristics& Station::GetCharacteristics() {
    return ZANInformationCenter::Instance()->GetZANCharacteristics();
}

Station::~Station() {
    m_gpsd.reset();
    m_driver.reset();
    m_overheadSynchronizer.reset();
    // Without an output the settings are not changed, except for a new station, which gets all of them for
    // editing.
    if (m_pOutput || m_device->IsFirst()) {
        // Output and setup write all of their settings; changes by other programs since they were read are
        // kept.
        const CfgWriteBack writeBack = CfgCenter::GetAppCfg(ICfg::View::Stations).BeginWriteBack();
        ZANInformationCenter::Instance()->GetZANInterfaces().Remove(OutputName());
        m_position.reset();
        if (m_areSettingsUsable) {
            m_setup.ReadFromValueTree({});
            m_setup.WriteToCfg(GetDeviceAddress());
        }
    }
    m_position.reset();
    m_attitude.reset();
    m_modifyTimes.reset();
    ZANInformationCenter::Finalise();
    ZANOptions::Finalise();
    m_device.reset();
    Tree& tree = *Tree::Instance();
    tree.Remove(tree.GetNode(ZANPath::SERVER.toString()));
}

void Station::SetOverheadThreshold(double degrees) {
    m_overheadParams.SetThreshold(static_cast<int>(std::lround(degrees * 10.0)), nullptr);
    m_overheadParams.SetValid(true, nullptr);
    KvZANCommon::OHPParamsPersistency(m_overheadParams).MakePersistent();
}

void Station::Process(BearingBlock& block) {
    m_driver->TakeStatus(block.status, block.time);
    const int mechOffset = GetMechOffset(block.status);
    if (m_blockObserver) {
        TellBlock(block, mechOffset);
    }
    if (block.kind == BearingBlock::Kind::SuperResolution) {
        ApplyBlockFilters(block);
        PublishEmitters(block, mechOffset);
        return;
    }
    ForgetEmittersOfOthers(block);
    std::vector<bool> hasSignal; // before the filters set the quality to 0
    hasSignal.reserve(block.bearings.size());
    for (const Bearing& bearing : block.bearings) {
        hasSignal.push_back(bearing.quality > 0);
    }
    const bool isTilted = ApplyBlockFilters(block);
    for (std::size_t i = 0; i < block.bearings.size(); ++i) {
        const bool isMarked = block.bearings[i].marker != Bearing().marker;
        ++m_counts.bearings;
        if (hasSignal[i] && isTilted) {
            ++m_counts.rejectedPitchRoll;
        } else if (isMarked) {
            ++m_counts.unusable;
        } else if (!hasSignal[i]) {
            ++m_counts.withoutSignal;
        } // the other bearings are counted when they are published
        if (!isMarked) {
            PublishBearing(block, i, mechOffset);
        }
    }
}

void Station::TakePosition(const PositionFix& fix) {
    m_driver->TakeFix(fix);
}

void Station::TakeRecordedPosition(const PositionFix& fix) {
    m_driver->TakeRecorded(fix);
}

void Station::TellBlock(const BearingBlock& block, int mechOffset) const {
    std::vector<BearingResult> results;
    results.reserve(block.bearings.size());
    for (std::size_t i = 0; i < block.bearings.size(); ++i) {
        results.push_back(ToResult(block, i, mechOffset));
    }
    m_blockObserver(block, results);
}

void Station::ForgetMeasurements() {
    m_driver->Forget();
    m_pEmitters->Clear(nullptr);
    m_pEmitterCount->SetValue(0, nullptr);
    m_pAzimuth->SetValue(BearingResult(), nullptr);
    m_pAzimuth->SetState(TValueState::NotMeasured, nullptr);
}

/// Applies the filters that work on whole blocks. Returns whether the platform is tilted too far.
bool Station::ApplyBlockFilters(BearingBlock& block) {
    const auto count = static_cast<unsigned>(block.bearings.size());
    const bool isTilted = m_pitchRollFilter.IsFilterConditionMet();
    if (isTilted) {
        m_pitchRollFilter.Apply(count, block.bearings.data());
    } else {
        m_pDataValid->SetValue(true, nullptr);
        m_pDataStateInfo->SetValue({}, nullptr);
    }
    m_connectionSpeedFilter.Apply(count, block.bearings.data());
    return isTilted;
}

BearingResult Station::ToResult(const BearingBlock& block, std::size_t index, int mechOffset) const {
    constexpr quint16 HIGHEST_QUALITY = std::numeric_limits<qint16>::max();
    const Bearing& bearing = block.bearings[index];
    BearingResult result;
    const double frequency = m_frequencyOf ? m_frequencyOf(block, index) : block.status.frequency;
    if (std::isfinite(frequency)) {
        result.SetFrequency(frequency);
    }
    if (bearing.level != Bearing::NOT_MEASURED) {
        result.SetLevel(bearing.level);
    }
    result.SetAzimuth(static_cast<quint16>(WithinCircle(bearing.azimuth + mechOffset)));
    if (bearing.elevation != Bearing::NOT_MEASURED) {
        result.SetElevation(bearing.elevation);
    }
    result.SetQuality(static_cast<qint16>(std::min(bearing.quality, HIGHEST_QUALITY)));
    result.SetTimeStamp(block.time);
    return result;
}

void Station::PublishBearing(const BearingBlock& block, std::size_t index, int mechOffset) {
    BearingResult result = ToResult(block, index, mechOffset);
    const qint16 quality = result.GetQuality();
    m_overheadFilter.Apply(result);
    if (quality > 0) {
        ++(result.GetQuality() > 0 ? m_counts.published : m_counts.rejectedOverhead);
    }
    m_pAzimuth->SetState(TValueState::Valid, nullptr); // after a loss of the device
    m_pAzimuth->SetValue(result, nullptr);
}

/// The emitters belong to the result of their frequency: with another result the output would write them
/// anew.
void Station::ForgetEmittersOfOthers(const BearingBlock& block) {
    const bool isTheirs =
        block.kind == BearingBlock::Kind::FixedFrequency && block.status.frequency == m_emitterFrequency;
    if (!isTheirs) {
        m_pEmitters->Clear();
        m_pEmitterCount->SetValue(0);
    }
}

/// Emitters that a filter has rejected are left out. Observers see the whole list, not its parts.
void Station::PublishEmitters(const BearingBlock& block, int mechOffset) {
    m_emitterFrequency = block.status.frequency;
    m_pEmitters->StartTransaction();
    m_pEmitters->Clear();
    for (std::size_t i = 0; i < block.bearings.size(); ++i) {
        BearingResult result = ToResult(block, i, mechOffset);
        m_overheadFilter.Apply(result);
        if (block.bearings[i].marker == Bearing().marker && result.GetQuality() > 0) {
            m_pEmitters->PushBack(result);
        }
    }
    m_pEmitterCount->SetValue(static_cast<int>(m_pEmitters->GetCount()), nullptr);
    m_pEmitters->EndTransaction(TChangeCode::ListReplaced);
}

} // namespace ZANServer
