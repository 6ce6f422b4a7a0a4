#include "zancommon/stationcfg.h"

#include "kwbase/tolmos.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "valueframework/tree.h"
#include "zancommon/zanvaluenames.h"

using namespace Qt::StringLiterals;

namespace {

const QString& DefaultName() {
    static const QString name = u"Default"_s;
    return name;
}

QString SectionName(qint64 index) {
    return u"ZANStation"_s + QString::number(index);
}

/// The text of a value of the server; "Default" when it is missing or empty.
QString GetServerText(const ValueDescriptor& descriptor) {
    const ValueBase* const value =
        Tree::Instance()->GetValue(ZANPath::SERVER.toString() + descriptor.PathName());
    const QString text = value ? value->GetStringValue() : QString();
    return text.isEmpty() ? DefaultName() : text;
}

} // namespace

ICfg* StationCfg::GetStationCfg(const QString& address, bool create) {
    const QString& wanted = address.isEmpty() ? DefaultName() : address;
    const CfgPtr stations(CfgCenter::GetAppCfg(ICfg::View::Stations).GetSubCfg(u"ZANStations"_s));
    const qint64 count = stations->GetInt(u"Count"_s, 0);
    for (qint64 i = 0; i < count; ++i) {
        CfgPtr station(stations->GetSubCfg(SectionName(i)));
        if (station->GetString(u"DeviceAddress"_s, {}) == wanted) {
            return station.release();
        }
    }
    if (!create) {
        return nullptr;
    }
    stations->SetInt(u"Count"_s, count + 1);
    ICfg* const station = stations->GetSubCfg(SectionName(count));
    station->SetString(u"DeviceAddress"_s, wanted);
    return station;
}

QString StationCfg::GetStationAddress() {
    const QString text = GetServerText(StdDeviceDefinition::g_vdDevAddress);
    const qsizetype colon = text.indexOf(u':');
    QString host;
    if (colon >= 0 && TolmOS::Create().TranslateHostName(text.first(colon), host)) {
        return host + text.sliced(colon);
    }
    return text;
}

QString StationCfg::GetStationName() {
    return GetServerText(StdDeviceDefinition::g_vdDevName);
}
