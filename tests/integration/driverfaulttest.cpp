#include "support/eventloop.h"
#include "support/printing.h"
#include "zancommon/legacydriveradapter.h"
#include "zanstation/driverreceiver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

// Drivers that do not keep to the order that one would wish.

namespace {

/// Delivers blocks of one bearing through the adapter, as a driver's thread does. The time of a block tells
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
    receiver.StopBounding();
    std::thread driver([&adapter] { Deliver(adapter, 2, 10000); }); // more than the queue holds
    driver.join();
    receiver.PassOnWaiting();
    EXPECT_EQ(count, 10000);
    adapter.SetCallback(nullptr);
    Deliver(adapter, 2, 10);
    receiver.PassOnWaiting();
    EXPECT_EQ(count, 10000);
}
