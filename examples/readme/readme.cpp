// The shortest ways from a bearing to a sentence and from a wanted range to a valid one. Its settings and its
// sentences stand below the current directory.

#include <stddevicedefinition/stddevicedescriptors.h>
#include <tolmappstartup/cfgcenter.h>
#include <valueframework/tree.h>
#include <zancommon/dfdataoutput.h>

#include <zancommon/zaninformationcenter.h>
#include <zancommon/zanoptions.h>

#include <zancommon/antennadatalist.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cstdio>

namespace {

/// What an operator writes with an editor.
void WriteSettings() {
    QDir().mkpath(QStringLiteral("settings"));
    QFile file(QStringLiteral("settings/Application.ini"));
    if (file.open(QIODevice::WriteOnly)) {
        file.write("FileOutput_Enabled=true\n"
                   "FileOutput_Address=sentences.txt\n");
    }
}

void PrintSentences() {
    QFile file(QStringLiteral("sentences.txt"));
    if (file.open(QIODevice::ReadOnly)) {
        std::printf("%s", file.readAll().constData());
    }
}

void SendBearing() {
    CfgCenter::SetConfigDirectory(QStringLiteral("settings"));
    StdDeviceDefinition::CreateBranch(StdDeviceDefinition::EBranch::SERVER, QStringLiteral("/ZANServer"));
    DFDataOutput output(QStringLiteral("DF data")); // file, serial line and interval come from the settings

    auto* azimuth = Tree::Instance()->Find<ValueBearing>(QStringLiteral("/ZANServer/Res/DfR/Azimuth"));
    BearingResult bearing;
    bearing.SetFrequency(121.5e6); // Hz
    bearing.SetAzimuth(715);       // tenths of a degree
    bearing.SetQuality(90);
    azimuth->SetValue(bearing); // writes one sentence
}

/// What the device connection does.
void PublishDevice() {
    const QString path = QStringLiteral("/DEVICES/ZANServer");
    StdDeviceDefinition::CreateBranch(StdDeviceDefinition::EBranch::DEVICE, path);
    AntennaDataList antennas(path, {});
    AntennaData antenna;
    antenna.name = QStringLiteral("PX106");
    antenna.converterTypeName = QStringLiteral("RCV03");
    antenna.minFreq = antenna.minRange = 30e6; // Hz
    antenna.maxFreq = antenna.maxRange = 1300e6;
    antennas.AddAntenna(antenna);
    antennas.WriteAntennasToValueTree({});
}

void FindRange() {
    // The device connection has published type, options and antennas below "/DEVICES/ZANServer".
    ZANOptions::Instance()->ReadFromValueTree(QStringLiteral("/DEVICES/ZANServer/DevAttr/DevOptions"));
    ZANCharacteristics& device = ZANInformationCenter::Instance()->GetZANCharacteristics();
    device.SetBase_ValuePath(QStringLiteral("/DEVICES/ZANServer"), true);

    double start = 25e6, stop = 35e6, bandwidth = ZANCharacteristics::fBANDWIDTH_ANY, unused = 0.0; // Hz
    const AntennaData* antenna = device.ToNextValidFrequencyRange(OPMODE_SCAN, start, stop, bandwidth, unused,
                                                                  ZANCharacteristics::ADJUST_UP);
    if (antenna) { // start and stop are valid now
        const EZANSampleMode mode = device.GetBestSampleMode(OPMODE_SCAN, start, stop, bandwidth);
        std::printf("%.0f Hz to %.0f Hz, sample mode %d\n", start, stop, static_cast<int>(mode));
    }
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    WriteSettings();
    SendBearing();
    PrintSentences();
    PublishDevice();
    FindRange();
    ZANInformationCenter::Finalise();
    ZANOptions::Finalise();
    return CfgCenter::Close() ? 0 : 1;
}
