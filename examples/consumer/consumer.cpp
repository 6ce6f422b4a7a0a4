// A small application on the library: it publishes a device with two antennas, moves a wanted range to a
// valid one, rejects a bearing from overhead, and writes the sentences of the others. It declares its heading
// and position as not measured.

#include <stddevicedefinition/stddevicedescriptors.h>
#include <tolmappstartup/cfgcenter.h>
#include <valueframework/tree.h>
#include <zancommon/antennadatalist.h>
#include <zancommon/dfdataoutput.h>
#include <zancommon/overheadpassfilter.h>
#include <zancommon/overheadpassparams.h>
#include <zancommon/zaninformationcenter.h>
#include <zancommon/zanoptions.h>

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

const QString SERVER = u"/ZANServer"_s;
const QString DEVICE = u"/DEVICES/ZANServer"_s;

AntennaData MakeAntenna(const QString& name, const QString& converter, double low, double high) {
    AntennaData antenna;
    antenna.name = name;
    antenna.converterTypeName = converter;
    antenna.minFreq = antenna.minRange = low; // Hz
    antenna.maxFreq = antenna.maxRange = high;
    return antenna;
}

/// What a device connection does: the device appears in the value tree.
void PublishDevice() {
    using namespace StdDeviceDefinition;
    CreateBranch(EBranch::SERVER, SERVER);
    CreateBranch(EBranch::DEVICE, DEVICE);
    AntennaDataList antennas(DEVICE, {});
    antennas.AddAntenna(MakeAntenna(u"PX110"_s, u"RCV01"_s, 300e3, 30e6));
    antennas.AddAntenna(MakeAntenna(u"PX106"_s, u"RCV03"_s, 30000001.0, 1300e6));
    antennas.WriteAntennasToValueTree({});
    ZANOptions::Instance()->AddOptionsFromString(u"ZAN-HFR"_s);
    ZANInformationCenter::Instance()->GetZANCharacteristics().SetBase_ValuePath(DEVICE, true);
}

/// A new value counts as measured: without this call, values that nobody measures would pass as a heading of
/// 0 degrees and a position on the equator.
void DeclareNotMeasured() {
    using namespace StdDeviceDefinition;
    for (const ValueDescriptor* each : {&g_vdTrueHeading, &g_vdPitch, &g_vdRoll, &g_vdAltitude,
                                        &g_vdPosLatitude, &g_vdPosLongitude, &g_vdPosLastUpdate}) {
        Tree::Instance()->GetValue(SERVER + each->PathName())->SetState(TValueState::NotMeasured, nullptr);
    }
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QTemporaryDir directory;
    CfgCenter::SetConfigDirectory(directory.path());
    ICfg& settings = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    settings.SetBool(u"FileOutput_Enabled"_s, true);
    settings.SetString(u"FileOutput_Address"_s, directory.filePath(u"sentences.txt"_s));

    PublishDevice();
    DeclareNotMeasured();
    ZANCharacteristics& device = ZANInformationCenter::Instance()->GetZANCharacteristics();
    double start = 25e6; // Hz
    double stop = 35e6;
    double bandwidth = ZANCharacteristics::fBANDWIDTH_ANY;
    double unused = 0.0;
    const AntennaData* antenna = device.ToNextValidFrequencyRange(OPMODE_SCAN, start, stop, bandwidth, unused,
                                                                  ZANCharacteristics::ADJUST_UP);
    std::printf("valid range: %.0f Hz to %.0f Hz, %s\n", start, stop, antenna ? "served" : "not served");

    KvZANCommon::OverheadPassParams params;
    params.SetThreshold(600); // tenths of a degree
    params.SetValid(true);
    const KvZANCommon::OverheadPassFilter filter(params);
    {
        DFDataOutput output(u"DF data"_s); // file and interval come from the settings
        auto* azimuth = Tree::Instance()->Find<ValueBearing>(SERVER + u"/Res/DfR/Azimuth"_s);
        for (const qint16 elevation : {qint16{100}, qint16{700}}) { // tenths of a degree
            BearingResult bearing;
            bearing.SetFrequency(start);
            bearing.SetAzimuth(715);
            bearing.SetElevation(elevation);
            bearing.SetQuality(90);
            filter.Apply(bearing);
            azimuth->SetValue(bearing); // one sentence, unless the filter has rejected it
        }
    }
    QFile sentences(directory.filePath(u"sentences.txt"_s));
    if (sentences.open(QIODevice::ReadOnly)) {
        std::printf("%s", sentences.readAll().constData());
    }
    ZANInformationCenter::Finalise();
    ZANOptions::Finalise();
    return CfgCenter::Close() ? 0 : 1;
}
