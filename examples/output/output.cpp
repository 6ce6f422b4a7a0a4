// An output of one's own in the application's list of outputs: to standard output first, then to a file that
// is entered in its configuration widget, then to one that cannot be written.

#include "csvoutput.h"

#include <stddevicedefinition/stddevicedescriptors.h>
#include <tolmappstartup/cfgcenter.h>
#include <valueframework/tree.h>
#include <zancommon/zaninformationcenter.h>

#include <QApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr quint64 BEGIN = 1767225600000; // ms since 1970: 2026-01-01 00:00:00 UTC

/// What the application does with a bearing (tenths of a degree).
void Publish(quint64 time, quint16 azimuth, qint16 quality) {
    BearingResult bearing;
    bearing.SetTimeStamp(time);
    bearing.SetFrequency(121.5e6);
    bearing.SetAzimuth(azimuth);
    bearing.SetQuality(quality);
    Tree::Instance()->Find<ValueBearing>(u"/ZANServer/Res/DfR/Azimuth"_s)->SetValue(bearing);
}

/// What a user does in the configuration widget.
void EnterAddress(ZANAbstractInterface& output, const QString& address) {
    output.GetConfigWidget()->findChild<QLineEdit*>()->setText(address);
    output.SlotUpdateConfiguration();
}

void PrintCounters(const CsvOutput& output) {
    std::printf("%llu lines, %llu dropped\n", output.GetLineCount(), output.GetDropCount());
}

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    const QTemporaryDir directory;
    CfgCenter::SetConfigDirectory(directory.path());
    CfgCenter::GetAppCfg(ICfg::View::Outputs).SetBool(u"CsvOutput_Enabled"_s, true);
    StdDeviceDefinition::CreateBranch(StdDeviceDefinition::EBranch::SERVER, u"/ZANServer"_s);

    ZANInterfacesList& outputs = ZANInformationCenter::Instance()->GetZANInterfaces();
    auto* output = new CsvOutput(u"CSV"_s);
    outputs.Add(output); // whose Remove deletes it
    output->SetConfigPath(u"CsvOutput_"_s);

    Publish(BEGIN, 715, 90);
    Publish(BEGIN + 1000, 720, 0); // rejected by a filter: no line
    Publish(BEGIN + 2000, 725, 90);

    const QString fileName = directory.filePath(u"bearings.csv"_s);
    EnterAddress(*output, fileName);
    Publish(BEGIN + 3000, 730, 90);
    EnterAddress(*output, directory.filePath(u"missing/bearings.csv"_s)); // cannot be opened
    Publish(BEGIN + 4000, 735, 90);
    Publish(BEGIN + 5000, 740, 90);
    QFile file(fileName);
    if (file.open(QIODevice::ReadOnly)) {
        std::printf("in the file: %s", file.readAll().constData());
    }
    PrintCounters(*output);
    std::printf("%s\n", qUtf8Printable(output->GetLastError()));

    // The window that shows the widget takes it over, and is closed before the output is destroyed.
    auto window = std::make_unique<QWidget>();
    output->GetConfigWidget()->setParent(window.get());
    window.reset();
    std::printf("the widget is %s\n", output->GetConfigWidget() ? "there" : "gone");

    // When the value goes away, the output stays; it just gets no more bearings.
    Tree::Instance()->Clear();
    PrintCounters(*output);
    outputs.Remove(u"CSV"_s);
    std::printf("%u outputs are left\n", outputs.Size());
    ZANInformationCenter::Finalise();
    return CfgCenter::Close() ? 0 : 1;
}
