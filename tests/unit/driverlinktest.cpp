#include "zanserver/driverlink.h"

#include "support/eventloop.h"
#include "support/kepttotheend.h"
#include "support/printing.h"
#include "zancommon/nulldriver.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using namespace std::chrono_literals;
using KvZANCommon::IDriverCallback;

namespace {

/// What a driver does when its device is opened, and what it was called.
struct Device {
    std::function<int(IDriverCallback& callback)> onInitialize = [](IDriverCallback&) { return 0; };
    std::function<void()> onStandby = [] {};
    std::function<void()> onDestroy = [] {};
    std::atomic<int> attempts = 0;
    std::atomic<int> alive = 0; // drivers
    std::atomic<IDriverCallback*> callback = nullptr;
    std::string address;
};

class DeviceDriver final : public KvZANCommon::NullDriver {
public:
    explicit DeviceDriver(Device& device)
        : m_device(device) {
        ++m_device.alive;
    }
    ~DeviceDriver() override {
        m_device.onDestroy();
        --m_device.alive;
    }
    void SetCallback(IDriverCallback* callback) override { m_device.callback = callback; }
    int Initialize(std::string& address, bool /*simulation*/) override {
        m_device.address = address;
        ++m_device.attempts;
        return m_device.onInitialize(*m_device.callback);
    }
    QString GetLastError() override { return u"no device"_s; }
    long SetMode(EMode mode) override {
        if (mode == EMODE_STANDBY) {
            m_device.onStandby();
        }
        return 0;
    }

private:
    Device& m_device;
};

void ReportFatal(IDriverCallback& callback, const QString& text) {
    KvZANCommon::ErrorStruct error{-1, true, text};
    callback.reportError(error);
}

void DeliverBearing(IDriverCallback& callback) {
    unsigned long long time = 0;
    Bearing bearing;
    KvZANCommon::StatusStruct status;
    callback.fillScanBuffer(0, time, 0, 1, &bearing, status);
}

int CountDescriptors() {
    return static_cast<int>(
        QDir(u"/proc/self/fd"_s).entryList(QDir::NoDotAndDotDot | QDir::Files | QDir::System).size());
}

int CountThreads() {
    return static_cast<int>(QDir(u"/proc/self/task"_s).entryList(QDir::NoDotAndDotDot | QDir::Dirs).size());
}

class DriverLinkTest : public testing::Test {
protected:
    std::unique_ptr<DriverLink> Make(DriverLink::Kind kind = DriverLink::Kind::Device,
                                     std::chrono::milliseconds firstDelay = 1ms,
                                     std::chrono::milliseconds timeout = 1min) {
        auto link = std::make_unique<DriverLink>([this] { return std::make_unique<DeviceDriver>(*m_device); },
                                                 u"host:1"_s, u"station"_s, kind, firstDelay,
                                                 [timeout](DriverCall) { return timeout; });
        QObject::connect(link.get(), &DriverLink::Connected, link.get(), [this] { ++m_connected; });
        QObject::connect(link.get(), &DriverLink::Lost, link.get(),
                         [this](const QString& reason) { m_lost.append(reason); });
        QObject::connect(link.get(), &DriverLink::ThereAgain, link.get(), [this] { ++m_thereAgain; });
        QObject::connect(link.get(), &DriverLink::Ended, link.get(), [this] { ++m_ended; });
        QObject::connect(link.get(), &DriverLink::GivenUp, link.get(),
                         [this](const QString& reason) { m_givenUp.append(reason); });
        return link;
    }

    Device* const m_device = MakeKeptToTheEnd<Device>();
    int m_connected = 0;
    int m_thereAgain = 0;
    int m_ended = 0;
    QStringList m_lost;
    QStringList m_givenUp;
};

} // namespace

TEST_F(DriverLinkTest, DeviceIsOpenedAtItsAddress) {
    const auto link = Make();
    EXPECT_EQ(link->GetState(), DriverLink::State::Closed);
    link->Open();
    EXPECT_EQ(link->GetState(), DriverLink::State::Connecting);
    EXPECT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    EXPECT_EQ(link->GetState(), DriverLink::State::Connected);
    EXPECT_EQ(m_device->address, "host:1");
    EXPECT_EQ(m_device->callback.load()->GetDevAddress(), u"station"_s);
    EXPECT_EQ(m_lost, QStringList());
}

TEST_F(DriverLinkTest, EndOfTheConnectionBeforeDoesNotEndTheNext) {
    const auto link = Make();
    link->Open();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    // A driver often reports a loss twice, and the second time only when the station seeks the device again.
    std::promise<void> sought;
    int attempts = 0;
    QObject::connect(link.get(), &DriverLink::StateChanged, link.get(), [&] {
        if (link->GetState() == DriverLink::State::Connecting && ++attempts == 1) {
            sought.set_value();
        }
    });
    link->GetThread().Post(DriverCall::SetMode,
                           [this, isSought = sought.get_future().share()](KvZANCommon::IDriver&) {
                               ReportFatal(*m_device->callback, u"lost"_s);
                               isSought.wait();
                               ReportFatal(*m_device->callback, u"lost"_s);
                               m_device->callback.load()->CloseDataLink();
                           });
    EXPECT_TRUE(SpinUntil([&] { return m_connected == 2; }));
    EXPECT_EQ(link->GetState(), DriverLink::State::Connected);
    EXPECT_EQ(m_lost, QStringList{u"lost"_s});
    EXPECT_EQ(m_device->attempts, 2);
}

TEST_F(DriverLinkTest, DeviceThatCannotBeOpenedIsReportedOnceAndSoughtUntilItIsThere) {
    m_device->onInitialize = [this](IDriverCallback&) { return m_device->attempts < 5 ? -2 : 0; };
    const auto link = Make();
    link->Open();
    EXPECT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    EXPECT_EQ(m_device->attempts, 5);
    EXPECT_EQ(m_lost, QStringList{u"no device"_s});
}

TEST_F(DriverLinkTest, AttemptsFollowOneAnotherMoreAndMoreSlowly) {
    // The times are the rule: after 20, 40, 80 and 160 ms. Equal ones would be 80 ms together.
    m_device->onInitialize = [this](IDriverCallback&) { return m_device->attempts < 5 ? -2 : 0; };
    const auto link = Make(DriverLink::Kind::Device, 20ms);
    QElapsedTimer timer;
    timer.start();
    link->Open();
    EXPECT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    EXPECT_GE(timer.elapsed(), 200);
    EXPECT_EQ(DriverLink::FIRST_DELAY, 1s);
    EXPECT_EQ(DriverLink::LONGEST_DELAY, 30s);
}

TEST_F(DriverLinkTest, DeviceThatIsLostAsSoonAsItIsThereIsSoughtMoreAndMoreSlowly) {
    m_device->onInitialize = [](IDriverCallback& callback) {
        callback.CloseDataLink();
        return 0;
    };
    const auto link = Make(DriverLink::Kind::Device, 20ms);
    QElapsedTimer timer;
    timer.start();
    link->Open();
    EXPECT_TRUE(SpinUntil([&] { return m_connected == 5; }));
    EXPECT_GE(timer.elapsed(), 200);
}

TEST_F(DriverLinkTest, DeviceThatWasThereForLongIsSoughtQuicklyAgain) {
    // The times are the rule: after 20, 40, 80, 160 and 320 ms, and 600 ms from then on, unless it was there
    // for longer than those.
    m_device->onInitialize = [this](IDriverCallback&) { return m_device->attempts < 6 ? -2 : 0; };
    const auto link = Make(DriverLink::Kind::Device, 20ms);
    link->Open();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    DeliverBearing(*m_device->callback);
    QElapsedTimer timer;
    timer.start();
    ASSERT_TRUE(SpinUntil([&] { return timer.hasExpired(650); }));
    m_device->callback.load()->CloseDataLink();
    ASSERT_TRUE(SpinUntil([&] { return link->GetState() == DriverLink::State::Lost; }));
    timer.start();
    EXPECT_TRUE(SpinUntil([&] { return m_connected == 2; }));
    EXPECT_LT(timer.elapsed(), 550);
}

TEST_F(DriverLinkTest, InitializeThatThrowsIsAnAttemptThatHasFailed) {
    m_device->onInitialize = [this](IDriverCallback&) {
        return m_device->attempts < 2 ? throw std::runtime_error("no power") : 0;
    };
    const auto link = Make();
    link->Open();
    EXPECT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    EXPECT_EQ(m_lost, QStringList{u"the driver threw an exception: no power"_s});
}

TEST_F(DriverLinkTest, InitializeThatThrowsWhatIsNoExceptionIsAnAttemptThatHasFailed) {
    m_device->onInitialize = [this](IDriverCallback&) { return m_device->attempts < 2 ? throw 1 : 0; };
    const auto link = Make();
    link->Open();
    EXPECT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    EXPECT_EQ(m_lost, QStringList{u"the driver threw an exception"_s});
}

TEST_F(DriverLinkTest, DeviceThatIsLostWhileItIsOpenedIsNotThereAlthoughItWasOpened) {
    m_device->onInitialize = [this](IDriverCallback& callback) {
        if (m_device->attempts == 1) {
            ReportFatal(callback, u"no clock"_s);
        }
        return 0;
    };
    constexpr auto LATER_THAN_THE_ANSWER = 100ms;
    const auto link = Make(DriverLink::Kind::Device, LATER_THAN_THE_ANSWER);
    link->Open();
    EXPECT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    EXPECT_EQ(m_lost, QStringList{u"no clock"_s});
    EXPECT_EQ(m_device->attempts, 2);
}

TEST_F(DriverLinkTest, TextOfAnExceptionIsOneLineOfBoundedLength) {
    m_device->onInitialize = [this](IDriverCallback&) {
        return m_device->attempts < 2 ? throw std::runtime_error("no\npower" + std::string(10'000, '!')) : 0;
    };
    const auto link = Make();
    link->Open();
    EXPECT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    ASSERT_EQ(m_lost.size(), 1);
    EXPECT_TRUE(m_lost[0].startsWith(u"the driver threw an exception: no power!"_s));
    EXPECT_LT(m_lost[0].size(), 300);
}

TEST_F(DriverLinkTest, DriverThatCannotBeCreatedIsTriedAgain) {
    int attempts = 0;
    DriverLink link(
        [&]() -> std::unique_ptr<KvZANCommon::IDriver> {
            if (++attempts < 3) {
                throw std::runtime_error("no licence");
            }
            return std::make_unique<DeviceDriver>(*m_device);
        },
        u""_s, u""_s, DriverLink::Kind::Device, 1ms);
    QStringList lost;
    QObject::connect(&link, &DriverLink::Lost, &link, [&](const QString& reason) { lost.append(reason); });
    link.Open();
    EXPECT_TRUE(SpinUntil([&] { return link.GetState() == DriverLink::State::Connected; }));
    EXPECT_EQ(lost, QStringList{u"creating the driver has failed: it threw an exception: no licence"_s});
    link.Close();
}

TEST_F(DriverLinkTest, DeviceThatIsLostIsReportedOnceWithItsReasonAndOpenedAgain) {
    const auto link = Make();
    link->Open();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    ReportFatal(*m_device->callback, u"the cable is gone"_s);
    m_device->callback.load()->CloseDataLink();
    EXPECT_TRUE(SpinUntil([&] { return m_connected == 2; }));
    EXPECT_EQ(m_lost, QStringList{u"the cable is gone"_s});
    EXPECT_EQ(m_device->attempts, 2);
    EXPECT_EQ(link->GetReason(), QString());
}

TEST_F(DriverLinkTest, DeviceThatIsLostAgainBeforeItDeliversIsReportedOnceAndNotThereAgain) {
    m_device->onInitialize = [](IDriverCallback& callback) {
        callback.CloseDataLink();
        return 0;
    };
    const auto link = Make();
    link->Open();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 5; }));
    EXPECT_EQ(m_lost, QStringList{u"the driver has closed the link"_s});
    EXPECT_EQ(m_thereAgain, 0);
}

TEST_F(DriverLinkTest, DeviceIsThereAgainWithTheFirstBearingsOrTheFirstPosition) {
    const auto link = Make();
    link->Open();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    DeliverBearing(*m_device->callback);
    link->GetReceiver().PassOnWaiting();
    EXPECT_EQ(m_thereAgain, 0) << "it was not lost";
    m_device->callback.load()->CloseDataLink();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 2; }));
    EXPECT_EQ(m_thereAgain, 0);
    for (int i = 0; i < 2; ++i) {
        DeliverBearing(*m_device->callback);
        link->GetReceiver().PassOnWaiting();
        EXPECT_EQ(m_thereAgain, 1);
    }
    m_device->callback.load()->CloseDataLink();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 3; }));
    m_device->callback.load()->fillGPSData(50.0, 8.0, 1000, true, 7, 1);
    link->GetReceiver().PassOnWaiting();
    EXPECT_EQ(m_thereAgain, 2);
    EXPECT_EQ(m_lost.size(), 2);
}

TEST_F(DriverLinkTest, WhatADriverDeliversWhileItOpensTheDeviceCountsWhenTheDeviceIsOpen) {
    m_device->onInitialize = [this](IDriverCallback& callback) {
        DeliverBearing(callback);
        return m_device->attempts < 3 ? -2 : 0;
    };
    const auto link = Make();
    int thereAgainBefore = -1;
    QObject::connect(link.get(), &DriverLink::Connected, link.get(),
                     [&] { thereAgainBefore = m_thereAgain; });
    link->Open();
    EXPECT_TRUE(SpinUntil([&] { return m_thereAgain == 1; }));
    EXPECT_EQ(thereAgainBefore, 0);
    EXPECT_EQ(m_lost, QStringList{u"no device"_s});
}

TEST_F(DriverLinkTest, DeviceThatWasOpenForLongWithoutDeliveringIsSoughtNoFaster) {
    // The times are the rule: the attempts are 10, 20, 40 and 80 ms behind a loss, and begin anew when the
    // device has been there for 300 ms.
    m_device->onInitialize = [this](IDriverCallback&) { return m_device->attempts < 4 ? -2 : 0; };
    const auto link = Make(DriverLink::Kind::Device, 10ms);
    link->Open();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    std::this_thread::sleep_for(310ms);
    QElapsedTimer timer;
    timer.start();
    m_device->callback.load()->CloseDataLink();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 2; }));
    EXPECT_GE(timer.elapsed(), 60) << "Qt's timers may be early by some per cent";
}

TEST_F(DriverLinkTest, DriverThatHangsWhenItIsDestroyedIsGivenUpWhenTheLinkIsClosed) {
    auto* const released = MakeKeptToTheEnd<std::promise<void>>();
    m_device->onDestroy = [future = released->get_future().share()] { future.wait(); };
    auto link = Make(DriverLink::Kind::Device, 1ms, 300ms);
    link->Open();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    link->Close();
    EXPECT_EQ(m_givenUp, QStringList{u"destroying the driver has not returned within 0.3 s; the driver is "
                                     "given up"_s});
    EXPECT_EQ(link->GetState(), DriverLink::State::GivenUp);
    EXPECT_EQ(link->GetReason(), m_givenUp.value(0));
    link.reset();
    EXPECT_EQ(m_givenUp.size(), 1);
    released->set_value();
}

TEST_F(DriverLinkTest, DriverThatHangsWhenItIsDestroyedIsGivenUpWithALinkThatIsNotClosed) {
    auto* const released = MakeKeptToTheEnd<std::promise<void>>();
    m_device->onDestroy = [future = released->get_future().share()] { future.wait(); };
    auto link = Make(DriverLink::Kind::Device, 1ms, 300ms);
    link->Open();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    link.reset();
    EXPECT_EQ(m_device->alive, 1) << "it is still being destroyed";
    released->set_value();
}

TEST_F(DriverLinkTest, DriverThatClosesTheLinkWhileItOpensTheDeviceHasLostIt) {
    m_device->onInitialize = [this](IDriverCallback& callback) {
        if (m_device->attempts == 1) {
            callback.CloseDataLink();
        }
        return 0;
    };
    const auto link = Make();
    link->Open();
    EXPECT_TRUE(SpinUntil([&] { return m_connected == 2; }));
    EXPECT_EQ(m_lost, QStringList{u"the driver has closed the link"_s});
}

TEST_F(DriverLinkTest, HundredLossesLeaveNoThreadAndNoDescriptorBehind) {
    const auto link = Make();
    link->Open();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    const int threads = CountThreads();
    const int descriptors = CountDescriptors();
    for (int i = 1; i <= 100; ++i) {
        m_device->callback.load()->CloseDataLink();
        ASSERT_TRUE(SpinUntil([&] { return m_connected == 1 + i; }));
        DeliverBearing(*m_device->callback);
        ASSERT_TRUE(SpinUntil([&] { return m_thereAgain == i; }));
    }
    EXPECT_EQ(m_lost.size(), 100);
    EXPECT_EQ(m_device->alive, 1);
    EXPECT_EQ(CountThreads(), threads);
    EXPECT_EQ(CountDescriptors(), descriptors);
}

TEST_F(DriverLinkTest, RecordingIsNotOpenedAgain) {
    const auto link = Make(DriverLink::Kind::Recording);
    link->Open();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    m_device->callback.load()->CloseDataLink();
    EXPECT_TRUE(SpinUntil([&] { return m_ended == 1; }));
    EXPECT_EQ(m_lost, QStringList());
    EXPECT_EQ(link->GetState(), DriverLink::State::Closed);
    link->Close();
    EXPECT_EQ(m_device->attempts, 1);
}

TEST_F(DriverLinkTest, DriverIsGoneWithTheLink) {
    auto link = Make();
    link->Open();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    link.reset();
    EXPECT_EQ(m_device->alive, 0);
}

TEST_F(DriverLinkTest, ClosingSetsTheDeviceToStandbyAndPassesOnWhatItDeliversUntilThen) {
    auto link = Make();
    int blocks = 0;
    QObject::connect(&link->GetReceiver(), &DriverReceiver::BlockReceived, link.get(),
                     [&](BearingBlock&) { ++blocks; });
    m_device->onStandby = [this] {
        std::vector<Bearing> bearings(100'000);
        for (int i = 0; i < 50; ++i) { // ten times what the queue holds
            unsigned long long time = 0;
            KvZANCommon::StatusStruct status;
            m_device->callback.load()->fillScanBuffer(0, time, 0, 100'000, bearings.data(), status);
        }
    };
    link->Open();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    link->Close();
    EXPECT_EQ(blocks, 50);
    EXPECT_EQ(link->GetState(), DriverLink::State::Closed);
}

TEST_F(DriverLinkTest, ClosingDoesNotWaitForAStandbyThatThrows) {
    m_device->onStandby = [] { throw std::runtime_error("no power"); };
    auto link = Make();
    QStringList failures;
    QObject::connect(link.get(), &DriverLink::CallFailed, link.get(),
                     [&](const QString& reason) { failures.append(reason); });
    link->Open();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    link->Close();
    EXPECT_EQ(link->GetState(), DriverLink::State::Closed);
    EXPECT_EQ(failures.size(), 1);
    link.reset();
    EXPECT_EQ(m_device->alive, 0);
}

TEST_F(DriverLinkTest, NothingArrivesAfterClosing) {
    const auto link = Make();
    link->Open();
    ASSERT_TRUE(SpinUntil([&] { return m_connected == 1; }));
    link->Close();
    int blocks = 0;
    QObject::connect(&link->GetReceiver(), &DriverReceiver::BlockReceived, link.get(),
                     [&](BearingBlock&) { ++blocks; });
    unsigned long long time = 0;
    Bearing bearing;
    KvZANCommon::StatusStruct status;
    link->GetReceiver().fillScanBuffer(0, time, 0, 1, &bearing, status);
    link->GetReceiver().PassOnWaiting();
    EXPECT_EQ(blocks, 0);
}

TEST_F(DriverLinkTest, DriverThatHangsIsGivenUpAndClosingDoesNotWaitForIt) {
    auto* const released = MakeKeptToTheEnd<std::promise<void>>();
    m_device->onInitialize = [future = released->get_future().share()](IDriverCallback&) {
        future.wait();
        return 0;
    };
    auto link = Make(DriverLink::Kind::Device, 1ms, 300ms);
    link->Open();
    EXPECT_TRUE(SpinUntil([&] { return !m_givenUp.isEmpty(); }));
    EXPECT_EQ(m_givenUp, QStringList{u"Initialize has not returned within 0.3 s; the driver is given up"_s});
    EXPECT_EQ(link->GetState(), DriverLink::State::GivenUp);
    EXPECT_EQ(link->GetReason(), m_givenUp[0]);
    link.reset();
    released->set_value();
    EXPECT_EQ(m_connected, 0);
}
