// What SerialInterface asks of the platform, seen from a platform that fails when the test says so.

#include "zancommon/serialinterface.h"

#include "connections/iinterface.h"
#include "connections/interfacecreator.h"
#include "support/printing.h"
#include "support/tracelines.h"

#include <QList>
#include <QTimer>

#include <gtest/gtest.h>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

struct Platform {
    bool isPortThere = true;
    bool hasBuffer = true;
    bool isReady = true;
    bool takesData = true;
    qint64 unsent = 0;
    qint64 unsentAtTheEnd = 0;

    QString address;
    IInterfaceCallback* callback = nullptr;
    quint64 context = 0;
    bool flag = true;
    int attempts = 0;
    int openInterfaces = 0;
    QList<std::pair<const char*, int>> asked;
    QList<std::pair<const char*, int>> written;
};

Platform platform;

class FakeInterface : public IInterface {
public:
    FakeInterface() { ++platform.openInterfaces; }
    ~FakeInterface() override { --platform.openInterfaces; }

    [[nodiscard]] bool IsReadyToWrite(const char* data, int length) const override {
        platform.asked.append({data, length});
        return platform.isReady;
    }
    bool Write(const char* data, int length) override {
        platform.written.append({data, length});
        return platform.takesData;
    }
    [[nodiscard]] qint64 GetUnsentCount() const override { return platform.unsent; }
    void Finish() override { platform.unsent = platform.unsentAtTheEnd; }
};

/// Has no more than an interface must have.
class UnbufferedInterface : public IInterface {
public:
    [[nodiscard]] bool IsReadyToWrite(const char* /*data*/, int /*length*/) const override { return true; }
    bool Write(const char* /*data*/, int /*length*/) override { return true; }
};

class SerialInterfaceCallsTest : public testing::Test {
protected:
    SerialInterfaceCallsTest() { platform = {}; }

    TraceLines m_trace;
};

} // namespace

// Stands in front of the platform library's function of the same name.
IInterface* CInterfaceCreator::CreateInterface(const QString& address, IInterfaceCallback* callback,
                                               quint64 context, bool flag) {
    ++platform.attempts;
    platform.address = address;
    platform.callback = callback;
    platform.context = context;
    platform.flag = flag;
    if (!platform.hasBuffer) {
        return new UnbufferedInterface;
    }
    return platform.isPortThere ? new FakeInterface : nullptr;
}

namespace {

TEST_F(SerialInterfaceCallsTest, OpensWithItselfAsCallbackAndTheContextOfTheOutputs) {
    SerialInterface serial(u"COM7:1200,n,7,2"_s, 5000, 10);
    EXPECT_EQ(platform.attempts, 1);
    EXPECT_EQ(platform.address, u"COM7:1200,n,7,2"_s);
    EXPECT_EQ(platform.callback, &serial);
    EXPECT_EQ(platform.context, 10000U);
    EXPECT_FALSE(platform.flag);
    EXPECT_TRUE(serial.Open());
    EXPECT_EQ(platform.attempts, 1);
}

TEST_F(SerialInterfaceCallsTest, ReadinessIsAskedWithTheSameDataBeforeTheyAreWritten) {
    SerialInterface serial(u"COM1"_s, 5000, 10);
    const char* const data = "$PLG";
    EXPECT_TRUE(serial.WriteToInterface(data, 4));
    EXPECT_EQ(platform.asked, (QList{std::pair(data, 4)}));
    EXPECT_EQ(platform.written, (QList{std::pair(data, 4)}));
    platform.isReady = false;
    EXPECT_FALSE(serial.WriteToInterface(data, 3));
    EXPECT_EQ(platform.asked.last(), std::pair(data, 3));
    EXPECT_EQ(platform.written.size(), 1);
    EXPECT_TRUE(m_trace.lines.isEmpty());
}

TEST_F(SerialInterfaceCallsTest, FailedWriteIsTracedAndReturnsFalse) {
    SerialInterface serial(u"COM1"_s, 5000, 10);
    platform.takesData = false;
    EXPECT_FALSE(serial.WriteToInterface("$PLG", 4));
    ASSERT_EQ(m_trace.lines.size(), 1);
    EXPECT_TRUE(
        m_trace.lines.first().startsWith(u"devicecontrol\\directionfinder\\zancommon\\serialinterface("_s));
    EXPECT_TRUE(
        m_trace.lines.first().endsWith(u"): RS232Output:  SerialInterface::WriteToInterface: FAILED\n"_s));

    ErrorHandler::Instance().SetTraceMask(0);
    EXPECT_FALSE(serial.WriteToInterface("$PLG", 4));
    EXPECT_EQ(m_trace.lines.size(), 1);
}

TEST_F(SerialInterfaceCallsTest, ErrorDeletesTheInterfaceAndStartsTheRetries) {
    SerialInterface serial(u"COM1"_s, 5000, 10);
    const QTimer& timer = *serial.findChild<QTimer*>();
    EXPECT_EQ(platform.openInterfaces, 1);
    EXPECT_FALSE(timer.isActive());
    platform.callback->OnError();
    EXPECT_EQ(platform.openInterfaces, 0);
    EXPECT_TRUE(timer.isActive());
    EXPECT_EQ(timer.interval(), 5000);
    const int timerId = timer.timerId();
    platform.callback->OnError();
    EXPECT_EQ(timer.timerId(), timerId);
    EXPECT_FALSE(serial.WriteToInterface("$PLG", 4));
    EXPECT_TRUE(platform.asked.isEmpty());
}

TEST_F(SerialInterfaceCallsTest, TimerOpensAgainAndOpenNoticeEndsTheRetries) {
    platform.isPortThere = false;
    SerialInterface serial(u"COM1"_s, 5000, 10);
    const QTimer& timer = *serial.findChild<QTimer*>();
    EXPECT_TRUE(timer.isActive());
    QMetaObject::invokeMethod(&serial, "SlotOnTimer", Qt::DirectConnection);
    EXPECT_EQ(platform.attempts, 2);
    platform.isPortThere = true;
    QMetaObject::invokeMethod(&serial, "SlotOnTimer", Qt::DirectConnection);
    EXPECT_EQ(platform.openInterfaces, 1);
    EXPECT_TRUE(timer.isActive()); // until the platform confirms
    QMetaObject::invokeMethod(&serial, "SlotOnTimer", Qt::DirectConnection);
    EXPECT_EQ(platform.attempts, 3);
    platform.callback->OnOpen();
    EXPECT_FALSE(timer.isActive());
}

TEST_F(SerialInterfaceCallsTest, DataCountAsSentWhenTheyHaveLeftTheBufferAsAWhole) {
    SerialInterface serial(u"COM1"_s, 5000, 10);
    const auto expect = [&serial](quint64 sent, quint64 lost) {
        EXPECT_EQ(serial.GetCounts().sent, sent);
        EXPECT_EQ(serial.GetCounts().lost, lost);
    };
    platform.unsent = 4;
    EXPECT_TRUE(serial.WriteToInterface("one\n", 4));
    expect(0, 0);
    platform.unsent = 10;
    EXPECT_TRUE(serial.WriteToInterface("three\n", 6));
    platform.unsent = 7; // a part of the first
    expect(0, 0);
    platform.unsent = 6;
    expect(1, 0);
    platform.unsent = 1;
    expect(1, 0);
    platform.unsent = 0;
    expect(2, 0);
    platform.unsent = 4;
    EXPECT_TRUE(serial.WriteToInterface("two\n", 4));
    platform.callback->OnError();
    expect(2, 1);
    serial.Close();
    expect(2, 1);
}

TEST_F(SerialInterfaceCallsTest, DataThatAreInTheBufferWhenItIsClosedAreSentOrCountAsLost) {
    SerialInterface serial(u"COM1"_s, 5000, 10);
    platform.unsent = 12;
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(serial.WriteToInterface("two\n", 4));
    }
    platform.unsentAtTheEnd = 5;
    serial.Close();
    EXPECT_EQ(serial.GetCounts().sent, 1U);
    EXPECT_EQ(serial.GetCounts().lost, 2U);
    EXPECT_EQ(platform.openInterfaces, 0);
    EXPECT_FALSE(serial.WriteToInterface("two\n", 4));
}

TEST_F(SerialInterfaceCallsTest, WithoutABufferDataCountAsSentAtOnce) {
    platform.hasBuffer = false;
    SerialInterface serial(u"COM1"_s, 5000, 10);
    EXPECT_TRUE(serial.WriteToInterface("one\n", 4));
    EXPECT_EQ(serial.GetCounts().sent, 1U);
    serial.Close();
    EXPECT_EQ(serial.GetCounts().lost, 0U);
}

TEST_F(SerialInterfaceCallsTest, ClosedLineIsNotTriedAgain) {
    platform.isPortThere = false;
    SerialInterface serial(u"COM1"_s, 5000, 10);
    serial.Close();
    EXPECT_FALSE(serial.findChild<QTimer*>()->isActive());
}

TEST_F(SerialInterfaceCallsTest, DestructorDeletesTheInterface) {
    auto serial = std::make_unique<SerialInterface>(u"COM1"_s, 5000, 10);
    EXPECT_EQ(platform.openInterfaces, 1);
    serial.reset();
    EXPECT_EQ(platform.openInterfaces, 0);
}

} // namespace
