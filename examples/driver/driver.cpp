// A driver of the older kind behind the adapter: what it delivers on a thread of its own passes a filter and
// becomes sentences on the main thread.

#include "exampledriver.h"
#include "receiver.h"

#include <stddevicedefinition/stddevicedescriptors.h>
#include <tolmappstartup/cfgcenter.h>
#include <valueframework/tree.h>
#include <zancommon/dfdataoutput.h>
#include <zancommon/drivercomponent.h>
#include <zancommon/overheadpassfilter.h>
#include <zancommon/overheadpassparams.h>

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <cstdio>
#include <string>

using namespace Qt::StringLiterals;

namespace {

BearingResult ToResult(const Block& block, const Bearing& bearing) {
    BearingResult result;
    result.SetTimeStamp(block.time);
    result.SetFrequency(block.status.frequency);
    result.SetAzimuth(bearing.azimuth);
    result.SetQuality(static_cast<qint16>(bearing.quality));
    // A member that is not set counts as not measured.
    if (bearing.elevation != Bearing::NOT_MEASURED) {
        result.SetElevation(bearing.elevation);
    }
    if (bearing.level != Bearing::NOT_MEASURED) {
        result.SetLevel(bearing.level);
    }
    return result;
}

/// The device of this example reports only its heading, with each block.
void DeclareNotMeasured() {
    using namespace StdDeviceDefinition;
    for (const ValueDescriptor* each :
         {&g_vdPitch, &g_vdRoll, &g_vdAltitude, &g_vdPosLatitude, &g_vdPosLongitude, &g_vdPosLastUpdate}) {
        Tree::Instance()
            ->GetValue(u"/ZANServer"_s + each->PathName())
            ->SetState(TValueState::NotMeasured, nullptr);
    }
}

/// Lets the driver measure until it has no more data.
void Run(KvZANCommon::IDriver& device) {
    for (std::string address : {"nowhere", "demo"}) {
        if (device.Initialize(address, false) == 0) {
            device.SetFrequency(121.5e6);
            device.SetMode(EMODE_SCAN);
            QCoreApplication::exec();
            device.SetMode(EMODE_STANDBY); // from here on nothing is delivered
        } else {
            std::printf("not opened: %s\n", qUtf8Printable(device.GetLastError()));
            device.ClearLastError();
        }
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

    StdDeviceDefinition::CreateBranch(StdDeviceDefinition::EBranch::SERVER, u"/ZANServer"_s);
    DeclareNotMeasured();
    auto* azimuth = Tree::Instance()->Find<ValueBearing>(u"/ZANServer/Res/DfR/Azimuth"_s);
    auto* heading = Tree::Instance()->Find<ValueNumericInt>(u"/ZANServer/Res/HeaR/TrueHeading"_s);
    KvZANCommon::OverheadPassParams params;
    params.SetThreshold(600); // tenths of a degree
    params.SetValid(true);
    const KvZANCommon::OverheadPassFilter filter(params);

    Receiver receiver;
    receiver.onBlock = [&](const Block& block) {
        std::printf("%zu bearings at %.3f MHz\n", block.bearings.size(), block.status.frequency / 1e6);
        // Degrees become tenths; without a measurement the value says that it holds none.
        heading->SetValue(static_cast<int>(std::lround(block.status.heading.value_or(0.0) * 10.0)));
        heading->SetState(block.status.heading ? TValueState::Valid : TValueState::NotMeasured);
        for (const Bearing& bearing : block.bearings) {
            BearingResult result = ToResult(block, bearing);
            filter.Apply(result);
            azimuth->SetValue(result); // one sentence, unless the filter has rejected it
        }
    };
    receiver.onMessage = [](const QString& text) { std::printf("%s\n", qUtf8Printable(text)); };
    receiver.onLinkClosed = [] { QCoreApplication::quit(); };
    {
        const DFDataOutput output(u"DF data"_s);
        KvZANCommon::AdaptedDriver<ExampleDriver> device;
        device.SetCallback(&receiver);
        Run(device);
    }
    QFile sentences(directory.filePath(u"sentences.txt"_s));
    if (sentences.open(QIODevice::ReadOnly)) {
        std::printf("%s", sentences.readAll().constData());
    }
    return CfgCenter::Close() ? 0 : 1;
}
