// The way of a bearing from the driver's thread to the flushed sentence: adapter, queue between the threads,
// filters, value tree, output, file. The yardstick is the part that cannot be avoided while every sentence is
// passed to the system separately: writing the finished line. Processor time of both threads, per bearing.

#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "zancommon/legacydriveradapter.h"
#include "zanserver/driverreceiver.h"
#include "zanserver/station.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <optional>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

constexpr std::size_t BEARINGS = 16384; // of one run

/// A directory for the duration of the program, with the settings and the file of the sentences.
const QTemporaryDir& Directory() {
    static const QTemporaryDir directory;
    return directory;
}

QString SentencesName() {
    return Directory().filePath(u"sentences.txt"_s);
}

/// What a driver does in its thread: delivers all bearings in blocks of this size.
void Deliver(KvZANCommon::ILegacyDriverCallback& callback, std::size_t blockSize) {
    std::vector<Bearing> block(blockSize);
    KvZANCommon::StatusStruct status;
    status.frequency = 127.5e6;
    status.heading = 358.6;
    status.pitch = 1.1;
    status.roll = 1.9;
    status.latitude = 55.0;
    status.longitude = 5.0;
    status.altitude = 15.0;
    for (std::size_t sent = 0; sent < BEARINGS; sent += blockSize) {
        unsigned long long time = 1767268800000 + sent * 10;
        for (std::size_t i = 0; i < blockSize; ++i) {
            const std::size_t n =
                sent + i; // varied, so that branches cannot be predicted from the bearing before
            block[i].azimuth = static_cast<quint16>(n * 37 % 3600);
            block[i].elevation = static_cast<qint16>(n * 7 % 500);
            block[i].level = static_cast<qint16>(-static_cast<int>(n * 13 % 10000));
            block[i].quality = static_cast<quint16>(1 + n % 100);
        }
        callback.fillScanBuffer(0, time, 0, static_cast<unsigned>(blockSize), block.data(), status);
    }
    callback.CloseDataLink();
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
        std::thread driver([&] { Deliver(adapter, static_cast<std::size_t>(state.range())); });
        loop.exec();
        driver.join();
    }
    if (station.GetOutput().GetCounters().fileSentences != static_cast<quint64>(state.iterations())) {
        state.SkipWithError("sentences are missing");
    }
}
BENCHMARK(BearingWay)->Arg(1)->Arg(64)->MeasureProcessCPUTime();

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
    CfgCenter::SetConfigDirectory(Directory().path());
    ICfg& settings = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    settings.SetBool(u"FileOutput_Enabled"_s, true);
    settings.SetString(u"FileOutput_Address"_s, SentencesName());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    CfgCenter::Close();
    return 0;
}
