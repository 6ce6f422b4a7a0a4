#include "zanserver/driverchoice.h"

#include "tolmappstartup/cfgcenter.h"
#include "zancommon/stationcfg.h"

using namespace Qt::StringLiterals;

namespace ZANServer {

namespace {

const QString& NameKey() {
    static const QString key = u"Driver/Name"_s;
    return key;
}

const QString& AddressKey() {
    static const QString key = u"Driver/Address"_s;
    return key;
}

bool HasSettings(QStringView address) {
    return CfgPtr(StationCfg::GetStationCfg(address.toString(), false)) != nullptr;
}

} // namespace

DriverChoice DriverChoice::FromSettings() {
    const ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Stations);
    DriverChoice choice;
    choice.name = cfg.GetString(NameKey(), SIMULATOR.toString());
    choice.address = cfg.GetString(AddressKey(), {});
    return choice;
}

void DriverChoice::Store() const {
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Stations);
    cfg.SetString(NameKey(), name);
    cfg.SetString(AddressKey(), address);
    cfg.CommitKey(AddressKey());
}

QString DriverChoice::GetStationAddress() const {
    if (name == REPLAY) {
        return REPLAY.toString();
    }
    if (!address.isEmpty()) {
        return StationCfg::GetNormalAddress(address);
    }
    const bool takesOver = name == SIMULATOR && !HasSettings(SIMULATOR) && HasSettings(REPLAY);
    return takesOver ? REPLAY.toString() : name;
}

QString DriverChoice::GetDeviceName() const {
    if (name == REPLAY) {
        return u"Replay of a recording"_s;
    }
    return name == SIMULATOR ? u"Simulated device"_s : name;
}

} // namespace ZANServer
