#include "support/allocations.h"
#include "support/devicetree.h"
#include "support/fakedevice.h"
#include "support/storedsettings.h"
#include "zanserver/devicecontrol.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <array>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;
using namespace ZANServer;
using namespace std::chrono_literals;

TEST(DeviceControlAllocation, WishThatIsNotMovedIsHandedOverWithoutAnAllocation) {
    const StoredSettings settings;
    const DeviceTree tree;
    DeviceTree::SetAntennas({MakeAntenna(u"PX106"_s, u"RCV03"_s, 30000001.0, 1300e6)});
    DeviceTree::Connect();
    FakeDevice device;
    DriverThread thread([&] { return std::make_unique<FakeDriver>(device); },
                        std::make_shared<DriverReceiver>(u"device"_s));
    std::chrono::steady_clock::time_point now;
    DeviceControl control(thread, u"device"_s, {false, [&] { return now += 1s; }}); // no wish waits
    control.OnConnected();

    auto& frequency = *DeviceTree::ServerValue<ValueNumericDouble>(g_vdFrequency);
    auto& gain = *DeviceTree::ServerValue<ValueNumericDouble>(g_vdMGCLevel);
    auto& gainMode = *DeviceTree::ServerValue<ValueSelection>(g_vdGainControlMode);
    auto& interval = *DeviceTree::ServerValue<ValueSelection>(g_vdUpdateInterval);
    auto& hold = *DeviceTree::ServerValue<ValueNumericInt>(g_vdHoldTime);
    auto& emitters = *DeviceTree::ServerValue<ValueNumericInt>(g_vdSRNumEmitters);
    auto& squelch = *DeviceTree::ServerValue<ValueBool>(g_vdAuSquelch);
    auto& bandwidth = *DeviceTree::ServerValue<ValueSelection>(g_vdBandwidth);
    auto& demodulation = *DeviceTree::ServerValue<ValueSelection>(g_vdDemodulation);
    auto& volume = *DeviceTree::ServerValue<ValueNumericInt>(g_vdAuChannelVolume);
    gainMode.SetCurrentKey(1); // manual
    const auto settle = [&] {
        constexpr int STEPS = 200; // more than ever follow one another
        for (int i = 0; i < STEPS; ++i) {
            thread.Wait();
            QCoreApplication::processEvents();
        }
    };
    struct Wish {
        QString call;
        std::function<void(int number)> change; // to something else than the number before
    };
    const auto wishes = std::to_array<Wish>({
        {u"SetFrequency"_s, [&](int number) { frequency.SetValue(121.5e6 + 25e3 * number); }},
        {u"SetGainControl"_s, [&](int number) { gain.SetValue(10.0 + number); }},
        {u"SetAverageTime"_s, [&](int number) { interval.SetCurrentIndex(number % 2); }},
        {u"SetHoldTime"_s, [&](int number) { hold.SetValue(100 + number); }},
        {u"SetSRNumOfEmitters"_s, [&](int number) { emitters.SetValue(number % 2); }},
        {u"AlterMeasureSetting"_s, [&](int number) { squelch.SetValue(number % 2 == 1); }},
        {u"AlterMeasureSetting"_s, [&](int number) { bandwidth.SetCurrentIndex(number % 2); }},
        {u"AlterMeasureSetting"_s, [&](int number) { demodulation.SetCurrentIndex(number % 2); }},
        {u"SetAudioVolume"_s, [&](int number) { volume.SetValue(10 + number); }},
    });
    for (const Wish& wish : wishes) {
        wish.change(0);
        settle();
        device.TakeCalls();
        long allocations = -1;
        for (int number = 1; number <= 5; ++number) { // the queue gets its memory with the first ones
            allocations = AllocationsOf([&] { wish.change(number); });
            settle();
            EXPECT_EQ(device.TakeCalls(wish.call).size(), 1);
        }
        EXPECT_EQ(allocations, 0) << wish.call.toStdString();
    }
}
