#include "support/eventloop.h"
#include "support/printing.h"
#include "support/sleepingthread.h"
#include "zancommon/commandprotocol.h"
#include "zancommon/legacydriveradapter.h"
#include "zanserver/driverreceiver.h"

#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <future>
#include <malloc.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace ZANServer;

// Drivers that do not keep to the order that one would wish.

namespace {

/// Delivers blocks of one bearing through the adapter, as a driver's thread does. The time of a block holds
/// thread and number.
void Deliver(KvZANCommon::ILegacyDriverCallback& adapter, unsigned long long thread, int count) {
    for (int i = 0; i < count; ++i) {
        unsigned long long time = thread * 1'000'000 + static_cast<unsigned long long>(i);
        Bearing bearing;
        bearing.azimuth = static_cast<quint16>(thread);
        KvZANCommon::StatusStruct status;
        adapter.fillScanBuffer(0, time, 0, 1, &bearing, status);
    }
}

/// The most memory that this process has had.
qint64 PeakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

TEST(DriverFault, DriverThatDeliversFromFourThreadsAtOnceLosesNothing) {
    constexpr int BLOCKS_PER_THREAD = 5000;
    constexpr unsigned long long THREADS = 4;
    DriverReceiver receiver(u"four threads"_s);
    KvZANCommon::LegacyDriverAdapter adapter;
    adapter.SetCallback(&receiver);
    std::vector<std::vector<unsigned long long>> received(THREADS);
    std::size_t count = 0;
    QObject::connect(&receiver, &DriverReceiver::BlockReceived, &receiver, [&](BearingBlock& block) {
        received.at(block.time / 1'000'000).push_back(block.time % 1'000'000);
        EXPECT_EQ(block.bearings.at(0).azimuth, block.time / 1'000'000) << "blocks are not mixed";
        ++count;
    });
    std::vector<std::thread> threads;
    for (unsigned long long thread = 0; thread < THREADS; ++thread) {
        threads.emplace_back([&adapter, thread] { Deliver(adapter, thread, BLOCKS_PER_THREAD); });
    }
    EXPECT_TRUE(SpinUntil([&] { return count == THREADS * BLOCKS_PER_THREAD; })) << count;
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const auto& times : received) {
        ASSERT_EQ(times.size(), std::size_t{BLOCKS_PER_THREAD});
        EXPECT_TRUE(std::is_sorted(times.begin(), times.end()))
            << "each thread's blocks arrive in their order";
    }
}

TEST(DriverFault, WhatHasBeenWaitingIsPassedOnInOneGo) {
    DriverReceiver receiver(u"waiting"_s);
    KvZANCommon::LegacyDriverAdapter adapter;
    adapter.SetCallback(&receiver);
    QString order;
    QObject::connect(&receiver, &DriverReceiver::PassingOnBegins, &receiver, [&] { order += u'('; });
    QObject::connect(&receiver, &DriverReceiver::BlockReceived, &receiver,
                     [&](BearingBlock&) { order += u'.'; });
    QObject::connect(&receiver, &DriverReceiver::PassingOnEnds, &receiver, [&] { order += u')'; });
    Deliver(adapter, 0, 3);
    receiver.PassOnWaiting();
    Deliver(adapter, 0, 1);
    receiver.PassOnWaiting();
    EXPECT_EQ(order, u"(...)(.)"_s);
}

TEST(DriverFault, WhatADriverDeliversBeforeItHasACallbackIsLeftOut) {
    KvZANCommon::LegacyDriverAdapter adapter;
    Deliver(adapter, 0, 10);
    DriverReceiver receiver(u"late"_s);
    int count = 0;
    QObject::connect(&receiver, &DriverReceiver::BlockReceived, &receiver, [&](BearingBlock&) { ++count; });
    adapter.SetCallback(&receiver);
    Deliver(adapter, 1, 3);
    EXPECT_TRUE(SpinUntil([&] { return count == 3; }));
}

TEST(DriverFault, WhatADriverDeliversAfterItWasToldToStopArrivesAndHarmsNothing) {
    DriverReceiver receiver(u"stopped"_s);
    KvZANCommon::LegacyDriverAdapter adapter;
    adapter.SetCallback(&receiver);
    int count = 0;
    QObject::connect(&receiver, &DriverReceiver::BlockReceived, &receiver, [&](BearingBlock&) { ++count; });
    receiver.StopHoldingUp();
    std::thread driver([&adapter] { Deliver(adapter, 2, 50000); }); // more than the queue holds
    driver.join();
    receiver.PassOnWaiting();
    EXPECT_EQ(count, 50000);
    adapter.SetCallback(nullptr);
    Deliver(adapter, 2, 10);
    receiver.PassOnWaiting();
    EXPECT_EQ(count, 50000);
}

namespace {

/// Bytes of the process's heap that are in use.
std::size_t HeapInUse() {
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// Has a driver deliver blocks that nobody takes until it is held up, and returns what the heap has grown by.
/// \param delivered the blocks that have come through until then
std::size_t FillQueue(unsigned bearingsPerBlock, int blocks, int& delivered) {
    DriverReceiver receiver(u"filled"_s);
    std::vector<Bearing> bearings(bearingsPerBlock);
    std::atomic<int> count = 0;
    const std::size_t before = HeapInUse();
    std::promise<pid_t> driverId;
    std::thread driver([&] {
        driverId.set_value(gettid());
        for (int i = 0; i < blocks; ++i) {
            unsigned long long time = 0;
            KvZANCommon::StatusStruct status;
            receiver.fillScanBuffer(0, time, 0, bearingsPerBlock, bearings.data(), status);
            ++count;
        }
    });
    EXPECT_TRUE(AwaitSleep(driverId.get_future().get()))
        << "a driver that is faster than the station is held up";
    const std::size_t grown = HeapInUse() - before;
    delivered = count;
    receiver.StopHoldingUp();
    driver.join();
    receiver.PassOnWaiting();
    return grown;
}

} // namespace

TEST(DriverFault, WhatWaitsTakesNoMoreThanEightMegabytesHoweverItIsCutIntoBlocks) {
    constexpr std::size_t EIGHT_MEGABYTES = 8UL * 1024 * 1024;
    EXPECT_EQ(DriverReceiver::DEFAULT_CAPACITY, EIGHT_MEGABYTES);
    for (const auto& [bearings, blocks] :
         {std::pair{1U, 200000}, std::pair{1000U, 2000}, std::pair{60000U, 40}}) {
        int delivered = 0;
        // Beside what waits, the driver has the block in its hands that it is held up with.
        EXPECT_LE(FillQueue(bearings, blocks, delivered), EIGHT_MEGABYTES + bearings * sizeof(Bearing))
            << bearings;
        EXPECT_LT(delivered, blocks) << "a driver that is faster than the station is held up";
    }
}

TEST(DriverFault, BlockLargerThanTheQueueIsPassedOnInPieces) {
    constexpr unsigned COUNT = 100000;
    std::vector<Bearing> bearings(COUNT);
    for (unsigned i = 0; i < COUNT; ++i) {
        bearings[i].channel = static_cast<quint16>(i);
    }
    DriverReceiver receiver(u"small"_s, 65536);
    std::vector<Bearing> received;
    unsigned pieces = 0;
    QObject::connect(&receiver, &DriverReceiver::BlockReceived, &receiver, [&](BearingBlock& block) {
        EXPECT_LT(block.bearings.size() * sizeof(Bearing), 65536U);
        EXPECT_EQ(block.time, 7U);
        EXPECT_EQ(block.status.frequency, 1e8);
        received.insert(received.end(), block.bearings.begin(), block.bearings.end());
        ++pieces;
    });
    std::thread driver([&] {
        unsigned long long time = 7;
        KvZANCommon::StatusStruct status;
        status.frequency = 1e8;
        receiver.fillScanBuffer(0, time, 0, COUNT, bearings.data(), status);
    });
    EXPECT_TRUE(SpinUntil([&] { return received.size() >= COUNT; })) << received.size();
    driver.join();
    EXPECT_EQ(received, bearings);
    EXPECT_EQ(pieces, 25U) << "full pieces";
}

TEST(DriverFault, CommandThatIsReportedOnTheStationsOwnThreadDoesNotWaitForItself) {
    DriverReceiver receiver(u"small"_s, 1);
    QStringList commands;
    QObject::connect(&receiver, &DriverReceiver::CommandReported, &receiver,
                     [&](const QString& command) { commands.append(command); });
    for (QString command : {u"first"_s, u"second"_s}) {
        receiver.SetCommandLog(command);
    }
    receiver.PassOnWaiting();
    EXPECT_EQ(commands, (QStringList{u"first"_s, u"second"_s}));
}

TEST(DriverFault, BlockWithoutBearingsArrives) {
    DriverReceiver receiver(u"empty"_s);
    int count = 0;
    QObject::connect(&receiver, &DriverReceiver::BlockReceived, &receiver, [&](BearingBlock& block) {
        EXPECT_TRUE(block.bearings.empty());
        EXPECT_EQ(block.status.heading, 12.0);
        ++count;
    });
    unsigned long long time = 0;
    KvZANCommon::StatusStruct status;
    status.heading = 12.0;
    receiver.fillScanBuffer(0, time, 0, 0, nullptr, status);
    receiver.PassOnWaiting();
    EXPECT_EQ(count, 1);
}

TEST(DriverFault, XmlThatADriverReportsTakesBoundedTimeAndRoomInTheLog) {
    const QTemporaryDir directory;
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(directory.path()));
    CommandProtocol log(u"replay"_s, u"station"_s);
    ASSERT_TRUE(log.Init());
    DriverReceiver receiver(u"replay"_s);
    KvZANCommon::LegacyDriverAdapter adapter;
    adapter.SetCallback(&receiver);
    int written = 0;
    QObject::connect(&receiver, &DriverReceiver::CommandReported, &receiver,
                     [&](const QString& text) { written += log.Add(text) ? 1 : 0; });

    const QString declaration = u"<?xml version='1.0'?>"_s;
    const auto nest = [&](qsizetype levels) {
        return declaration + u"<a>"_s.repeated(levels) + u"</a>"_s.repeated(levels);
    };
    const QStringList texts{nest(4500), nest(200'000), declaration + u"<a/>"_s.repeated(5'000'000)};
    qsizetype bytes = 0;
    const QDeadlineTimer deadline(60'000); // some 0.3 s are needed
    const qint64 peakBefore = PeakKilobytes();
    for (QString text : texts) { // the log begins a new file behind 20 MB
        bytes += text.size();
        std::thread driver(
            [&] { static_cast<KvZANCommon::ILegacyDriverCallback&>(adapter).SetCommandLog(text); });
        const int next = written + 1;
        EXPECT_TRUE(SpinUntil([&] { return written == next; }));
        driver.join();
    }
    EXPECT_FALSE(deadline.hasExpired());
    EXPECT_LT(PeakKilobytes() - peakBefore, 400'000);
    constexpr qsizetype HEADERS = 10'000;
    qsizetype onDisk = 0;
    for (const QFileInfo& file : QDir(CommandProtocol::LOG_DIRECTORY.toString()).entryInfoList(QDir::Files)) {
        onDisk += file.size();
    }
    EXPECT_GE(onDisk, bytes);
    EXPECT_LT(onDisk, bytes + HEADERS) << "written as they came";
    QDir::setCurrent(before);
}
