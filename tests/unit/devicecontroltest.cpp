#include "zanserver/devicecontrol.h"

#include "support/devicetree.h"
#include "support/eventloop.h"
#include "support/fakedevice.h"
#include "support/kepttotheend.h"
#include "support/observers.h"
#include "support/printing.h"
#include "support/storedsettings.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QThread>

#include <cmath>
#include <future>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;
using namespace ZANServer;
using namespace std::chrono_literals;

namespace {

const QString ADDRESS = u"device"_s;

/// A device with an HF and a VUHF antenna, its driver, and the control, by a clock that the test turns.
class DeviceControlTest : public testing::Test {
protected:
    DeviceControlTest() {
        AntennaData hf = MakeAntenna(u"PX110"_s, u"RCV01"_s, 300e3, 30e6);
        hf.handle = 0;
        hf.dfMethods = {METHOD_WAT};
        AntennaData vuhf = MakeAntenna(u"PX106"_s, u"RCV03"_s, 30000001.0, 1300e6);
        vuhf.handle = 1;
        vuhf.dfMethods = {METHOD_COR};
        DeviceTree::SetAntennas({hf, vuhf});
        DeviceTree::DeviceValue<ValueString>(g_vdDevOptions)->SetValue(u"ZAN-HFR"_s);
        ZANOptions::Instance()->ReadFromValueTree(ZANPath::Device(g_vdDevOptions));
        DeviceTree::Connect();
        StartThread();
    }
    ~DeviceControlTest() override {
        m_control.reset();
        m_thread.reset();
    }

    void StartThread() {
        m_thread = std::make_unique<DriverThread>([this] { return std::make_unique<FakeDriver>(m_device); },
                                                  std::make_shared<DriverReceiver>(ADDRESS));
    }
    DeviceControl& Start(bool keepsWishes = true) {
        m_control = std::make_unique<DeviceControl>(
            *m_thread, ADDRESS, DeviceControl::Options{keepsWishes, [this] { return m_now; }});
        return *m_control;
    }
    /// A control whose device is connected and has all wishes.
    DeviceControl& StartConnected() {
        Start();
        m_control->OnConnected();
        Settle();
        m_now += 1s;
        m_device.TakeCalls();
        return *m_control;
    }
    /// Lets everything happen that happens without time passing by.
    void Settle() {
        constexpr int STEPS_WITHOUT_A_CALL = 5; // more than ever follow one another
        qsizetype before = -1;
        for (int idle = 0; idle < STEPS_WITHOUT_A_CALL; ++idle) {
            m_thread->Wait();
            QCoreApplication::processEvents();
            if (const qsizetype count = m_device.CountCalls(); count != before) {
                before = count;
                idle = 0;
            }
        }
    }
    /// Lets time pass by, and what happens then.
    void Pass(std::chrono::milliseconds time) {
        m_now += time;
        m_control->SendDue();
        Settle();
    }

    template <class T>
    static T& Value(const ValueDescriptor& descriptor) {
        return *DeviceTree::ServerValue<T>(descriptor);
    }
    QString LastCall() {
        const QStringList calls = m_device.TakeCalls();
        return calls.isEmpty() ? u"none"_s : calls.last();
    }

    static void DisableAntennas() {
        for (const QString& node : {u"/Ant0"_s, u"/Ant1"_s}) {
            Tree::Instance()->Find<ValueBool>(DeviceTree::Path() + node + u"/AntEnabled"_s)->SetValue(false);
        }
        DeviceTree::Connect();
    }
    /// At the frequency that is wished first: an antenna with a switch for everything.
    static void SetSwitchableAntenna() {
        AntennaData antenna = MakeAntenna(u"PX115SR"_s, u"RCV03"_s, 30000001.0, 1300e6);
        antenna.handle = 1;
        antenna.dfMethods = {METHOD_COR, METHOD_SUPR};
        antenna.polarizationSupport = true;
        antenna.activePassiveSupport = true;
        DeviceTree::SetAntennas({antenna});
        DeviceTree::Connect();
    }
    static ValueNumericDouble& Frequency() { return Value<ValueNumericDouble>(g_vdFrequency); }
    static QString Report(const QString& wish, const QString& what) {
        const auto* const text =
            Tree::Instance()->Find<ValueString>(u"/ZANServer/Res/CtlR/%1/%2"_s.arg(wish, what));
        return text ? text->GetValue() : u"missing"_s;
    }
    static QString ReasonFor(const QString& wish) { return Report(wish, u"Reason"_s); }
    /// Of a channel, in a block of several ones around another frequency.
    [[nodiscard]] double FrequencyOf(long range, unsigned channel) const {
        BearingBlock block;
        block.status.frequency = 1.5e9;
        block.range = range;
        block.firstChannel = channel;
        block.bearings.resize(2);
        return m_control->GetFrequency(block, 0);
    }
    /// Between two channels of a wideband block.
    [[nodiscard]] double WidebandStep() const {
        BearingBlock block;
        block.range = BearingBlock::WIDEBAND;
        block.bearings.resize(3);
        return m_control->GetFrequency(block, 2) - m_control->GetFrequency(block, 1);
    }
    static void SetRanges(const QStringList& texts) {
        auto& list = Value<ValueStringList>(g_vdScanRanges);
        const auto transaction = list.CreateTransaction({TChangeCode::ListReplaced});
        list.Clear();
        for (const QString& text : texts) {
            list.PushBack(text);
        }
    }

    StoredSettings m_settings;
    DeviceTree m_tree;
    FakeDevice m_device;
    std::chrono::steady_clock::time_point m_now{1h};
    std::unique_ptr<DriverThread> m_thread;
    std::unique_ptr<DeviceControl> m_control;
};

const QString AIRBAND = uR"({"start":118000000,"step":25000,"stop":137000000})"_s; // 761 channels
const QString MARINE = uR"({"start":156000000,"step":25000,"stop":162000000})"_s;  // 241 channels

} // namespace

// What reaches the driver, and when

TEST_F(DeviceControlTest, FrequencyThatIsSetReachesTheDriver) {
    StartConnected();
    Frequency().SetValue(127.5e6);
    Settle();
    EXPECT_EQ(m_device.TakeCalls(), QStringList{u"SetFrequency 127500000"_s});
    EXPECT_EQ(ReasonFor(u"Frequency"_s), QString());
}

TEST_F(DeviceControlTest, ConnectedDeviceGetsAllWishesInTheirOrderAndTheModeAtLast) {
    m_device.converters = {{0, CONVERTER_RCV01, u"RCV01"_s, 0, 0, true, false}};
    Start();
    SetRanges({AIRBAND});
    Value<ValueBool>(g_vdPreAmplifierHf).SetValue(true);
    m_control->OnConnected();
    Settle();
    EXPECT_EQ(m_device.TakeCalls(),
              (QStringList{u"SetGPSTimeUsage 1"_s, u"SetConverterSetup 0: preamplifier 1, 0 dB"_s,
                           u"SetRfAttenuator 0 0"_s, u"SetGainControl auto -1"_s, u"SetFrequency 100000000"_s,
                           u"SetAverageTime 0.5"_s, u"SetScanAveraging 1"_s, u"SetHoldTime 1000 0 500"_s,
                           u"SetSRNumOfEmitters 1 0"_s, u"AlterMeasureSetting 100000000"_s, u"SetMode 0"_s,
                           u"DeleteAllChannels"_s, u"AddFreqRange 0: 0-760/118000000"_s,
                           u"SetAudioVolume 50"_s, u"SetMode 0"_s}));
}

TEST_F(DeviceControlTest, NothingIsSentBeforeADeviceIsConnectedAndAfterItIsLost) {
    Start();
    Frequency().SetValue(127.5e6);
    Settle();
    EXPECT_EQ(m_device.TakeCalls(), QStringList());
    m_control->OnConnected();
    Settle();
    m_device.TakeCalls();
    m_control->OnLost();
    Frequency().SetValue(128e6);
    Pass(1s);
    EXPECT_EQ(m_device.TakeCalls(), QStringList());
}

TEST_F(DeviceControlTest, WhatALostDeviceHasToldIsNotMeasured) {
    StartConnected();
    SetRanges({AIRBAND});
    Settle();
    const auto& sweepTime = Value<ValueNumericInt>(g_vdScanSweepTime);
    const auto& channelCount = Value<ValueNumericInt>(g_vdScanChannelCount);
    EXPECT_EQ(sweepTime.GetState(), TValueState::Valid);
    EXPECT_EQ(channelCount.GetState(), TValueState::Valid);
    m_control->OnLost();
    EXPECT_EQ(sweepTime.GetState(), TValueState::NotMeasured);
    EXPECT_EQ(channelCount.GetState(), TValueState::NotMeasured);
    for (const QString& node : {u"/Ant0"_s, u"/Ant1"_s}) {
        const ValueBase* const compass =
            Tree::Instance()->GetValue(DeviceTree::Path() + node + u"/AntCompassValue"_s);
        ASSERT_NE(compass, nullptr);
        EXPECT_EQ(compass->GetState(), TValueState::NotMeasured);
    }
}

TEST_F(DeviceControlTest, AnswerOfADeviceThatIsLostMeanwhileIsNotTaken) {
    StartConnected();
    m_device.Refuse(u"SetFrequency"_s, u"no"_s);
    std::promise<void> release;
    m_thread->Post(DriverCall::Setting, [&](KvZANCommon::IDriver&) { release.get_future().wait(); });
    Frequency().SetValue(110e6);
    m_control->OnLost();
    release.set_value();
    Settle();
    EXPECT_EQ(Frequency().GetValue(), 110e6);
    EXPECT_EQ(ReasonFor(u"Frequency"_s), QString());
    m_device.Allow(u"SetFrequency"_s);
    m_device.TakeCalls();
    m_control->OnConnected();
    Settle();
    EXPECT_EQ(m_device.TakeCalls(u"SetFrequency"_s), QStringList{u"SetFrequency 110000000"_s});
}

TEST_F(DeviceControlTest, SweepTimeThatTheDriverDoesNotTellIsNotMeasuredAndNoFault) {
    m_device.Refuse(u"GetSweepTime"_s, u"it does not scan"_s);
    StartConnected();
    EXPECT_EQ(Value<ValueNumericInt>(g_vdScanSweepTime).GetState(), TValueState::NotMeasured);
    EXPECT_EQ(m_device.GetError(), QString()) << "it is not taken for the reason of a later refusal";
}

TEST_F(DeviceControlTest, DeviceThatIsConnectedAgainGetsAllWishesAgain) {
    StartConnected();
    m_control->OnLost();
    Frequency().SetValue(128e6);
    m_control->OnConnected();
    Settle();
    const QStringList calls = m_device.TakeCalls();
    EXPECT_TRUE(calls.contains(u"SetFrequency 128000000"_s));
    EXPECT_TRUE(calls.endsWith(u"SetMode 0"_s));
}

TEST_F(DeviceControlTest, WishThatIsSetToWhatTheDeviceHasIsNotSent) {
    StartConnected();
    Frequency().SetValue(127.5e6);
    Settle();
    Frequency().SetValue(128e6);
    Frequency().SetValue(127.5e6);
    m_device.TakeCalls();
    Pass(1s);
    EXPECT_EQ(m_device.TakeCalls(), QStringList());
}

TEST_F(DeviceControlTest, KnobCostsTheDeviceTheFirstTheLastAndOneInFiftyMillisecondsBetween) {
    StartConnected();
    QStringList calls;
    for (int i = 1; i <= 100; ++i) { // 10 ms apart
        Frequency().SetValue(100e6 + i);
        Settle();
        Pass(10ms);
    }
    calls = m_device.TakeCalls();
    EXPECT_EQ(calls.first(), u"SetFrequency 100000001"_s);
    EXPECT_EQ(calls.last(), u"SetFrequency 100000100"_s);
    EXPECT_EQ(calls.size(), 21); // at 0 ms, 50 ms ... 1000 ms
    Pass(10s);
    EXPECT_EQ(m_device.TakeCalls(), QStringList());
}

TEST_F(DeviceControlTest, OperationsArePacedEachByItself) {
    StartConnected();
    Frequency().SetValue(127.5e6);
    Value<ValueNumericInt>(g_vdAuChannelVolume).SetValue(70);
    Settle();
    EXPECT_EQ(m_device.TakeCalls(), (QStringList{u"SetFrequency 127500000"_s, u"SetAudioVolume 70"_s}));
}

TEST_F(DeviceControlTest, IntervalBetweenTwoCallsIsASetting) {
    m_settings.Write("[General]\nControl_Interval=200\n");
    StartConnected();
    Frequency().SetValue(101e6);
    Settle();
    Frequency().SetValue(102e6);
    m_device.TakeCalls();
    Pass(199ms);
    EXPECT_EQ(m_device.TakeCalls(), QStringList());
    Pass(1ms);
    EXPECT_EQ(m_device.TakeCalls(), QStringList{u"SetFrequency 102000000"_s});
}

TEST_F(DeviceControlTest, WhatWaitsIsSentByTheEventLoop) {
    Start();
    m_control->OnConnected();
    Settle();
    m_device.TakeCalls();
    Frequency().SetValue(101e6); // sooner than 50 ms after that of the connection
    Settle();
    EXPECT_EQ(m_device.TakeCalls(), QStringList());
    m_now += 50ms;
    EXPECT_TRUE(SpinUntil([this] {
        m_thread->Wait();
        return m_device.TakeCalls().contains(u"SetFrequency 101000000"_s);
    }));
}

TEST_F(DeviceControlTest, WhileACallIsUnderWayOnlyTheLastWishWaits) {
    StartConnected();
    std::promise<void> release;
    m_thread->Post(DriverCall::Setting, [&](KvZANCommon::IDriver&) { release.get_future().wait(); });
    for (int i = 1; i <= 100; ++i) {
        m_now += 1s;
        Frequency().SetValue(100e6 + i);
    }
    release.set_value();
    Settle();
    EXPECT_EQ(m_device.TakeCalls(), (QStringList{u"SetFrequency 100000001"_s, u"SetFrequency 100000100"_s}));
}

TEST_F(DeviceControlTest, WishThatReturnsToTheValueBeforeWhileACallIsUnderWayIsSent) {
    StartConnected();
    std::promise<void> release;
    m_thread->Post(DriverCall::Setting, [&](KvZANCommon::IDriver&) { release.get_future().wait(); });
    Frequency().SetValue(110e6);
    Frequency().SetValue(100e6); // which the device had
    m_now += 1s;
    release.set_value();
    Settle();
    EXPECT_EQ(LastCall(), u"SetFrequency 100000000"_s);
    EXPECT_EQ(Frequency().GetValue(), 100e6);
}

// What is moved, and what is refused

TEST_F(DeviceControlTest, FrequencyOutsideTheLimitsIsMovedAndTheTreeTellsFromWhatToWhatAndWhy) {
    StartConnected();
    CodeObserver display;
    Frequency().AddObserver(&display);
    Frequency().SetValue(2e9, &display);
    Settle();
    EXPECT_EQ(Frequency().GetValue(), 1300e6);
    EXPECT_EQ(display.codes.size(), 1U) << "of the move, not of its own change";
    EXPECT_EQ(m_device.TakeCalls(), QStringList{u"SetFrequency 1300000000"_s});
    EXPECT_EQ(Report(u"Frequency"_s, u"Asked"_s), u"2 GHz"_s);
    EXPECT_EQ(Report(u"Frequency"_s, u"CarriedOut"_s), u"1.3 GHz"_s);
    EXPECT_EQ(ReasonFor(u"Frequency"_s), u"the mode goes from 300 kHz - 1.3 GHz"_s);
    Frequency().SetValue(120e6);
    EXPECT_EQ(Report(u"Frequency"_s, u"Asked"_s), QString()) << "carried out as it was asked";
    EXPECT_EQ(ReasonFor(u"Frequency"_s), QString());
}

TEST_F(DeviceControlTest, BandThatReachesBeyondItsAntennaIsMovedWhenTheModeBecomesWideband) {
    StartConnected();
    Frequency().SetValue(1300e6);
    Settle();
    m_device.TakeCalls();
    m_now += 1s;
    Value<ValueSelection>(g_vdOperationMode).SetCurrentKey(OPMODE_WIDEBAND_FFM);
    Settle();
    const QStringList calls = m_device.TakeCalls();
    ASSERT_GE(calls.size(), 2);
    EXPECT_TRUE(calls.first().startsWith(u"SetFrequency 129"_s)) << calls.first().toStdString();
    EXPECT_EQ(calls.last(), u"SetMode 2"_s) << "behind all that it needs";
    EXPECT_TRUE(ReasonFor(u"Frequency"_s).contains(u"must lie in the range of PX106"_s));
}

TEST_F(DeviceControlTest, RefusedFrequencyGoesBackToThatOfTheDeviceWithItsText) {
    StartConnected();
    m_device.With([](FakeDevice& device) { device.frequency = 99e6; });
    m_device.Refuse(u"SetFrequency"_s, u"the synthesiser is not locked"_s);
    Frequency().SetValue(127.5e6);
    Settle();
    EXPECT_EQ(Frequency().GetValue(), 99e6);
    EXPECT_EQ(Report(u"Frequency"_s, u"Asked"_s), u"127.5 MHz"_s);
    EXPECT_EQ(Report(u"Frequency"_s, u"CarriedOut"_s), u"99 MHz"_s);
    EXPECT_EQ(ReasonFor(u"Frequency"_s), u"the synthesiser is not locked"_s);
}

TEST_F(DeviceControlTest, RefusedWishIsNotTriedAgainUntilItChangesOrTheDeviceIsConnectedAgain) {
    StartConnected();
    m_device.Refuse(u"SetAudioVolume"_s, u"no audio"_s);
    auto& volume = Value<ValueNumericInt>(g_vdAuChannelVolume);
    volume.SetValue(70);
    Settle();
    EXPECT_EQ(volume.GetValue(), 50);
    m_device.TakeCalls();
    Value<ValueSelection>(g_vdOperationMode).SetCurrentKey(OPMODE_SCAN);
    Pass(10s);
    EXPECT_EQ(m_device.TakeCalls(u"SetAudioVolume"_s), QStringList());
    volume.SetValue(71);
    Settle();
    EXPECT_EQ(m_device.TakeCalls(u"SetAudioVolume"_s), QStringList{u"SetAudioVolume 71"_s});
    m_control->OnLost();
    m_control->OnConnected();
    Settle();
    EXPECT_EQ(m_device.TakeCalls(u"SetAudioVolume"_s), QStringList{u"SetAudioVolume 50"_s});
}

TEST_F(DeviceControlTest, RefusedWishThatNothingIsKnownToGoBackToStaysAndIsSentOnce) {
    m_device.Refuse(u"SetHoldTime"_s, u"no search"_s);
    StartConnected();
    EXPECT_EQ(Value<ValueNumericInt>(g_vdHoldTime).GetValue(), 1000);
    EXPECT_EQ(Value<ValueNumericInt>(g_vdHoldTime).GetState(), TValueState::NotMeasured);
    EXPECT_EQ(ReasonFor(u"HoldTimes"_s), u"no search"_s);
    EXPECT_EQ(Report(u"HoldTimes"_s, u"CarriedOut"_s), QString());
    Pass(10s);
    EXPECT_EQ(m_device.TakeCalls(), QStringList());
}

TEST_F(DeviceControlTest, FrequencyThatIsRefusedBeforeAnyWasCarriedOutGoesBackToThatOfTheDevice) {
    m_device.With([](FakeDevice& device) { device.frequency = 99e6; });
    m_device.Refuse(u"SetFrequency"_s, u"the synthesiser is not locked"_s);
    StartConnected();
    EXPECT_EQ(Frequency().GetValue(), 99e6);
    EXPECT_EQ(Frequency().GetState(), TValueState::Valid);
    EXPECT_EQ(Report(u"Frequency"_s, u"Asked"_s), u"100 MHz"_s);
    EXPECT_EQ(Report(u"Frequency"_s, u"CarriedOut"_s), u"99 MHz"_s);
    EXPECT_EQ(ReasonFor(u"Frequency"_s), u"the synthesiser is not locked"_s);
}

TEST_F(DeviceControlTest, FrequencyThatNoAntennaServesBeforeAnyWasCarriedOutGoesBackToThatOfTheDevice) {
    DisableAntennas();
    m_device.With([](FakeDevice& device) { device.frequency = 99e6; });
    StartConnected();
    EXPECT_EQ(m_device.TakeCalls(u"SetFrequency"_s), QStringList());
    EXPECT_EQ(Frequency().GetValue(), 99e6);
    EXPECT_EQ(Frequency().GetState(), TValueState::Valid);
    EXPECT_EQ(Report(u"Frequency"_s, u"Asked"_s), u"100 MHz"_s);
    EXPECT_EQ(Report(u"Frequency"_s, u"CarriedOut"_s), u"99 MHz"_s);
    EXPECT_TRUE(ReasonFor(u"Frequency"_s).startsWith(u"no antenna serves"_s));
}

TEST_F(DeviceControlTest, FrequencyOfTheDeviceThatNoAntennaServesStaysWithItsReason) {
    DisableAntennas();
    m_device.With([](FakeDevice& device) { device.frequency = 99e6; });
    StartConnected();
    const QString reason = ReasonFor(u"Frequency"_s);
    Value<ValueSelection>(g_vdOperationMode).SetCurrentKey(OPMODE_FFM); // has the frequency wished again
    Settle();
    EXPECT_EQ(m_device.TakeCalls(u"SetFrequency"_s), QStringList());
    EXPECT_EQ(Frequency().GetValue(), 99e6);
    EXPECT_EQ(Frequency().GetState(), TValueState::Valid);
    EXPECT_EQ(Report(u"Frequency"_s, u"Asked"_s), u"100 MHz"_s) << "what the operator has asked";
    EXPECT_EQ(ReasonFor(u"Frequency"_s), reason);
}

TEST_F(DeviceControlTest, RefusedFrequencyIsNotMeasuredWhenTheDriverCannotTellThatOfTheDevice) {
    m_device.Refuse(u"SetFrequency"_s, u"the synthesiser is not locked"_s);
    m_device.Refuse(u"GetFrequency"_s, u"nor does it say where"_s);
    StartConnected();
    EXPECT_EQ(Frequency().GetState(), TValueState::NotMeasured);
    EXPECT_EQ(Report(u"Frequency"_s, u"CarriedOut"_s), QString());
    EXPECT_EQ(ReasonFor(u"Frequency"_s), u"the synthesiser is not locked"_s);
    m_device.Allow(u"SetFrequency"_s);
    Frequency().SetValue(127.5e6);
    Settle();
    EXPECT_EQ(Frequency().GetState(), TValueState::Valid) << "it is carried out";
    m_device.Refuse(u"SetFrequency"_s, u"no"_s);
    m_now += 1s;
    Frequency().SetValue(128e6);
    Settle();
    EXPECT_EQ(Frequency().GetValue(), 127.5e6) << "what was carried out last";
    EXPECT_EQ(Frequency().GetState(), TValueState::Valid);
}

TEST_F(DeviceControlTest, FrequencyOfTheDeviceThatTheValueCannotHoldIsNotMeasured) {
    m_device.With([](FakeDevice& device) { device.frequency = 40e9; });
    m_device.Refuse(u"SetFrequency"_s, u"no"_s);
    StartConnected();
    EXPECT_EQ(Frequency().GetState(), TValueState::NotMeasured);
    EXPECT_EQ(Report(u"Frequency"_s, u"CarriedOut"_s), u"40 GHz"_s);
}

TEST_F(DeviceControlTest, RefusedModeIsNotMeasuredBecauseNoDriverIsAskedForIt) {
    m_device.Refuse(u"SetMode"_s, u"it is jammed"_s);
    StartConnected();
    const auto& mode = Value<ValueSelection>(g_vdOperationMode);
    EXPECT_EQ(mode.GetState(), TValueState::NotMeasured);
    m_device.Allow(u"SetMode"_s);
    Value<ValueSelection>(g_vdOperationMode).SetCurrentKey(OPMODE_FFM);
    Settle();
    EXPECT_EQ(mode.GetState(), TValueState::Valid);
}

TEST_F(DeviceControlTest, RefusedWishThatNoDriverIsAskedForGoesBackToWhatWasCarriedOutLast) {
    StartConnected();
    for (const QString& operation :
         {u"SetScanAveraging"_s, u"SetHoldTime"_s, u"SetSRNumOfEmitters"_s, u"SetMode"_s}) {
        m_device.Refuse(operation, u"no"_s);
    }
    Value<ValueNumericInt>(g_vdScanAveraging).SetValue(8);
    Value<ValueNumericInt>(g_vdHoldTime).SetValue(2000);
    Value<ValueNumericInt>(g_vdSignalTime).SetValue(300);
    Value<ValueNumericInt>(g_vdPauseTime).SetValue(700);
    Value<ValueNumericInt>(g_vdSRNumEmitters).SetValue(3);
    Value<ValueSelection>(g_vdOperationMode).SetCurrentKey(OPMODE_SCAN);
    Settle();
    Pass(50ms);
    EXPECT_EQ(Value<ValueNumericInt>(g_vdScanAveraging).GetValue(), 1);
    EXPECT_EQ(Value<ValueNumericInt>(g_vdHoldTime).GetValue(), 1000);
    EXPECT_EQ(Value<ValueNumericInt>(g_vdSignalTime).GetValue(), 0);
    EXPECT_EQ(Value<ValueNumericInt>(g_vdPauseTime).GetValue(), 500);
    EXPECT_EQ(Value<ValueNumericInt>(g_vdSRNumEmitters).GetValue(), 0);
    EXPECT_EQ(Value<ValueSelection>(g_vdOperationMode).GetCurrentKey(), OPMODE_0);
    EXPECT_EQ(Value<ValueSelection>(g_vdOperationMode).GetState(), TValueState::Valid);
    EXPECT_EQ(Report(u"ScanAveraging"_s, u"Asked"_s), u"8"_s);
    EXPECT_EQ(Report(u"ScanAveraging"_s, u"CarriedOut"_s), u"1"_s);
    EXPECT_EQ(Report(u"HoldTimes"_s, u"Asked"_s), u"hold 2000 ms, signal 300 ms, pause 700 ms"_s);
    EXPECT_EQ(Report(u"HoldTimes"_s, u"CarriedOut"_s), u"hold 1000 ms, signal 0 ms, pause 500 ms"_s);
    EXPECT_EQ(Report(u"SRNumEmitters"_s, u"CarriedOut"_s), u"automatic"_s);
    EXPECT_EQ(ReasonFor(u"OperationMode"_s), u"no"_s);
}

TEST_F(DeviceControlTest, RefusedAverageTimeGoesBackToThatOfTheDevice) {
    m_device.With([](FakeDevice& device) { device.averageTime = 0.2; });
    m_device.Refuse(u"SetAverageTime"_s, u"no"_s);
    StartConnected();
    EXPECT_EQ(Value<ValueSelection>(g_vdUpdateInterval).GetStringValue(), u"200 ms"_s);
    EXPECT_EQ(Value<ValueSelection>(g_vdUpdateInterval).GetState(), TValueState::Valid);
}

TEST_F(DeviceControlTest, AverageTimeOfTheDeviceThatIsInNoListIsNotMeasured) {
    m_device.With([](FakeDevice& device) { device.averageTime = 0.33; });
    m_device.Refuse(u"SetAverageTime"_s, u"no"_s);
    StartConnected();
    EXPECT_EQ(Value<ValueSelection>(g_vdUpdateInterval).GetState(), TValueState::NotMeasured);
    EXPECT_EQ(Report(u"AverageTime"_s, u"CarriedOut"_s), u"0.33 s"_s);
}

TEST_F(DeviceControlTest, RefusedGainAndGpsTimeGoBackToThoseOfTheDevice) {
    m_device.With([](FakeDevice& device) { device.gain = {u"manual"_s, -1, 30.0}; });
    m_device.Refuse(u"SetGainControl"_s, u"no"_s);
    m_device.Refuse(u"SetGPSTimeUsage"_s, u"no receiver"_s);
    Value<ValueBool>(g_vdGpsTime).SetValue(true);
    StartConnected();
    EXPECT_EQ(Value<ValueSelection>(g_vdGainControlMode).GetCurrentKey(), 1);
    EXPECT_EQ(Value<ValueNumericDouble>(g_vdMGCLevel).GetValue(), 30.0);
    EXPECT_FALSE(Value<ValueBool>(g_vdGpsTime).GetValue());
}

TEST_F(DeviceControlTest, RefusedMeasureSettingsGoBackToThoseOfTheDevice) {
    m_device.With([](FakeDevice& device) {
        device.df.emplace().levelThreshold = 17;
        device.dem.emplace().demodulation = 2;
    });
    m_device.Refuse(u"AlterMeasureSetting"_s, u"no"_s);
    Value<ValueNumericDouble>(g_vdLevelThreshold).SetValue(5.0);
    StartConnected();
    EXPECT_EQ(Value<ValueNumericDouble>(g_vdLevelThreshold).GetValue(), 17.0);
    EXPECT_EQ(Value<ValueSelection>(g_vdDemodulation).GetStringValue(), u"FM"_s);
}

TEST_F(DeviceControlTest, RefusedPreamplifierAndAttenuationGoBackToThoseOfTheDevice) {
    m_device.converters = {{0, CONVERTER_RCV01, u"RCV01"_s, 0, 12, true, true}};
    m_device.Refuse(u"SetConverterSetup"_s, u"no"_s);
    m_device.Refuse(u"SetRfAttenuator"_s, u"no"_s);
    Start();
    Value<ValueBool>(g_vdPreAmplifierHf).SetValue(false);
    Value<ValueSelection>(g_vdAttenuationHf).SetCurrentKey(0);
    m_control->OnConnected();
    Settle();
    EXPECT_TRUE(Value<ValueBool>(g_vdPreAmplifierHf).GetValue());
    EXPECT_EQ(Value<ValueSelection>(g_vdAttenuationHf).GetCurrentKey(), 12);
    EXPECT_EQ(ReasonFor(u"Attenuation"_s), u"no"_s);
    Pass(10s);
    EXPECT_EQ(m_device.TakeCalls(u"SetRfAttenuator"_s).size(), 1);
}

TEST_F(DeviceControlTest, RefusedPreamplifierOfVuhfGoesBackToThatOfTheDevice) {
    m_device.converters = {{0, CONVERTER_RCV01, u"RCV01"_s, 0, 0, true, false},
                           {1, CONVERTER_RCV03, u"RCV03"_s, 1, 0, true, true}};
    m_device.Refuse(u"SetConverterSetup"_s, u"no"_s);
    StartConnected();
    EXPECT_TRUE(Value<ValueBool>(g_vdPreAmplifierVuhf).GetValue());
    EXPECT_FALSE(Value<ValueBool>(g_vdPreAmplifierHf).GetValue());
    EXPECT_EQ(ReasonFor(u"Converters"_s), u"no"_s);
}

TEST_F(DeviceControlTest, RefusedPreamplifierThatTheDeviceDoesNotTellGoesBackAndIsSentAgain) {
    m_device.converters = {{0, CONVERTER_RCV01, u"RCV01"_s, 0, 0, true, false}};
    StartConnected();
    m_device.Refuse(u"SetConverterSetup"_s, u"no"_s);
    m_device.Refuse(u"GetConverterProperty"_s, u"nor that"_s);
    auto& preamplifier = Value<ValueBool>(g_vdPreAmplifierHf);
    preamplifier.SetValue(true);
    Settle();
    EXPECT_FALSE(preamplifier.GetValue());
    EXPECT_EQ(preamplifier.GetState(), TValueState::NotMeasured) << "of several converters some may have it";
    m_device.Allow(u"SetConverterSetup"_s);
    m_device.TakeCalls();
    Pass(50ms);
    EXPECT_EQ(m_device.TakeCalls(u"SetConverterSetup"_s),
              QStringList{u"SetConverterSetup 0: preamplifier 0, 0 dB"_s});
    EXPECT_EQ(preamplifier.GetState(), TValueState::Valid);
}

TEST_F(DeviceControlTest, RefusedAttenuationThatTheDeviceDoesNotTellGoesBackAndIsSentAgain) {
    m_device.converters = {{0, CONVERTER_RCV01, u"RCV01"_s, 0, 0, true, false}};
    StartConnected();
    m_device.Refuse(u"SetRfAttenuator"_s, u"no"_s);
    m_device.Refuse(u"GetConverterProperty"_s, u"nor that"_s);
    auto& attenuation = Value<ValueSelection>(g_vdAttenuationHf);
    attenuation.SetCurrentKey(12);
    Settle();
    EXPECT_EQ(attenuation.GetCurrentKey(), 0);
    EXPECT_EQ(attenuation.GetState(), TValueState::NotMeasured) << "of several converters some may have it";
    EXPECT_EQ(ReasonFor(u"Attenuation"_s), u"no"_s);
    m_device.Allow(u"SetRfAttenuator"_s);
    m_device.TakeCalls();
    Pass(50ms);
    EXPECT_EQ(m_device.TakeCalls(), QStringList{u"SetRfAttenuator 0 0"_s});
    EXPECT_EQ(attenuation.GetState(), TValueState::Valid);
}

TEST_F(DeviceControlTest, RefusedSetupOfAnAntennaGoesBackToThatOfTheDevice) {
    m_device.antennas = {{0, u"PX110"_s, 300e3, 30e6, true, false, false}};
    m_device.antennaSetups = {{0, {400e3, 20e6}, 2, 0, -1, 7.5, {}}};
    m_device.Refuse(u"SetAntennaSetup"_s, u"fixed"_s);
    StartConnected();
    const auto number = [](const QString& name) {
        return Tree::Instance()
            ->Find<ValueNumericDouble>(DeviceTree::Path() + u"/Ant0/"_s + name)
            ->GetValue();
    };
    EXPECT_EQ(number(u"AntMechOffset"_s), 7.5);
    EXPECT_EQ(number(u"AntMinRange"_s), 400e3);
    EXPECT_EQ(number(u"AntMaxRange"_s), 20e6);
    EXPECT_EQ(ReasonFor(u"Antennas"_s), u"fixed"_s);
}

TEST_F(DeviceControlTest, RefusedSetupOfAnAntennaThatTheDeviceDoesNotTellGoesBackToTheOneBefore) {
    m_device.antennas = {{0, u"PX110"_s, 300e3, 30e6, true, false, false}};
    m_device.antennaSetups = {{0, {300e3, 30e6}, POLARISATION_VERTICAL, 0, -1, 0.0, {}}};
    StartConnected();
    m_device.Refuse(u"SetAntennaSetup"_s, u"fixed"_s);
    m_device.Refuse(u"GetAntennaSetup"_s, u"nor that"_s);
    auto* const offset =
        Tree::Instance()->Find<ValueNumericDouble>(DeviceTree::Path() + u"/Ant0/AntMechOffset"_s);
    offset->SetValue(90.0);
    Settle();
    EXPECT_EQ(offset->GetValue(), 0.0);
    EXPECT_EQ(ReasonFor(u"Antennas"_s), u"fixed"_s);
}

TEST_F(DeviceControlTest, RefusedWishThatIsNotMeasuredIsNotKept) {
    m_settings.Write("[General]\nZANStations/Count=1\n[ZANStations/ZANStation0]\nDeviceAddress=device\n"
                     "[ZANStations/ZANStation0/Control]\nVolume=30\n");
    m_device.Refuse(u"SetAudioVolume"_s, u"no audio"_s);
    Start();
    Value<ValueNumericInt>(g_vdAuChannelVolume).SetValue(99);
    m_control->OnConnected();
    Settle();
    EXPECT_EQ(Value<ValueNumericInt>(g_vdAuChannelVolume).GetState(), TValueState::NotMeasured);
    m_control.reset();
    EXPECT_TRUE(m_settings.CloseAndRead().contains(u"Volume=30"_s));
}

TEST_F(DeviceControlTest, RefusalWithoutATextIsToldWithItsCode) {
    StartConnected();
    m_device.Refuse(u"SetAudioVolume"_s, QString());
    Value<ValueNumericInt>(g_vdAuChannelVolume).SetValue(70);
    Settle();
    EXPECT_EQ(ReasonFor(u"AuChannelVolume"_s), u"the driver refuses it with -2"_s);
}

TEST_F(DeviceControlTest, ExceptionIsARefusalAndTheNextWishIsCarriedOut) {
    StartConnected();
    QStringList failures;
    QObject::connect(m_thread.get(), &DriverThread::Failed, m_thread.get(),
                     [&](DriverCall /*kind*/, const QString& text) { failures.append(text); });
    m_device.ThrowIn(u"SetAudioVolume"_s);
    Value<ValueNumericInt>(g_vdAuChannelVolume).SetValue(70);
    Settle();
    EXPECT_EQ(Value<ValueNumericInt>(g_vdAuChannelVolume).GetValue(), 50);
    EXPECT_EQ(ReasonFor(u"AuChannelVolume"_s), u"the driver threw an exception"_s);
    EXPECT_EQ(failures.size(), 1);
    m_device.ThrowIn(QString());
    Value<ValueNumericInt>(g_vdAuChannelVolume).SetValue(71);
    Pass(50ms);
    EXPECT_EQ(LastCall(), u"SetAudioVolume 71"_s);
}

TEST_F(DeviceControlTest, AnswerToAnOlderWishDoesNotUndoANewerOne) {
    StartConnected();
    m_device.Refuse(u"SetFrequency"_s, u"no"_s);
    std::promise<void> release;
    m_thread->Post(DriverCall::Setting, [&](KvZANCommon::IDriver&) { release.get_future().wait(); });
    Frequency().SetValue(110e6);
    Frequency().SetValue(120e6);
    release.set_value();
    Settle();
    EXPECT_EQ(Frequency().GetValue(), 120e6) << "it waits for its time";
    m_device.Allow(u"SetFrequency"_s);
    Pass(50ms);
    EXPECT_EQ(LastCall(), u"SetFrequency 120000000"_s);
    EXPECT_EQ(Frequency().GetValue(), 120e6);
}

TEST_F(DeviceControlTest, WhatTheDeviceMakesOfAWishIsShown) {
    StartConnected();
    m_device.With([](FakeDevice& device) { device.averageTime = 0.2; });
    Value<ValueSelection>(g_vdUpdateInterval).SetCurrentKey(5);
    Settle();
    EXPECT_EQ(Value<ValueSelection>(g_vdUpdateInterval).GetStringValue(), u"200 ms"_s);
    EXPECT_EQ(Report(u"AverageTime"_s, u"Asked"_s), u"1 s"_s);
    EXPECT_EQ(Report(u"AverageTime"_s, u"CarriedOut"_s), u"0.2 s"_s);
}

// DF and demodulation settings

TEST_F(DeviceControlTest, DfAndDemodulationSettingsReachTheDriverTogether) {
    StartConnected();
    Value<ValueSelection>(g_vdDemodulation).SetStringValue(u"AM"_s);
    Settle();
    Value<ValueSelection>(g_vdBandwidth).SetStringValue(u"8 kHz"_s);
    Value<ValueNumericDouble>(g_vdAudioThreshold).SetValue(-3.0);
    Value<ValueBool>(g_vdAuSquelch).SetValue(true);
    Value<ValueNumericDouble>(g_vdLevelThreshold).SetValue(12.0);
    Pass(50ms);
    EXPECT_EQ(m_device.TakeCalls(u"AlterMeasureSetting"_s).size(), 2);
    const auto dem = *m_device.With([](FakeDevice& device) { return device.dem; });
    const auto df = *m_device.With([](FakeDevice& device) { return device.df; });
    EXPECT_EQ(dem.demodulation, 1);
    EXPECT_EQ(dem.bandwidth, 8000.0);
    EXPECT_EQ(dem.squelch, -3);
    EXPECT_EQ(dem.gainControl, 1);
    EXPECT_EQ(df.levelThreshold, 12);
    EXPECT_TRUE(df.relativeThreshold) << "to the noise";
    EXPECT_EQ(df.method, METHOD_COR);
}

TEST_F(DeviceControlTest, DfSettingsAreThoseOfTheAntennaToWhichAFrequencyIsMovedOnConnect) {
    Value<ValueNumericDouble>(g_vdFrequency).SetValue(100e3); // that of HF begins at 300 kHz
    StartConnected();
    EXPECT_EQ(Value<ValueNumericDouble>(g_vdFrequency).GetValue(), 300e3);
    EXPECT_EQ((*m_device.With([](FakeDevice& device) { return device.df; })).method, METHOD_WAT);
    EXPECT_EQ(ReasonFor(u"MeasureSettings"_s), QString());
}

TEST_F(DeviceControlTest, SelectionsOfTheDfSettingsHoldWhatTheAntennaHas) {
    StartConnected();
    const auto& bandwidths = Value<ValueSelection>(g_vdDfBandwidth);
    const auto& modes = Value<ValueSelection>(g_vdDfMode);
    EXPECT_FALSE(bandwidths.GetItems().empty());
    EXPECT_EQ(modes.GetStringValue(), u"COR"_s);
    const double chosen = bandwidths.GetItems().at(2).GetValue();
    Value<ValueSelection>(g_vdDfBandwidth).SetCurrentIndex(2);
    Frequency().SetValue(10e6);
    EXPECT_EQ(modes.GetStringValue(), u"WAT"_s);
    Frequency().SetValue(100e6);
    EXPECT_EQ(modes.GetStringValue(), u"COR"_s);
    EXPECT_EQ(bandwidths.GetItems().at(static_cast<std::size_t>(bandwidths.GetCurrentIndex())).GetValue(),
              chosen)
        << "what was chosen returns with the antenna";
}

TEST_F(DeviceControlTest, DfSettingsAreKeptByTheirKeys) {
    StartConnected();
    Value<ValueSelection>(g_vdUpdateInterval).SetCurrentKey(6);
    Value<ValueSelection>(g_vdDfBandwidth).SetCurrentKey(2);
    Settle();
    m_control.reset();
    Tree::Instance()->Remove(Tree::Instance()->GetNode(u"/ZANServer/Par/Df"_s));
    CreateBranch(EBranch::SERVER, ZANPath::SERVER.toString());
    StartConnected();
    EXPECT_EQ(Value<ValueSelection>(g_vdUpdateInterval).GetCurrentKey(), 6);
    EXPECT_EQ(Value<ValueSelection>(g_vdDfBandwidth).GetCurrentKey(), 2);
}

TEST_F(DeviceControlTest, SwitchesOfAnAntennaReachTheDriverWhereTheAntennaHasThem) {
    SetSwitchableAntenna();
    Value<ValueBool>(g_vdAntennaActive).SetValue(true);
    Value<ValueString>(g_vdPolarisation).SetValue(u"Horizontal"_s);
    Value<ValueSelection>(g_vdSRStatus).SetCurrentKey(1);
    StartConnected();
    const auto df = *m_device.With([](FakeDevice& device) { return device.df; });
    EXPECT_TRUE(df.activeAntenna);
    EXPECT_EQ(df.polarisation, POLARISATION_HORIZONTAL);
    EXPECT_TRUE(df.superResolution);
    EXPECT_EQ(ReasonFor(u"MeasureSettings"_s), QString());
}

TEST_F(DeviceControlTest, SwitchesThatTheAntennaDoesNotHaveStayOffAndSuperResolutionIsTold) {
    Value<ValueBool>(g_vdAntennaActive).SetValue(true);
    Value<ValueString>(g_vdPolarisation).SetValue(u"Horizontal"_s);
    Value<ValueSelection>(g_vdSRStatus).SetCurrentKey(1);
    StartConnected();
    const auto df = *m_device.With([](FakeDevice& device) { return device.df; });
    EXPECT_FALSE(df.activeAntenna);
    EXPECT_EQ(df.polarisation, -1) << "left to the device";
    EXPECT_FALSE(df.superResolution);
    EXPECT_EQ(Value<ValueSelection>(g_vdSRStatus).GetCurrentKey(), 0)
        << "the outputs do not wait for emitters";
    EXPECT_EQ(Report(u"MeasureSettings"_s, u"Asked"_s), u"super resolution"_s);
    EXPECT_EQ(ReasonFor(u"MeasureSettings"_s), u"the antenna has no super resolution at this frequency"_s);
}

TEST_F(DeviceControlTest, RefusedSwitchesOfAnAntennaAndSquelchGoBackToThoseOfTheDevice) {
    SetSwitchableAntenna();
    Value<ValueBool>(g_vdAuSquelch).SetValue(true);
    Value<ValueNumericDouble>(g_vdAudioThreshold).SetValue(-3.0);
    m_device.With([](FakeDevice& device) {
        device.df.emplace().activeAntenna = true;
        device.df->polarisation = POLARISATION_HORIZONTAL;
        device.df->superResolution = true;
        device.dem.emplace().squelch = -12;
    });
    m_device.Refuse(u"AlterMeasureSetting"_s, u"no"_s);
    StartConnected();
    EXPECT_TRUE(Value<ValueBool>(g_vdAntennaActive).GetValue());
    EXPECT_EQ(Value<ValueString>(g_vdPolarisation).GetValue(), u"Horizontal"_s);
    EXPECT_EQ(Value<ValueSelection>(g_vdSRStatus).GetCurrentKey(), 1);
    EXPECT_TRUE(Value<ValueBool>(g_vdAuSquelch).GetValue());
    EXPECT_EQ(Value<ValueNumericDouble>(g_vdAudioThreshold).GetValue(), -12.0);
    EXPECT_EQ(ReasonFor(u"MeasureSettings"_s), u"no"_s);
}

TEST_F(DeviceControlTest, PolarisationThatThereIsNotBecomesVerticalAndIsTold) {
    StartConnected();
    Value<ValueString>(g_vdPolarisation).SetValue(u"Sideways"_s);
    Settle();
    EXPECT_EQ(m_device.TakeCalls(), QStringList());
    EXPECT_EQ(Value<ValueString>(g_vdPolarisation).GetValue(), u"Vertical"_s);
    EXPECT_EQ(Report(u"MeasureSettings"_s, u"Asked"_s), u"polarisation Sideways"_s);
    EXPECT_EQ(ReasonFor(u"MeasureSettings"_s), u"there is no such polarisation"_s);
    Value<ValueSelection>(g_vdDemodulation).SetStringValue(u"AM"_s);
    Settle();
    EXPECT_EQ(m_device.TakeCalls().size(), 1) << "the other settings are carried out as before";
}

TEST_F(DeviceControlTest, MuteSilencesTheDeviceAndKeepsTheVolume) {
    StartConnected();
    Value<ValueBool>(g_vdAuChannelMute).SetValue(true);
    Settle();
    EXPECT_EQ(m_device.TakeCalls(), QStringList{u"SetAudioVolume 0"_s});
    EXPECT_EQ(Value<ValueNumericInt>(g_vdAuChannelVolume).GetValue(), 50);
    Value<ValueBool>(g_vdAuChannelMute).SetValue(false);
    Pass(50ms);
    EXPECT_EQ(m_device.TakeCalls(), QStringList{u"SetAudioVolume 50"_s});
}

TEST_F(DeviceControlTest, CompassIsAlignedOnceEachTimeAndNotWhenADeviceIsConnected) {
    StartConnected();
    auto& compass = Value<ValueNumericInt>(g_vdCompassValue);
    for (int i = 0; i < 2; ++i) {
        compass.SetValue(900);
        Settle();
        EXPECT_EQ(m_device.TakeCalls(), QStringList{u"SetCompassValue 900"_s});
        EXPECT_EQ(compass.GetValue(), -1);
        m_now += 1s;
    }
    m_control->OnLost();
    compass.SetValue(1800);
    m_control->OnConnected();
    Settle();
    EXPECT_EQ(m_device.TakeCalls(u"SetCompassValue"_s), QStringList());
    EXPECT_EQ(ReasonFor(u"CompassValue"_s), u"there was no device"_s);
    EXPECT_EQ(compass.GetValue(), -1);
}

// Ranges

TEST_F(DeviceControlTest, RangesReachTheDriverNumberedAndTheirChannelsCountedOn) {
    StartConnected();
    SetRanges({AIRBAND, MARINE});
    Settle();
    EXPECT_EQ(m_device.TakeCalls(), (QStringList{u"DeleteAllChannels"_s, u"AddFreqRange 0: 0-760/118000000"_s,
                                                 u"AddFreqRange 1: 761-1001/156000000"_s}));
    EXPECT_EQ(Value<ValueNumericInt>(g_vdScanChannelCount).GetValue(), 1002);
    EXPECT_EQ(Value<ValueNumericInt>(g_vdScanSweepTime).GetValue(), 250);
}

TEST_F(DeviceControlTest, ChannelHasTheFrequencyOfItsRange) {
    DeviceControl& control = StartConnected();
    SetRanges({AIRBAND, MARINE});
    EXPECT_TRUE(std::isnan(FrequencyOf(0, 0))) << "the device does not have them yet";
    Settle();
    EXPECT_EQ(FrequencyOf(0, 0), 118e6);
    EXPECT_EQ(FrequencyOf(0, 760), 137e6);
    EXPECT_EQ(FrequencyOf(1, 762), 156.025e6);
    EXPECT_TRUE(std::isnan(FrequencyOf(0, 761)));
    EXPECT_TRUE(std::isnan(FrequencyOf(1, 0)));
    EXPECT_TRUE(std::isnan(FrequencyOf(2, 0)));
    EXPECT_TRUE(std::isnan(FrequencyOf(-2, 0)));
    control.OnLost();
    EXPECT_TRUE(std::isnan(FrequencyOf(0, 0)));
}

TEST_F(DeviceControlTest, RangeThatStraddlesTwoAntennasIsMovedAndTold) {
    StartConnected();
    SetRanges({uR"({"start":29000000,"step":25000,"stop":31000000})"_s});
    Settle();
    EXPECT_EQ(LastCall(), u"AddFreqRange 0: 0-80/28000000"_s);
    EXPECT_TRUE(ReasonFor(u"ScanRanges"_s).contains(u"the border of two antennas"_s));
    const QString text = Value<ValueStringList>(g_vdScanRanges).GetElements().at(0);
    EXPECT_TRUE(text.contains(u"28000000"_s)) << text.toStdString();
}

TEST_F(DeviceControlTest, RangesThatTheDeviceCannotServeGoBackAsAWhole) {
    StartConnected();
    SetRanges({AIRBAND});
    Settle();
    m_device.TakeCalls();
    m_now += 1s;
    SetRanges({MARINE, uR"({"start":10000000,"step":25000,"stop":900000000})"_s});
    Settle();
    EXPECT_EQ(m_device.TakeCalls(), QStringList());
    EXPECT_EQ(Value<ValueStringList>(g_vdScanRanges).GetElements(), std::vector{AIRBAND});
    EXPECT_TRUE(
        ReasonFor(u"ScanRanges"_s).startsWith(u"no antenna with a sample mode has the whole of 10 MHz"_s));
}

TEST_F(DeviceControlTest, TextThatIsNotARangeGoesBackWithItsFault) {
    StartConnected();
    SetRanges({AIRBAND});
    Settle();
    m_device.TakeCalls();
    SetRanges({u"118-137 MHz"_s});
    Pass(1s);
    EXPECT_EQ(m_device.TakeCalls(), QStringList());
    EXPECT_EQ(ReasonFor(u"ScanRanges"_s), u"a range is not a JSON object: 118-137 MHz"_s);
    EXPECT_EQ(Value<ValueStringList>(g_vdScanRanges).GetElements(), std::vector{AIRBAND});
}

TEST_F(DeviceControlTest, MoreRangesThanTwoHundredGoBackAsAWhole) {
    StartConnected();
    SetRanges({AIRBAND});
    Settle();
    m_device.TakeCalls();
    m_now += 1s;
    SetRanges(QStringList(201, MARINE));
    Settle();
    EXPECT_EQ(m_device.TakeCalls(), QStringList());
    EXPECT_EQ(Value<ValueStringList>(g_vdScanRanges).GetElements(), std::vector{AIRBAND});
    EXPECT_EQ(Report(u"ScanRanges"_s, u"Asked"_s), u"201 ranges"_s);
    EXPECT_EQ(ReasonFor(u"ScanRanges"_s), u"there are more than 200"_s);
    SetRanges(QStringList(200, MARINE));
    Settle();
    EXPECT_EQ(m_device.TakeCalls(u"AddFreqRange"_s).size(), 200);
}

TEST_F(DeviceControlTest, RefusedRangesAreReplacedByThoseThatTheDeviceHadBefore) {
    StartConnected();
    SetRanges({AIRBAND});
    Settle();
    m_device.Refuse(u"AddFreqRange"_s, u"too many"_s);
    m_now += 1s;
    SetRanges({MARINE});
    Settle();
    m_device.Allow(u"AddFreqRange"_s);
    m_device.TakeCalls();
    Pass(50ms);
    EXPECT_EQ(m_device.TakeCalls(),
              (QStringList{u"DeleteAllChannels"_s, u"AddFreqRange 0: 0-760/118000000"_s}));
    EXPECT_EQ(Value<ValueStringList>(g_vdScanRanges).GetElements(), std::vector{AIRBAND});
    EXPECT_EQ(ReasonFor(u"ScanRanges"_s), u"too many"_s);
    EXPECT_EQ(FrequencyOf(0, 0), 118e6);
}

TEST_F(DeviceControlTest, DeviceThatRefusesEveryRangeIsNotAskedForEver) {
    m_device.Refuse(u"AddFreqRange"_s, u"no scan"_s);
    StartConnected();
    SetRanges({AIRBAND});
    for (int i = 0; i < 10; ++i) {
        Pass(1s);
    }
    EXPECT_EQ(m_device.TakeCalls(u"AddFreqRange"_s).size(), 1);
    EXPECT_TRUE(Value<ValueStringList>(g_vdScanRanges).Empty());
}

TEST_F(DeviceControlTest, MoreChannelsThanTheDeviceHasAreRefused) {
    StartConnected();
    DeviceTree::DeviceValue<ValueNumericInt>(g_vdDevMaxChannelCount)->SetValue(500);
    SetRanges({AIRBAND});
    Settle();
    EXPECT_EQ(m_device.TakeCalls(u"AddFreqRange"_s), QStringList());
    EXPECT_EQ(ReasonFor(u"ScanRanges"_s), u"the device has 500 channels, the ranges more"_s);
}

TEST_F(DeviceControlTest, DeviceThatScansIsInStandbyWhileItsRangesChange) {
    StartConnected();
    SetRanges({AIRBAND});
    Value<ValueSelection>(g_vdOperationMode).SetCurrentKey(OPMODE_SCAN);
    Settle();
    m_device.TakeCalls();
    m_now += 1s;
    SetRanges({MARINE});
    Settle();
    EXPECT_EQ(m_device.TakeCalls(), (QStringList{u"SetMode 0"_s, u"DeleteAllChannels"_s,
                                                 u"AddFreqRange 0: 0-240/156000000"_s, u"SetMode 3"_s}));
    EXPECT_EQ(FrequencyOf(0, 0), 156e6);
    m_device.Refuse(u"AddFreqRange"_s, u"too many"_s);
    m_now += 1s;
    SetRanges({AIRBAND});
    Settle();
    m_device.Allow(u"AddFreqRange"_s);
    Pass(1s);
    EXPECT_EQ(LastCall(), u"SetMode 3"_s) << "it goes on with those that it had";
    EXPECT_EQ(FrequencyOf(0, 0), 156e6);
}

TEST_F(DeviceControlTest, DeviceWhoseRangesWereRefusedInPartMeasuresAgainWhenItHasTheOldOnes) {
    StartConnected();
    SetRanges({AIRBAND});
    Value<ValueSelection>(g_vdOperationMode).SetCurrentKey(OPMODE_SCAN);
    Settle();
    m_device.Refuse(u"AddFreqRange"_s, u"too many"_s);
    m_now += 1s;
    SetRanges({MARINE});
    Settle();
    m_device.Allow(u"AddFreqRange"_s);
    m_device.TakeCalls();
    EXPECT_TRUE(std::isnan(FrequencyOf(0, 0))) << "nobody knows what it has taken";
    Pass(1s);
    EXPECT_EQ(m_device.TakeCalls(),
              (QStringList{u"DeleteAllChannels"_s, u"AddFreqRange 0: 0-760/118000000"_s, u"SetMode 3"_s}));
    EXPECT_EQ(FrequencyOf(0, 0), 118e6);
}

TEST_F(DeviceControlTest, DeviceThatWasResetStandsByBeforeItGetsItsRanges) {
    StartConnected();
    SetRanges({AIRBAND});
    Value<ValueSelection>(g_vdOperationMode).SetCurrentKey(OPMODE_SCAN);
    Settle();
    m_device.TakeCalls();
    m_control->OnConnected(); // it may have gone on measuring
    EXPECT_TRUE(std::isnan(FrequencyOf(0, 0)));
    Settle();
    const QStringList calls = m_device.TakeCalls();
    const qsizetype standby = calls.indexOf(u"SetMode 0"_s);
    EXPECT_TRUE(standby >= 0 && standby < calls.indexOf(u"DeleteAllChannels"_s))
        << calls.join(u' ').toStdString();
    EXPECT_EQ(calls.last(), u"SetMode 3"_s);
    EXPECT_EQ(FrequencyOf(0, 0), 118e6);
}

TEST_F(DeviceControlTest, DeviceThatCannotStandByGetsItsRangesAllTheSame) {
    m_device.Refuse(u"SetMode"_s, u"always on"_s, KvZANCommon::NullDriver::NOT_SUPPORTED);
    StartConnected();
    SetRanges({AIRBAND});
    Settle();
    EXPECT_EQ(LastCall(), u"AddFreqRange 0: 0-760/118000000"_s);
    EXPECT_EQ(FrequencyOf(0, 0), 118e6);
    EXPECT_EQ(ReasonFor(u"ScanRanges"_s), QString());
    m_control->OnLost();
    m_control->OnConnected();
    Settle();
    EXPECT_EQ(FrequencyOf(0, 0), 118e6);
}

TEST_F(DeviceControlTest, BlockOfOneChannelHasTheReceiveFrequencyWhileTheRangesAreNotKnown) {
    Start();
    BearingBlock block;
    block.status.frequency = 127.5e6;
    block.bearings.resize(1);
    EXPECT_EQ(m_control->GetFrequency(block, 0), 127.5e6);
    block.bearings.resize(2);
    EXPECT_TRUE(std::isnan(m_control->GetFrequency(block, 0)));
}

TEST_F(DeviceControlTest, DriverThatTakesNoRangesTellsTheFrequencyOfEachBlock) {
    m_device.Refuse(u"DeleteAllChannels"_s, {}, KvZANCommon::NullDriver::NOT_SUPPORTED);
    StartConnected();
    SetRanges({AIRBAND});
    Pass(1s);
    EXPECT_EQ(FrequencyOf(0, 0), 1.5e9);
    m_control->OnLost();
    EXPECT_TRUE(std::isnan(FrequencyOf(0, 0)));
}

TEST_F(DeviceControlTest, PieceOfAWidebandBlockHasTheFrequenciesOfItsPlace) {
    StartConnected();
    const double step = WidebandStep();
    BearingBlock piece;
    piece.range = BearingBlock::WIDEBAND;
    piece.status.frequency = 1.5e9;
    piece.bearings.resize(3);
    piece.whole = 7;
    piece.firstOfWhole = 3;
    EXPECT_EQ(m_control->GetFrequency(piece, 0), 1.5e9);
    EXPECT_EQ(m_control->GetFrequency(piece, 2), 1.5e9 + 2 * step);
}

TEST_F(DeviceControlTest, ResolutionBandwidthIsWhatTheDeviceHas) {
    Start();
    EXPECT_TRUE(std::isnan(WidebandStep())) << "no device";
    m_control->OnConnected();
    Settle();
    const auto df = *m_device.With([](FakeDevice& device) { return device.df; });
    EXPECT_GT(df.resolutionBandwidth, 0.0);
    EXPECT_EQ(WidebandStep(), df.resolutionBandwidth);
    m_control->OnLost();
    EXPECT_TRUE(std::isnan(WidebandStep()));
}

TEST_F(DeviceControlTest, WidebandBlockHasNoFrequenciesWhileTheBandwidthOfItsChannelsChanges) {
    StartConnected();
    const double before = WidebandStep();
    auto& bandwidth = Value<ValueSelection>(g_vdDfBandwidth);
    const long other = bandwidth.GetCurrentIndex() == 0 ? 1 : 0;
    ASSERT_TRUE(bandwidth.SetCurrentIndex(other));
    EXPECT_TRUE(std::isnan(WidebandStep()));
    Settle();
    EXPECT_NE(WidebandStep(), before);
    EXPECT_EQ(WidebandStep(), bandwidth.GetItems()[static_cast<std::size_t>(other)].GetValue());
}

TEST_F(DeviceControlTest, SectorsThatTheRangesFilterAwayArePublished) {
    StartConnected();
    SetRanges({uR"({"start":118e6,"step":25e3,"stop":137e6,"filter":{"azimuthFrom":90,"azimuthTo":180}})"_s});
    Settle();
    const auto* const sectors =
        Tree::Instance()->Find<ValueQuadFloatList>(u"/ZANServer/AZIMUTH_FILTER_RANGE"_s);
    ASSERT_NE(sectors, nullptr);
    EXPECT_EQ(sectors->GetElements(),
              (std::vector{QuadFloat(118e6, 137e6, 0, 90), QuadFloat(118e6, 137e6, 180, 359.99)}));
}

// Antennas and converters

TEST_F(DeviceControlTest, ChoicesInAnAntennaNodeReachTheDriverAndGoBackWhenTheyAreRefused) {
    m_device.antennas = {{0, u"PX110"_s, 300e3, 30e6, true, false, false},
                         {1, u"PX106"_s, 20e6, 1300e6, true, false, false}};
    m_device.antennaSetups = {{0, {300e3, 30e6}, 2, 0, -1, 0.0, {}},
                              {1, {30000001.0, 1300e6}, 2, 1, -1, 0.0, {}}};
    StartConnected();
    auto* const offset =
        Tree::Instance()->Find<ValueNumericDouble>(DeviceTree::Path() + u"/Ant1/AntMechOffset"_s);
    ASSERT_NE(offset, nullptr);
    offset->SetValue(12.5);
    Settle();
    EXPECT_TRUE(m_device.TakeCalls().contains(u"SetAntennaSetup 1: 30000001-1300000000, 12.5, compass -1"_s));
    m_device.Refuse(u"SetAntennaSetup"_s, u"fixed"_s);
    offset->SetValue(90.0);
    Pass(50ms);
    EXPECT_EQ(offset->GetValue(), 12.5);
    EXPECT_EQ(ReasonFor(u"Antennas"_s), u"fixed"_s);
}

TEST_F(DeviceControlTest, PolarisationOfAnAntennaReachesTheDriverAndGoesBackWhenItIsRefused) {
    m_device.antennas = {{0, u"PX110"_s, 300e3, 30e6, true, true, false}};
    m_device.antennaSetups = {{0, {300e3, 30e6}, POLARISATION_VERTICAL, 0, -1, 0.0, {}}};
    StartConnected();
    auto* const polarisation =
        Tree::Instance()->Find<ValueNumericInt>(DeviceTree::Path() + u"/Ant0/AntPolarizationMode"_s);
    ASSERT_NE(polarisation, nullptr);
    polarisation->SetValue(POLARISATION_HORIZONTAL);
    Settle();
    EXPECT_EQ(m_device.With([](FakeDevice& device) { return device.antennaSetups[0].polarisation; }),
              POLARISATION_HORIZONTAL);
    m_device.Refuse(u"SetAntennaSetup"_s, u"fixed"_s);
    m_now += 1s;
    polarisation->SetValue(POLARISATION_RIGHT);
    Settle();
    EXPECT_EQ(polarisation->GetValue(), POLARISATION_HORIZONTAL);
    EXPECT_EQ(ReasonFor(u"Antennas"_s), u"fixed"_s);
}

TEST_F(DeviceControlTest, SetupOfAnAntennaThatIsAnotherOneMeanwhileIsNotWrittenIntoItsNode) {
    m_device.antennas = {{0, u"PX110"_s, 300e3, 30e6, true, false, false}};
    m_device.antennaSetups = {{0, {300e3, 30e6}, POLARISATION_VERTICAL, 0, -1, 7.5, {}}};
    StartConnected();
    const auto offset = [] {
        return Tree::Instance()->Find<ValueNumericDouble>(DeviceTree::Path() + u"/Ant0/AntMechOffset"_s);
    };
    m_device.Refuse(u"SetAntennaSetup"_s, u"fixed"_s);
    std::promise<void> release;
    m_thread->Post(DriverCall::Setting, [&](KvZANCommon::IDriver&) { release.get_future().wait(); });
    offset()->SetValue(90.0);
    DeviceTree::SetAntennas({MakeAntenna(u"PX101"_s, u"RCV01"_s, 300e3, 30e6)});
    offset()->SetValue(1.5);
    release.set_value();
    Settle();
    EXPECT_EQ(offset()->GetValue(), 1.5);
    EXPECT_EQ(ReasonFor(u"Antennas"_s), u"fixed"_s);
}

TEST_F(DeviceControlTest, DeviceThatHasTheSetupOfItsAntennasAlreadyGetsNone) {
    m_device.antennas = {{0, u"PX110"_s, 300e3, 30e6, true, false, false}};
    m_device.antennaSetups = {{0, {300e3, 30e6}, 2, 0, -1, 0.0, {}}};
    Start();
    m_control->OnConnected();
    Settle();
    EXPECT_EQ(m_device.TakeCalls(u"SetAntennaSetup"_s), QStringList());
}

TEST_F(DeviceControlTest, PreamplifierAndAttenuationReachTheConverterOfTheirRange) {
    m_device.converters = {{0, CONVERTER_RCV01, u"RCV01"_s, 0, 0, true, false},
                           {1, CONVERTER_RCV03, u"RCV03"_s, 1, 0, true, false}};
    StartConnected();
    Value<ValueBool>(g_vdPreAmplifierVuhf).SetValue(true);
    Value<ValueSelection>(g_vdAttenuationHf).SetCurrentKey(12);
    Settle();
    EXPECT_EQ(m_device.TakeCalls(),
              (QStringList{u"SetConverterSetup 0: preamplifier 0, 0 dB"_s, u"AlterMeasureSetting 100000000"_s,
                           u"SetRfAttenuator 0 12"_s, u"SetConverterSetup 1: preamplifier 1, 0 dB"_s,
                           u"SetRfAttenuator 1 0"_s}));
}

// Compasses

class DeviceControlCompassTest : public DeviceControlTest {
protected:
    /// A device whose antennas each have a compass.
    DeviceControlCompassTest() {
        m_device.antennas = {{0, u"PX110"_s, 300e3, 30e6, true, false, false},
                             {1, u"PX106"_s, 20e6, 1300e6, true, false, false}};
        m_device.antennaSetups = {{0, {300e3, 30e6}, 2, 0, 0, 0.0, {}},
                                  {1, {30000001.0, 1300e6}, 2, 1, 1, 0.0, {}}};
        m_device.compasses = {{0, u"gyro"_s, 0.1, false}, {1, u"fluxgate"_s, 0.5, false}};
    }
    static ValueNumericDouble& Compass(int antenna) {
        return *Tree::Instance()->Find<ValueNumericDouble>(DeviceTree::Path() +
                                                           u"/Ant%1/AntCompassValue"_s.arg(antenna));
    }
    static std::pair<TValueState, TValueState> States() {
        return {Compass(0).GetState(), Compass(1).GetState()};
    }
    void ShowCompasses(unsigned long value) {
        m_device.With([=](FakeDevice& device) { device.compassValue = value; });
    }
    std::vector<unsigned long> TakeRead() {
        return m_device.With([](FakeDevice& device) { return std::exchange(device.readCompasses, {}); });
    }

    static constexpr std::pair VALID{TValueState::Valid, TValueState::Valid};
    static constexpr std::pair NOT_MEASURED{TValueState::NotMeasured, TValueState::NotMeasured};
};

TEST_F(DeviceControlCompassTest, CompassesAreReadAgainEverySecond) {
    Start();
    m_control->OnConnected();
    Settle();
    EXPECT_EQ(Compass(0).GetValue(), 90.0);
    EXPECT_EQ(Compass(1).GetValue(), 90.1);
    EXPECT_EQ(States(), VALID);
    TakeRead();
    ShowCompasses(1234);
    Pass(999ms);
    EXPECT_EQ(TakeRead(), std::vector<unsigned long>());
    Pass(1ms);
    EXPECT_EQ(TakeRead(), (std::vector<unsigned long>{0, 1}));
    EXPECT_EQ(Compass(0).GetValue(), 123.4);
    EXPECT_EQ(Compass(1).GetValue(), 123.5);
    EXPECT_EQ(States(), VALID);
}

TEST_F(DeviceControlCompassTest, ReadingThatStopsComingIsNotMeasuredAfterTheAgeLimitAndIsSoughtOn) {
    StartConnected();
    m_device.Refuse(u"ReadCompass"_s, u"it spins up"_s);
    Pass(2s); // 3 s after the first reading, with that of StartConnected
    EXPECT_EQ(States(), VALID);
    Pass(1ms);
    EXPECT_EQ(States(), NOT_MEASURED);
    EXPECT_EQ(DeviceTree::DeviceValue<ValueString>(g_vdDevLastError)->GetValue(), QString());
    m_device.Allow(u"ReadCompass"_s);
    Pass(1s);
    EXPECT_EQ(States(), VALID);
}

TEST_F(DeviceControlCompassTest, ShorterAgeLimitOfTheSettingsMakesTheQuestionsMoreFrequent) {
    m_settings.Write("[Gpsd]\nMaxAge=300\n");
    StartConnected(); // a second passes
    Pass(0ms);
    EXPECT_EQ(States(), VALID);
    TakeRead();
    Pass(100ms);
    EXPECT_EQ(TakeRead().size(), 2U) << "thrice within the limit";
}

TEST_F(DeviceControlCompassTest, WhileTheDriverIsBusyOneQuestionWaitsAndTheReadingsAgeOut) {
    StartConnected();
    Pass(0ms);
    TakeRead();
    std::promise<void> release;
    m_thread->Post(DriverCall::Calibrate, [&](KvZANCommon::IDriver&) { release.get_future().wait(); });
    for (int second = 0; second < 10; ++second) {
        m_now += 1s;
        m_control->SendDue();
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(States(), NOT_MEASURED);
    EXPECT_EQ(TakeRead(), std::vector<unsigned long>());
    release.set_value();
    Settle();
    EXPECT_EQ(TakeRead(), (std::vector<unsigned long>{0, 1})) << "one round";
    EXPECT_EQ(States(), VALID);
}

TEST_F(DeviceControlCompassTest, CompassWhoseReadingThrowsIsNotAskedAgainUntilTheDeviceIsConnectedAgain) {
    StartConnected();
    m_device.ThrowIn(u"ReadCompass"_s);
    Pass(1s);
    EXPECT_EQ(States(), NOT_MEASURED);
    const qsizetype calls = m_device.CountCalls();
    Pass(10s);
    EXPECT_EQ(m_device.CountCalls(), calls);
    m_device.ThrowIn(QString());
    m_control->OnLost();
    m_control->OnConnected();
    Settle();
    EXPECT_EQ(States(), VALID);
}

TEST_F(DeviceControlCompassTest, LostDeviceIsNotAskedAndAnAnswerThatComesLateIsNotTaken) {
    StartConnected();
    Pass(0ms);
    std::promise<void> release;
    m_thread->Post(DriverCall::Setting, [&](KvZANCommon::IDriver&) { release.get_future().wait(); });
    m_now += 1s;
    m_control->SendDue(); // asks
    m_control->OnLost();
    release.set_value();
    Settle();
    EXPECT_EQ(States(), NOT_MEASURED);
    TakeRead();
    Pass(10s);
    EXPECT_EQ(TakeRead(), std::vector<unsigned long>());
    EXPECT_EQ(States(), NOT_MEASURED);
}

TEST_F(DeviceControlCompassTest, EventLoopAsksByItself) {
    m_settings.Write("[Gpsd]\nMaxAge=100\n");
    m_control = std::make_unique<DeviceControl>(*m_thread, ADDRESS);
    m_control->OnConnected();
    Settle();
    TakeRead();
    ShowCompasses(1234);
    EXPECT_TRUE(SpinUntil([] { return Compass(0).GetValue() == 123.4; }));
    m_device.Refuse(u"ReadCompass"_s, u"it is off"_s);
    EXPECT_TRUE(SpinUntil([] { return States() == NOT_MEASURED; }));
}

TEST_F(DeviceControlCompassTest, CompassWithoutAReadingOnConnectIsNotMeasured) {
    m_device.Refuse(u"ReadCompass"_s, u"it spins up"_s);
    StartConnected();
    EXPECT_EQ(States(), NOT_MEASURED);
}

// What is kept

TEST_F(DeviceControlTest, WhatWasCarriedOutLastIsWishedFirstAfterAStart) {
    StartConnected();
    Frequency().SetValue(127.5e6);
    Value<ValueSelection>(g_vdDemodulation).SetStringValue(u"FM"_s);
    Value<ValueSelection>(g_vdOperationMode).SetCurrentKey(OPMODE_FFM);
    Value<ValueNumericInt>(g_vdAuChannelVolume).SetValue(33);
    Value<ValueBool>(g_vdAuSquelch).SetValue(true);
    SetRanges({MARINE});
    Settle();
    m_control.reset();
    Tree::Instance()->Remove(Tree::Instance()->GetNode(u"/ZANServer/Par"_s));
    Tree::Instance()->Remove(Tree::Instance()->GetNode(u"/ZANServer/DevAttr"_s));
    m_settings.Reopen();
    CreateBranch(EBranch::SERVER, ZANPath::SERVER.toString());
    Start();
    EXPECT_EQ(Frequency().GetValue(), 127.5e6);
    EXPECT_EQ(Value<ValueSelection>(g_vdDemodulation).GetStringValue(), u"FM"_s);
    EXPECT_EQ(Value<ValueSelection>(g_vdOperationMode).GetCurrentKey(), OPMODE_FFM);
    EXPECT_EQ(Value<ValueNumericInt>(g_vdAuChannelVolume).GetValue(), 33);
    EXPECT_TRUE(Value<ValueBool>(g_vdAuSquelch).GetValue());
    EXPECT_EQ(Value<ValueStringList>(g_vdScanRanges).GetElements(), std::vector{MARINE});
}

TEST_F(DeviceControlTest, RefusedWishIsNotKept) {
    StartConnected();
    m_device.Refuse(u"SetAudioVolume"_s, u"no"_s);
    Value<ValueNumericInt>(g_vdAuChannelVolume).SetValue(99);
    Settle();
    m_control.reset();
    EXPECT_TRUE(m_settings.CloseAndRead().contains(u"Volume=50"_s));
}

TEST_F(DeviceControlTest, SettingsThatAreNotToBeChangedAreNotWritten) {
    Start(false);
    m_control->OnConnected();
    Settle();
    m_control.reset();
    const QString settings = m_settings.CloseAndRead();
    EXPECT_FALSE(settings.contains(u"Volume"_s));
    EXPECT_FALSE(settings.contains(u"Control_Interval"_s));
}

TEST_F(DeviceControlTest, DamagedSettingsLeaveTheDefaults) {
    m_settings.Write("[General]\nZANStations/Count=1\n[ZANStations/ZANStation0]\nDeviceAddress=device\n"
                     "[ZANStations/ZANStation0/Control]\nFrequency=nan\nVolume=101\nOperationMode=77\n"
                     "Demodulation=AM\nScanRange0=118-137\nSquelch=perhaps\n");
    Start();
    EXPECT_EQ(Frequency().GetValue(), 100e6);
    EXPECT_EQ(Value<ValueNumericInt>(g_vdAuChannelVolume).GetValue(), 50);
    EXPECT_EQ(Value<ValueSelection>(g_vdOperationMode).GetCurrentKey(), OPMODE_0);
    EXPECT_EQ(Value<ValueSelection>(g_vdDemodulation).GetStringValue(), u"Off"_s);
    EXPECT_TRUE(Value<ValueStringList>(g_vdScanRanges).Empty());
    EXPECT_FALSE(Value<ValueBool>(g_vdAuSquelch).GetValue());
}

// The end of one of the two

TEST_F(DeviceControlTest, ControlMayGoWhileACallIsUnderWay) {
    for (int i = 0; i < 50; ++i) {
        StartConnected();
        Frequency().SetValue(101e6 + i);
        Value<ValueNumericInt>(g_vdAuChannelVolume).SetValue(i);
        m_control.reset();
        QCoreApplication::processEvents();
    }
    EXPECT_TRUE(m_thread->Wait());
}

TEST_F(DeviceControlTest, DriverThatIsGivenUpGetsNothingMore) {
    auto* const device = MakeKeptToTheEnd<FakeDevice>();
    auto* const release = MakeKeptToTheEnd<std::promise<void>>();
    DriverThread thread([device] { return std::make_unique<FakeDriver>(*device); },
                        std::make_shared<DriverReceiver>(ADDRESS), [](DriverCall) { return 300ms; });
    DeviceControl control(thread, ADDRESS);
    control.OnConnected();
    QStringList calls;
    EXPECT_TRUE(SpinUntil([&] { // stands by before the ranges, and gets its mode at the end
        thread.Wait();
        calls += device->TakeCalls();
        return calls.count(u"SetMode 0"_s) == 2;
    }));
    thread.Wait();
    QCoreApplication::processEvents(); // the answer, and what follows it
    thread.Wait();
    QCoreApplication::processEvents();
    thread.Post(DriverCall::Setting,
                [future = release->get_future().share()](KvZANCommon::IDriver&) { future.wait(); });
    Frequency().SetValue(101e6);
    EXPECT_TRUE(SpinUntil([&] { return thread.IsGivenUp(); }));
    control.OnLost();
    Frequency().SetValue(102e6);
    release->set_value();
    QCoreApplication::processEvents();
    EXPECT_EQ(device->TakeCalls(), QStringList());
}
