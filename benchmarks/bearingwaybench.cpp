// The way of a bearing from the driver's thread to the flushed sentence: adapter, queue between the threads,
// filters, value tree, output, file. The yardstick is the part that cannot be avoided while every sentence is
// passed to the system separately: writing the finished line. Processor time of all threads, per bearing.

#include "bearingdelivery.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "zancommon/legacydriveradapter.h"
#include "zanserver/driverlibrary.h"
#include "zanserver/driverreceiver.h"
#include "zanserver/station.h"
#include "zanserver/stationdevice.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <optional>
#include <thread>
#include <utility>

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

/// A directory for the duration of the program, with the settings and the file of the sentences.
const QTemporaryDir& Directory() {
    static const QTemporaryDir directory;
    return directory;
}

QString SentencesName() {
    return Directory().filePath(u"sentences.txt"_s);
}

void BearingWay(benchmark::State& state) {
    QFile::remove(SentencesName() + u".bak"_s);
    Station station;
    station.StartOutput();
    DriverReceiver receiver(Station::GetDeviceAddress());
    KvZANCommon::LegacyDriverAdapter adapter;
    adapter.SetCallback(&receiver);
    QEventLoop loop;
    std::optional<DFDataOutput::Burst> burst;
    QObject::connect(&receiver, &DriverReceiver::PassingOnBegins,
                     [&] { burst.emplace(station.GetOutput()); });
    QObject::connect(&receiver, &DriverReceiver::PassingOnEnds, [&burst] { burst.reset(); });
    QObject::connect(&receiver, &DriverReceiver::BlockReceived,
                     [&station](BearingBlock& block) { station.Process(block); });
    QObject::connect(&receiver, &DriverReceiver::LinkClosed, &loop, &QEventLoop::quit);
    while (state.KeepRunningBatch(BEARINGS)) {
        std::thread driver([&] {
            KvZANCommon::ILegacyDriverCallback& callback = adapter;
            DeliverBearings(callback, static_cast<std::size_t>(state.range()));
            callback.CloseDataLink();
        });
        loop.exec();
        driver.join();
    }
    if (station.GetOutput().GetCounters().fileSentences != static_cast<quint64>(state.iterations())) {
        state.SkipWithError("sentences are missing");
    }
}
BENCHMARK(BearingWay)->Arg(1)->Arg(64)->MeasureProcessCPUTime();

/// The same way in a station that runs a device: with its driver's thread, its control, and ranges, which
/// give each bearing the frequency of its channel.
void LiveWay(benchmark::State& state) {
    QFile::remove(SentencesName() + u".bak"_s);
    const DriverChoice choice{u"blocks"_s, {}};
    Station station(choice);
    station.StartOutput();
    QString fault;
    DriverComponentPtr component = DriverLibrary::Load(choice.name, fault);
    if (!component) {
        state.SkipWithError(fault.toUtf8().constData());
        return;
    }
    StationDevice device(station, choice, std::move(component));
    QEventLoop loop;
    // The mode is the last that a device gets.
    QObject::connect(&device.GetLink().GetReceiver(), &DriverReceiver::CommandReported, &loop,
                     &QEventLoop::quit);
    device.Open();
    loop.exec();
    DriverThread& thread = device.GetLink().GetThread();
    while (state.KeepRunningBatch(BEARINGS)) {
        thread.Post(
            DriverCall::Setting,
            [size = QString::number(state.range())](KvZANCommon::IDriver& driver) { driver.SetTest(size); },
            [&loop] { loop.quit(); });
        loop.exec();
    }
    if (station.GetOutput().GetCounters().fileSentences != static_cast<quint64>(state.iterations())) {
        state.SkipWithError("sentences are missing");
    }
}
BENCHMARK(LiveWay)->Arg(64)->MeasureProcessCPUTime();

/// Writes the same lines, already finished.
void WriteOnly(benchmark::State& state) {
    QFile file(Directory().filePath(u"ready.txt"_s));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) {
        state.SkipWithError("no file");
        return;
    }
    const QByteArray line =
        "$PLG,304.7,FRQ, 127500000,CMP,358.6,QUA, 43.0,LEV,-58.0,TIM,120000,ELV,10.7,PTC,1.1,"
        "RLL,1.9,ALT,15.0,PTM,120000,LAT, 55.00000,LON,5.0000000\r\n";
    while (state.KeepRunningBatch(BEARINGS)) {
        for (std::size_t i = 0; i < BEARINGS; ++i) {
            benchmark::DoNotOptimize(file.write(line));
        }
    }
}
BENCHMARK(WriteOnly)->Arg(1)->Arg(64)->MeasureProcessCPUTime();

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QDir::setCurrent(Directory().path()); // the log of the commands is written there
    CfgCenter::SetConfigDirectory(Directory().path());
    ICfg& settings = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    CfgCenter::SetComponentDirectory(QStringLiteral(ZAN_BENCH_DRIVERS));
    settings.SetBool(u"FileOutput_Enabled"_s, true);
    settings.SetString(u"FileOutput_Address"_s, SentencesName());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    CfgCenter::Close();
    return 0;
}
