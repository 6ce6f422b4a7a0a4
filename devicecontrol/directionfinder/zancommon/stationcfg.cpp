#include "zancommon/stationcfg.h"

#include "kwbase/tolmos.h"
#include "kwbase/tracesource.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "valueframework/tree.h"
#include "zancommon/zanpath.h"

using namespace Qt::StringLiterals;

namespace {

constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\stationcfg");

QString DefaultName() {
    return u"Default"_s;
}

QString SectionName(qint64 index) {
    return u"ZANStation"_s + QString::number(index);
}

QString AddressOf(const ICfg& stations, qint64 index) {
    return stations.GetString(SectionName(index) + u"/DeviceAddress"_s, {});
}

/// The number of station sections. An impossible number is replaced by the number of consecutive sections, so
/// that a mistake in the file neither delays the program nor loses a station.
qint64 GetStationCount(const ICfg& stations) {
    constexpr qint64 MOST_STATIONS = 10'000; // far more than any user has
    constexpr qint64 UNREADABLE = -1;
    const bool isThere = !stations.GetString(u"Count"_s, {}).isEmpty();
    const qint64 stored = stations.GetInt(u"Count"_s, isThere ? UNREADABLE : 0);
    if (stored >= 0 && stored <= MOST_STATIONS) {
        return stored;
    }
    qint64 count = 0;
    while (!AddressOf(stations, count).isEmpty()) {
        ++count;
    }
    TRACE.Information([&] {
        return u"WARNING: the number of stations in the settings is impossible; the first %1 are used"_s.arg(
            count);
    });
    return count;
}

/// The text of a server value; "Default" when it is missing or empty.
QString GetServerText(const ValueDescriptor& descriptor) {
    const Tree* const tree = Tree::Instance(); // null at the end of the process
    const ValueBase* const value = tree ? tree->GetValue(ZANPath::Server(descriptor)) : nullptr;
    const QString text = value ? value->GetStringValue() : QString();
    return text.isEmpty() ? DefaultName() : text;
}

} // namespace

ICfg* StationCfg::GetStationCfg(const QString& address, bool create) {
    const QString wanted = address.isEmpty() ? DefaultName() : address;
    const CfgPtr stations(CfgCenter::GetAppCfg(ICfg::View::Stations).GetSubCfg(u"ZANStations"_s));
    const qint64 count = GetStationCount(*stations);
    for (qint64 i = 0; i < count; ++i) {
        if (AddressOf(*stations, i) == wanted) {
            return stations->GetSubCfg(SectionName(i));
        }
    }
    if (!create) {
        return nullptr;
    }
    stations->SetInt(u"Count"_s, count + 1);
    ICfg* const station = stations->GetSubCfg(SectionName(count));
    station->SetString(u"DeviceAddress"_s, wanted);
    station->CommitKey(u"DeviceAddress"_s);
    return station;
}

QString StationCfg::GetStationAddress() {
    return GetNormalAddress(GetServerText(StdDeviceDefinition::g_vdDevAddress));
}

QString StationCfg::GetNormalAddress(const QString& address) {
    const qsizetype colon = address.indexOf(u':');
    QString host;
    if (colon >= 0 && TolmOS::Create().TranslateHostName(address.first(colon), host)) {
        return host + address.sliced(colon);
    }
    return address;
}

QString StationCfg::GetStationName() {
    return GetServerText(StdDeviceDefinition::g_vdDevName);
}
