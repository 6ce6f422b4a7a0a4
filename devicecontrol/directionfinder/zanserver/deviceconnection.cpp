#include "zanserver/deviceconnection.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgdefault.h"
#include "valueframework/tree.h"
#include "zancommon/antennadatalist.h"
#include "zancommon/hwstatustester.h"
#include "zancommon/stationcfg.h"
#include "zancommon/zanpath.h"
#include "zanserver/servervalue.h"

#include <QStringList>

#include <array>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace ZANServer {

namespace {

struct ExampleAntenna {
    QString name;
    double minFreq; // Hz
    double maxFreq;
    double minRange;
    QString converter;
    QString method;
    quint32 methodCode;
};

/// Three antennas of the catalogue with adjacent ranges.
AntennaDataList MakeExampleAntennas() {
    const std::array<ExampleAntenna, 3> examples{{
        {u"PX110"_s, 300e3, 30e6, 300e3, u"RCV01"_s, u"WAT"_s, METHOD_WAT},
        {u"PX106"_s, 20e6, 1300e6, 30000001.0, u"RCV03"_s, u"COR"_s, METHOD_COR},
        {u"PX109"_s, 1300e6, 3000e6, 1300000001.0, u"RCV03"_s, u"VEC"_s, METHOD_VEC},
    }};
    AntennaDataList antennas;
    for (const ExampleAntenna& example : examples) {
        AntennaData antenna;
        antenna.name = example.name;
        antenna.minFreq = example.minFreq;
        antenna.maxFreq = example.maxFreq;
        antenna.minRange = example.minRange;
        antenna.maxRange = example.maxFreq;
        antenna.converterTypeName = example.converter;
        antenna.dfAlgorithms = {example.method};
        antenna.dfMethods = {example.methodCode};
        antenna.compassSupport = true; // the heading is the platform's, if there is a compass
        antenna.compassEnabled = true;
        antennas.AddAntenna(antenna);
    }
    return antennas;
}

/// Writes the settings of the example station. Returns why not, as a text for the operator; empty on success.
QString WriteExample(const QString& address) {
    const CfgPtr station(StationCfg::GetStationCfg(address, true));
    if (station->GetKeys().size() > 1 || !station->GetSubCfgNames().isEmpty()) {
        return u"the settings contain a station beyond ZANStations/Count; it is used unchanged"_s;
    }
    station->SetString(u"DevOptions"_s, u"ZAN-HFR"_s);
    // Something to scan at first: the aeronautical and the maritime band.
    const CfgPtr control(station->GetSubCfg(u"Control"_s));
    control->SetString(u"ScanRange0"_s, u"{\"start\": 118e6, \"stop\": 137e6, \"step\": 25e3}"_s);
    control->SetString(u"ScanRange1"_s, u"{\"start\": 156e6, \"stop\": 162.05e6, \"step\": 25e3}"_s);
    MakeExampleAntennas().WriteAntennaSetupToCfg(address);
    return {};
}

/// The polarisation or side according to an antenna's name; vertical when the name has none.
EZANPolarisation GetPolarisation(const QString& name) {
    if (name.endsWith("_L"_L1)) {
        return POLARISATION_LEFT;
    }
    if (name.endsWith("_R"_L1)) {
        return POLARISATION_RIGHT;
    }
    return name.endsWith("_H"_L1) ? POLARISATION_HORIZONTAL : POLARISATION_VERTICAL;
}

QString DevicePath() {
    return ZANPath::DEVICE_NODE.toString();
}

void PublishDevice(const QString& address, const QString& name) {
    CreateBranch(EBranch::DEVICE, DevicePath());
    const CfgPtr station(StationCfg::GetStationCfg(address, true));
    ServerValue<ValueString>(g_vdDevAddress)->SetValue(address, nullptr);
    ServerValue<ValueString>(g_vdDevName)->SetValue(name, nullptr);

    const auto find = [](const ValueDescriptor& descriptor) {
        return Tree::Instance()->Find<ValueString>(ZANPath::Device(descriptor));
    };
    find(g_vdDevType)->SetValue(ReadOrCreateString(*station, u"DevType"_s, u"ZANTIDE"_s), nullptr);
    const QString options = ReadOrCreateString(*station, u"DevOptions"_s, {});
    find(g_vdDevOptions)->SetValue(options, nullptr);
}

void PublishHardware(const QString& address) {
    // Each line of device information: number; kind; version; component.
    auto* const information = ServerValue<ValueSelection>(g_vdDevInfo);
    information->Clear(nullptr);
    long line = 0;
    const auto add = [&](const QString& text) { information->AddItem({text, 0.0, line++}, nullptr); };
    add(u">>Antennas and receivers"_s);
    AntennaDataList antennas;
    antennas.BuildAntennasFromCfg(address);
    for (const auto& antenna : antennas.GetAntennas()) {
        add(QString::number(line) + u";antenna;;"_s + antenna->name);
        add(QString::number(line) + u";receiver;;"_s + antenna->converterTypeName);
    }
    const CfgPtr station(StationCfg::GetStationCfg(address, true));
    HwStatusTester hardware(ZANPath::SERVER.toString());
    hardware.ReadHwRequirementsFromCfg(station.get());
    hardware.WriteHwRequirementsToTree();
}

void PublishAntennas(const QString& address) {
    AntennaDataList antennas(DevicePath(), {});
    antennas.BuildAntennasFromCfg(address);
    // The device numbers its antennas; all entries of an antenna have the same handle.
    QStringList names;
    for (const auto& antenna : antennas.GetAntennas()) {
        if (!names.contains(antenna->name)) {
            names.append(antenna->name);
        }
        antenna->handle = static_cast<qint32>(names.indexOf(antenna->name));
        antenna->polarizationMode = GetPolarisation(antenna->name);
    }
    antennas.WriteAntennasToValueTree({});
}

} // namespace

DeviceConnection::DeviceConnection(const QString& address, const QString& name)
    : m_isFirst(!CfgPtr(StationCfg::GetStationCfg(address, false))) {
    if (m_isFirst) {
        if (const QString warning = WriteExample(address); !warning.isEmpty()) {
            m_warnings.append(warning);
        }
    }
    PublishDevice(address, name);
    PublishHardware(address);
    PublishAntennas(address);
}

DeviceConnection::~DeviceConnection() {
    Tree& tree = *Tree::Instance();
    tree.Remove(tree.GetNode(u"/DEVICES"_s));
}

} // namespace ZANServer
