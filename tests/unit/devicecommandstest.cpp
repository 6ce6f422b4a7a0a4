#include "zanserver/devicecommands.h"

#include "support/devicetree.h"
#include "support/fakedevice.h"
#include "support/observers.h"
#include "support/printing.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <future>
#include <utility>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;
using namespace ZANServer;

namespace {

class DeviceCommandsTest : public testing::Test {
protected:
    DeviceCommandsTest() { m_commands.SetConnected(true); }

    void Settle() {
        m_thread.Wait();
        QCoreApplication::processEvents();
    }
    void Write(const QString& command) { Value(g_vdCmdCommand).SetValue(command); }
    QStringList CarryOut(const QString& command) {
        Write(command);
        Settle();
        return m_device.TakeCalls();
    }
    static ValueString& Value(const ValueDescriptor& descriptor) {
        return *DeviceTree::DeviceValue<ValueString>(descriptor);
    }

    DeviceTree m_tree;
    FakeDevice m_device;
    DriverThread m_thread{[this] { return std::make_unique<FakeDriver>(m_device); },
                          std::make_shared<DriverReceiver>(u"device"_s)};
    DriverErrands m_errands{m_thread};
    DeviceCommands m_commands{m_errands};
};

} // namespace

TEST_F(DeviceCommandsTest, EachCommandReachesItsOperation) {
    EXPECT_EQ(CarryOut(u"reset"_s), QStringList{u"Reset"_s});
    EXPECT_EQ(CarryOut(u"calibrate 2"_s), QStringList{u"Calibrate 2"_s});
    EXPECT_EQ(CarryOut(u"bit"_s), QStringList{u"BIT 0"_s});
    EXPECT_EQ(CarryOut(u"bit full"_s), QStringList{u"BIT 1"_s});
    EXPECT_EQ(CarryOut(u"test fault silence on"_s), QStringList{u"SetTest fault silence on"_s});
    EXPECT_EQ(CarryOut(u"hold"_s), QStringList{u"SearchHold"_s});
    EXPECT_EQ(CarryOut(u"continue 7"_s), QStringList{u"SearchContinue 7"_s});
}

TEST_F(DeviceCommandsTest, CommandIsTakenAtOnceAndTheSameOneMayFollow) {
    Write(u"calibrate 1"_s);
    EXPECT_EQ(Value(g_vdCmdCommand).GetValue(), QString());
    EXPECT_EQ(Value(g_vdCmdTaken).GetValue(), u"calibrate 1"_s);
    EXPECT_EQ(Value(g_vdCmdResult).GetValue(), u"busy"_s);
    Settle();
    EXPECT_EQ(Value(g_vdCmdResult).GetValue(), u"ok"_s);
    EXPECT_EQ(CarryOut(u"calibrate 1"_s), (QStringList{u"Calibrate 1"_s, u"Calibrate 1"_s}));
}

TEST_F(DeviceCommandsTest, FailureIsToldWithTheTextOfTheDriver) {
    m_device.Refuse(u"Calibrate"_s, u"no signal"_s);
    CarryOut(u"calibrate 0"_s);
    EXPECT_EQ(Value(g_vdCmdResult).GetValue(), u"failed"_s);
    EXPECT_EQ(Value(g_vdCmdError).GetValue(), u"no signal"_s);
    CarryOut(u"hold"_s);
    EXPECT_EQ(Value(g_vdCmdError).GetValue(), QString());
}

TEST_F(DeviceCommandsTest, ExceptionIsToldWithItsText) {
    m_device.ThrowIn(u"Reset"_s);
    CarryOut(u"reset"_s);
    Settle();
    EXPECT_EQ(Value(g_vdCmdResult).GetValue(), u"failed"_s);
    EXPECT_TRUE(Value(g_vdCmdError).GetValue().startsWith(u"the driver threw an exception: "_s))
        << Value(g_vdCmdError).GetValue().toStdString();
}

TEST_F(DeviceCommandsTest, ExceptionIsAFailureAndTheNextCommandIsCarriedOut) {
    m_device.ThrowIn(u"Reset"_s);
    Write(u"reset"_s);
    Write(u"hold"_s);
    Settle();
    Settle();
    EXPECT_EQ(m_device.TakeCalls(), (QStringList{u"Reset"_s, u"SearchHold"_s}));
    EXPECT_EQ(Value(g_vdCmdResult).GetValue(), u"ok"_s);
}

TEST_F(DeviceCommandsTest, CommandsThatAreNoneAreRefusedWithTheReasonAndReachNobody) {
    const QString unknown =
        u"it is not known; there are: reset, calibrate CONVERTER, bit, bit full, test TEXT, "
        "hold, continue CHANNEL"_s;
    for (const auto& [command, fault] :
         {std::pair{u"explode"_s, unknown},
          {u"resets"_s, unknown},
          {u"calibrate"_s, u"calibrate: there is no number of a converter"_s},
          {u"calibrate abc"_s, u"calibrate: \"abc\" is not the number of a converter"_s},
          {u"calibrate -1"_s, u"calibrate: \"-1\" is not the number of a converter"_s},
          {u"calibrate 99999999999999999999"_s,
           u"calibrate: \"99999999999999999999\" is not the number of a converter"_s},
          {u"continue %1"_s, u"continue: \"%1\" is not the number of a channel"_s},
          {u"bit half"_s, u"bit: there is only \"full\""_s},
          {u"reset extra"_s, u"reset takes no argument"_s},
          {u"hold on"_s, u"hold takes no argument"_s},
          {u"test"_s, u"test: there is no text"_s}}) {
        EXPECT_EQ(CarryOut(command), QStringList()) << command.toStdString();
        EXPECT_EQ(Value(g_vdCmdResult).GetValue(), u"failed"_s) << command.toStdString();
        EXPECT_EQ(Value(g_vdCmdError).GetValue(), fault);
    }
}

TEST_F(DeviceCommandsTest, CommandsWaitForTheOneBeforeAndNoMoreThanTenOfThem) {
    std::promise<void> release;
    m_thread.Post(DriverCall::Setting, [&](KvZANCommon::IDriver&) { release.get_future().wait(); });
    for (int i = 0; i < 20; ++i) {
        Write(u"calibrate %1"_s.arg(i));
    }
    EXPECT_EQ(Value(g_vdCmdError).GetValue(), u"too many commands; \"calibrate 19\" is not carried out"_s);
    release.set_value();
    for (int i = 0; i < 20; ++i) {
        Settle();
    }
    const QStringList calls = m_device.TakeCalls();
    EXPECT_EQ(calls.size(), 11);
    EXPECT_EQ(calls.last(), u"Calibrate 10"_s);
}

TEST_F(DeviceCommandsTest, WithoutADeviceNothingIsSentAndWhatWaitsIsForgotten) {
    std::promise<void> release;
    m_thread.Post(DriverCall::Setting, [&](KvZANCommon::IDriver&) { release.get_future().wait(); });
    Write(u"reset"_s);
    Write(u"hold"_s);
    m_commands.SetConnected(false);
    EXPECT_EQ(Value(g_vdCmdError).GetValue(), u"the device was lost"_s);
    Write(u"bit"_s);
    EXPECT_EQ(Value(g_vdCmdError).GetValue(), u"there is no device"_s);
    release.set_value();
    Settle();
    Settle();
    EXPECT_EQ(m_device.TakeCalls(), QStringList{u"Reset"_s}) << "which was under way";
    EXPECT_EQ(Value(g_vdCmdResult).GetValue(), u"failed"_s);
}

TEST_F(DeviceCommandsTest, ResultsOfABuiltInTestAreLinesAndTheNextTestBeginsAnew) {
    Value(g_vdBitMessages).SetValue(u"of yesterday"_s);
    Write(u"bit"_s);
    m_commands.OnTestResult({0, false, u"DF unit: no error"_s});
    m_commands.OnTestResult({7, true, u"receiver:\nno lock"_s});
    EXPECT_EQ(Value(g_vdBitMessages).GetValue(), u"DF unit: no error\nreceiver: no lock (code 7)"_s);
}

TEST_F(DeviceCommandsTest, MessagesOfABuiltInTestAreBounded) {
    for (int i = 0; i < 10'000; ++i) {
        m_commands.OnTestResult({0, false, QString(1000, u'x')});
    }
    EXPECT_LE(Value(g_vdBitMessages).GetValue().size(), DeviceCommands::MOST_CHARACTERS);
}

TEST_F(DeviceCommandsTest, ResetThatHasSucceededIsReported) {
    int resets = 0;
    m_commands.SetOnReset([&] { ++resets; });
    CarryOut(u"reset"_s);
    EXPECT_EQ(resets, 1);
    m_device.Refuse(u"Reset"_s, u"no"_s);
    CarryOut(u"reset"_s);
    EXPECT_EQ(resets, 1);
}

TEST_F(DeviceCommandsTest, CommandThatWasWrittenBeforeTheStartIsNotCarriedOut) {
    Value(g_vdCmdCommand).SetValue(QString());
    DeviceTree::DeviceValue<ValueString>(g_vdCmdCommand)->SetValue(u"reset"_s, &m_commands);
    const DeviceCommands later(m_errands);
    Settle();
    EXPECT_EQ(m_device.TakeCalls(), QStringList());
    EXPECT_EQ(Value(g_vdCmdCommand).GetValue(), QString());
}
