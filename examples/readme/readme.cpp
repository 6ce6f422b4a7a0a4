// The shortest way from a bearing to a sentence. Settings and sentences are below the current directory.

#include <stddevicedefinition/stddevicedescriptors.h>
#include <tolmappstartup/cfgcenter.h>
#include <valueframework/tree.h>
#include <zancommon/dfdataoutput.h>

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

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    WriteSettings();
    SendBearing();
    PrintSentences();
    return CfgCenter::Close() ? 0 : 1;
}
