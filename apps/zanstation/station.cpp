#include "zanstation/station.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "valueframework/tree.h"
#include "valueframework/valueaccess.h"
#include "zancommon/ohpparamspersistency.h"
#include "zancommon/stationcfg.h"
#include "zancommon/zaninformationcenter.h"
#include "zancommon/zanoptions.h"
#include "zancommon/zanvaluenames.h"
#include "zanstation/console.h"

#include <algorithm>
#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;
using StdDeviceDefinition::EBranch;

namespace {

const QString& OutputName() {
    static const QString name = u"DF data output"_s;
    return name;
}

QString ServerPath(const ValueDescriptor& descriptor) {
    return ZANPath::SERVER.toString() + descriptor.PathName();
}

QString ServerPath(QStringView name) {
    return ZANPath::SERVER_CHILD.toString() + name.toString();
}

/// The server's value of a descriptor; the descriptor fixes its type.
template <class T>
T* ServerValue(const ValueDescriptor& descriptor) {
    return CreateValue<T>(descriptor, nullptr);
}

/// Puts a measurement into its value. Without one the value goes back to 0 and says that it holds none: what
/// was measured before must not pass as current.
template <class T, class V>
void Publish(V& value, const std::optional<T>& measurement) {
    const bool isMeasured = measurement && value.SetValue(*measurement, nullptr);
    if (!isMeasured) {
        value.SetValue(T{}, nullptr);
    }
    value.SetState(isMeasured ? TValueState::Valid : TValueState::NotMeasured, nullptr);
}

/// The number of bearings of a block that are not rejected.
quint64 CountUsable(const std::vector<Bearing>& bearings) {
    return static_cast<quint64>(std::count_if(bearings.begin(), bearings.end(),
                                              [](const Bearing& bearing) { return bearing.quality > 0; }));
}

BearingResult ToResult(const BearingBlock& block, const Bearing& bearing) {
    BearingResult result;
    result.SetFrequency(block.status.frequency);
    if (bearing.level != Bearing::NOT_MEASURED) {
        result.SetLevel(bearing.level);
    }
    result.SetAzimuth(bearing.azimuth);
    if (bearing.elevation != Bearing::NOT_MEASURED) {
        result.SetElevation(bearing.elevation);
    }
    result.SetQuality(static_cast<qint16>(bearing.quality));
    result.SetTimeStamp(block.time);
    return result;
}

} // namespace

Station::Station()
    : m_setup(u"Station"_s, ZANPath::SERVER.toString())
    , m_overheadFilter(m_overheadParams) {
    using namespace StdDeviceDefinition;

    CreateBranch(EBranch::SERVER, ZANPath::SERVER.toString());
    ValueDescriptor::SetBasePath(ZANPath::SERVER.toString());
    m_device.emplace(u"replay"_s);
    ServerValue<ValueSelection>(g_vdOperationMode)->SetCurrentKey(OPMODE_SCAN, nullptr);
    ReadOptions();
    GetCharacteristics().SetBase_ValuePath(ZANPath::DEVICE.toString(), true);

    m_pAzimuth = ServerValue<ValueBearing>(g_vdAzimuth);
    m_pHeading = ServerValue<ValueNumericInt>(g_vdTrueHeading);
    m_pPitch = ServerValue<ValueNumericDouble>(g_vdPitch);
    m_pRoll = ServerValue<ValueNumericDouble>(g_vdRoll);
    m_pAltitude = ServerValue<ValueNumericDouble>(g_vdAltitude);
    m_pLatitude = ServerValue<ValueNumericDouble>(g_vdPosLatitude);
    m_pLongitude = ServerValue<ValueNumericDouble>(g_vdPosLongitude);
    m_pPositionTime = ServerValue<ValueTimeStamp>(g_vdPosLastUpdate);
    m_pPositionTime->SetState(TValueState::NotMeasured, nullptr);
    m_pPitchThreshold = ServerValue<ValueNumericDouble>(g_vdPitchThreshold);
    m_pRollThreshold = ServerValue<ValueNumericDouble>(g_vdRollThreshold);
    m_pDataValid = GetOrCreateValue<ValueBool>(ServerPath(ZANValueName::ZANDATAVALID));
    m_pDataStateInfo = GetOrCreateValue<ValueString>(ServerPath(ZANValueName::ZANDATASTATEINFO));
    m_pConnectionSpeed = GetOrCreateValue<ValueInt>(ServerPath(u"ConnectionSpeed"));

    RestoreSetup();

    // The filters and their parameters.
    m_pitchRollFilter.SetPitchValuePath(ServerPath(g_vdPitch));
    m_pitchRollFilter.SetRollValuePath(ServerPath(g_vdRoll));
    m_pitchRollFilter.SetPitchThresholdValuePath(ServerPath(g_vdPitchThreshold));
    m_pitchRollFilter.SetRollThresholdValuePath(ServerPath(g_vdRollThreshold));
    m_pitchRollFilter.SetZANDataValidValuePath(ServerPath(ZANValueName::ZANDATAVALID));
    m_pitchRollFilter.SetZANDataStateInfoValuePath(ServerPath(ZANValueName::ZANDATASTATEINFO));
    m_connectionSpeedFilter.SetConnectionSpeedValuePath(ServerPath(u"ConnectionSpeed"));
    KvZANCommon::OHPParamsPersistency(m_overheadParams).Restore();
    m_overheadSynchronizer.emplace(m_overheadParams, ZANPath::SERVER.toString());
}

void Station::ReadOptions() {
    const QString path = ZANPath::DEVICE_NODE.toString() + StdDeviceDefinition::g_vdDevOptions.PathName();
    const QString options = Tree::Instance()->Find<ValueString>(path)->GetValue();
    if (!ZANOptions::Instance()->ReadFromValueTree(path) && !options.isEmpty()) {
        Console::Warn(u"an option of the device is not known, and those behind it are left out: "_s +
                      options);
    }
}

void Station::RestoreSetup() {
    m_setup.ReadFromValueTree({});
    m_setup.ReadFromCfg(GetDeviceAddress());
    m_setup.WriteToValueTree(nullptr, {});
    // Where the station stood when it was last used is not where it has been measured to be.
    m_pLatitude->SetState(TValueState::NotMeasured, nullptr);
    m_pLongitude->SetState(TValueState::NotMeasured, nullptr);
}

void Station::StartOutput() {
    m_pOutput = new DFDataOutput(OutputName());
    ZANInformationCenter::Instance()->GetZANInterfaces().Add(m_pOutput);
}

QString Station::GetDeviceAddress() {
    return StationCfg::GetStationAddress();
}

ZANCharacteristics& Station::GetCharacteristics() {
    return ZANInformationCenter::Instance()->GetZANCharacteristics();
}

Station::~Station() {
    m_overheadSynchronizer.reset();
    {
        // Output and setup write all of their settings. What others changed since they were read stays.
        const CfgWriteBack writeBack = CfgCenter::GetAppCfg(ICfg::View::Stations).BeginWriteBack();
        ZANInformationCenter::Instance()->GetZANInterfaces().Remove(OutputName());
        m_setup.ReadFromValueTree({});
        m_setup.WriteToCfg(GetDeviceAddress());
    }
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
    m_counts.bearings += block.bearings.size();
    PublishPlatform(block);
    ApplyBlockFilters(block);
    for (const Bearing& bearing : block.bearings) {
        if (bearing.marker == Bearing().marker) {
            PublishBearing(block, bearing);
        } else {
            ++m_counts.unusable;
        }
    }
}

void Station::PublishPlatform(const BearingBlock& block) {
    constexpr int FULL_CIRCLE = 3600;
    std::optional<int> heading;
    if (block.status.heading) {
        heading = static_cast<int>(std::lround(*block.status.heading * 10.0) % FULL_CIRCLE);
    }
    Publish(*m_pHeading, heading);
    Publish(*m_pPitch, block.status.pitch);
    Publish(*m_pRoll, block.status.roll);
    Publish(*m_pAltitude, block.status.altitude);
    Publish(*m_pLatitude, block.status.latitude);
    Publish(*m_pLongitude, block.status.longitude);
    if (block.status.latitude && block.status.longitude) {
        Publish(*m_pPositionTime, std::optional<quint64>(block.time));
    }
}

void Station::ApplyBlockFilters(BearingBlock& block) {
    const auto count = static_cast<unsigned>(block.bearings.size());
    const quint64 usable = CountUsable(block.bearings);
    m_counts.withoutSignal += count - usable;
    if (m_pitchRollFilter.IsFilterConditionMet()) {
        m_pitchRollFilter.Apply(count, block.bearings.data());
        m_counts.rejectedPitchRoll += usable;
    } else {
        m_pDataValid->SetValue(true, nullptr);
        m_pDataStateInfo->SetValue({}, nullptr);
    }
    m_connectionSpeedFilter.Apply(count, block.bearings.data());
}

void Station::PublishBearing(const BearingBlock& block, const Bearing& bearing) {
    BearingResult result = ToResult(block, bearing);
    const qint16 quality = result.GetQuality();
    m_overheadFilter.Apply(result);
    if (quality > 0) {
        ++(result.GetQuality() > 0 ? m_counts.published : m_counts.rejectedOverhead);
    }
    m_pAzimuth->SetValue(result, nullptr);
}
