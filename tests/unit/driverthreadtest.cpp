#include "zanserver/driverthread.h"

#include "support/eventloop.h"
#include "support/kepttotheend.h"
#include "support/printing.h"
#include "support/sleepingthread.h"
#include "zancommon/nulldriver.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QStringList>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <exception>
#include <functional>
#include <future>
#include <stdexcept>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using KvZANCommon::IDriver;

// One thread calls the driver, and a driver that hangs costs the program nothing but that thread.

namespace {

/// What becomes of a driver.
struct Life {
    std::atomic<std::thread::id> createdOn;
    std::atomic<std::thread::id> destroyedOn;
    std::atomic<KvZANCommon::IDriverCallback*> callback = nullptr;
    std::function<void()> onDestroy = [] {};
};

class LivingDriver final : public KvZANCommon::NullDriver {
public:
    explicit LivingDriver(Life& life)
        : m_life(life) {
        m_life.createdOn = std::this_thread::get_id();
    }
    ~LivingDriver() override {
        m_life.onDestroy();
        m_life.destroyedOn = std::this_thread::get_id();
    }
    void SetCallback(KvZANCommon::IDriverCallback* callback) override { m_life.callback = callback; }

private:
    Life& m_life;
};

class DriverThreadTest : public testing::Test {
protected:
    std::unique_ptr<DriverThread> Start(std::chrono::milliseconds timeout = std::chrono::minutes(1)) {
        auto thread =
            std::make_unique<DriverThread>([this] { return std::make_unique<LivingDriver>(*m_life); },
                                           m_receiver, [timeout](DriverCall) { return timeout; });
        QObject::connect(thread.get(), &DriverThread::Failed, thread.get(),
                         [this](DriverCall, const QString& reason) { m_failures.append(reason); });
        QObject::connect(thread.get(), &DriverThread::GivenUp, thread.get(),
                         [this](const QString& reason) { m_givenUp.append(reason); });
        return thread;
    }

    /// A call that returns when it is let go, or never.
    DriverThread::Call Hang() {
        return [released = m_released](IDriver&) { released.wait(); };
    }
    /// Lets the thread of a driver that was given up end, so that nothing of it is left to the next test.
    void Release() { m_release->set_value(); }

    /// Waits until the driver's thread sleeps because there is nothing to do.
    static void AwaitIdle(DriverThread& thread) {
        pid_t id = 0;
        thread.Post(DriverCall::Query, [&id](IDriver&) { id = gettid(); });
        EXPECT_TRUE(thread.Wait());
        EXPECT_TRUE(AwaitSleep(id));
    }
    /// Does something in a handler of the event loop, and has the loop go on until it is quit.
    template <class Function>
    static void RunLoopWith(QEventLoop& loop, Function handle) {
        QTimer::singleShot(0, &loop, handle);
        QTimer::singleShot(std::chrono::seconds(30), &loop, [&loop] { loop.exit(1); });
        EXPECT_EQ(loop.exec(), 0) << "nothing has quit it";
    }

    Life* const m_life = MakeKeptToTheEnd<Life>();
    std::promise<void>* const m_release = MakeKeptToTheEnd<std::promise<void>>();
    const std::shared_future<void> m_released = m_release->get_future().share();

    const std::shared_ptr<DriverReceiver> m_receiver = std::make_shared<DriverReceiver>(u"device"_s);
    QStringList m_failures;
    QStringList m_givenUp;
};

} // namespace

TEST_F(DriverThreadTest, DriverIsCreatedCalledAndDestroyedOnOneThreadOfItsOwn) {
    auto thread = Start();
    std::thread::id calledOn;
    thread->Post(DriverCall::Setting, [&](IDriver&) { calledOn = std::this_thread::get_id(); });
    EXPECT_TRUE(thread->Wait());
    EXPECT_NE(calledOn, std::this_thread::get_id());
    EXPECT_EQ(m_life->createdOn.load(), calledOn);
    EXPECT_EQ(m_life->callback.load(), m_receiver.get());
    EXPECT_EQ(m_life->destroyedOn.load(), std::thread::id());
    thread.reset();
    EXPECT_EQ(m_life->destroyedOn.load(), calledOn);
}

TEST_F(DriverThreadTest, CallsAreCarriedOutInTheirOrder) {
    auto thread = Start();
    std::vector<int> order;
    for (int i = 0; i < 1000; ++i) {
        thread->Post(DriverCall::Setting, [&order, i](IDriver&) { order.push_back(i); });
    }
    EXPECT_TRUE(thread->Wait());
    ASSERT_EQ(order.size(), 1000U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST_F(DriverThreadTest, WhatWasPostedIsCarriedOutBeforeTheDriverIsDestroyed) {
    auto thread = Start();
    int count = 0;
    for (int i = 0; i < 100; ++i) {
        thread->Post(DriverCall::Setting, [&count](IDriver&) { ++count; });
    }
    thread.reset();
    EXPECT_EQ(count, 100);
}

TEST_F(DriverThreadTest, CallThatThrowsHasFailedAndTheNextOneFollows) {
    auto thread = Start();
    bool isReached = false;
    thread->Post(DriverCall::Reset, [](IDriver&) { throw std::runtime_error("no power"); });
    thread->Post(DriverCall::Setting, [](IDriver&) { throw 1; });
    thread->Post(DriverCall::Query, [&](IDriver&) { isReached = true; });
    EXPECT_TRUE(thread->Wait());
    EXPECT_TRUE(isReached);
    EXPECT_TRUE(SpinUntil([&] { return m_failures.size() == 2; }));
    EXPECT_EQ(m_failures, (QStringList{u"Reset has failed: it threw an exception: no power"_s,
                                       u"a setting has failed: it threw an exception"_s}));
    EXPECT_FALSE(thread->IsGivenUp());
}

TEST_F(DriverThreadTest, CreationIsTriedAgainForTheNextCall) {
    int attempts = 0;
    bool isCalled = false;
    {
        DriverThread thread(
            [&]() -> std::unique_ptr<IDriver> {
                if (++attempts == 1) {
                    throw std::runtime_error("no licence");
                }
                return std::make_unique<LivingDriver>(*m_life);
            },
            m_receiver);
        thread.Post(DriverCall::Initialize, [&](IDriver&) { isCalled = true; });
        EXPECT_TRUE(thread.Wait());
        EXPECT_FALSE(isCalled);
        thread.Post(DriverCall::Initialize, [&](IDriver&) { isCalled = true; });
        EXPECT_TRUE(thread.Wait());
    }
    EXPECT_TRUE(isCalled);
    EXPECT_EQ(attempts, 2);
}

TEST_F(DriverThreadTest, AnswerComesOnTheMainThreadWhenTheCallHasReturned) {
    auto thread = Start();
    std::atomic<bool> hasReturned = false;
    std::thread::id answeredOn;
    thread->Post(
        DriverCall::Query, [&](IDriver&) { hasReturned = true; },
        [&] {
            EXPECT_TRUE(hasReturned);
            answeredOn = std::this_thread::get_id();
        });
    EXPECT_TRUE(SpinUntil([&] { return answeredOn != std::thread::id(); }));
    EXPECT_EQ(answeredOn, std::this_thread::get_id());
}

TEST_F(DriverThreadTest, CallThatThrowsAndThreadThatIsGoneGiveNoAnswer) {
    auto thread = Start();
    bool isAnswered = false;
    const auto answer = [&] { isAnswered = true; };
    thread->Post(
        DriverCall::Query, [](IDriver&) { throw 1; }, answer);
    EXPECT_TRUE(SpinUntil([&] { return m_failures.size() == 1; }));
    thread->Post(
        DriverCall::Query, [](IDriver&) {}, answer);
    thread.reset();
    QCoreApplication::processEvents();
    EXPECT_FALSE(isAnswered);
}

TEST_F(DriverThreadTest, DriverThatCannotBeCreatedIsReportedAndNotCalled) {
    bool isCalled = false;
    {
        DriverThread thread([]() -> std::unique_ptr<IDriver> { throw std::runtime_error("no licence"); },
                            m_receiver);
        QObject::connect(&thread, &DriverThread::Failed, &thread,
                         [this](DriverCall, const QString& reason) { m_failures.append(reason); });
        thread.Post(DriverCall::Initialize, [&](IDriver&) { isCalled = true; });
        EXPECT_TRUE(thread.Wait());
        EXPECT_TRUE(SpinUntil([&] { return !m_failures.isEmpty(); }));
    }
    EXPECT_FALSE(isCalled);
    EXPECT_EQ(m_failures,
              QStringList{u"creating the driver has failed: it threw an exception: no licence"_s});
}

TEST_F(DriverThreadTest, DriverThatHangsIsGivenUpOnceAndNotCalledAgain) {
    auto thread = Start(std::chrono::milliseconds(300));
    std::atomic<bool> isCalled = false;
    thread->Post(DriverCall::Initialize, Hang());
    thread->Post(DriverCall::Setting, [&](IDriver&) { isCalled = true; });
    EXPECT_TRUE(SpinUntil([&] { return !m_givenUp.isEmpty(); }));
    EXPECT_EQ(m_givenUp, QStringList{u"Initialize has not returned within 0.3 s; the driver is given up"_s});
    EXPECT_TRUE(thread->IsGivenUp());
    EXPECT_TRUE(DriverThread::HasGivenUpAny());
    EXPECT_FALSE(thread->Wait());
    thread->Post(DriverCall::Setting, [&](IDriver&) { isCalled = true; });
    Release();
    thread.reset();
    EXPECT_FALSE(isCalled);
    EXPECT_EQ(m_givenUp.size(), 1);
}

TEST_F(DriverThreadTest, WaitingForADriverThatHangsEndsWithItsTimeout) {
    auto thread = Start(std::chrono::milliseconds(300));
    thread->Post(DriverCall::SetMode, Hang());
    EXPECT_FALSE(thread->Wait());
    EXPECT_EQ(m_givenUp.size(), 1);
    Release();
}

TEST_F(DriverThreadTest, EndOfTheThreadOfADriverThatHangsDoesNotWaitForIt) {
    auto thread = Start(std::chrono::milliseconds(300));
    thread->Post(DriverCall::SetMode, Hang());
    thread.reset();
    EXPECT_EQ(m_givenUp.size(), 1);
    EXPECT_EQ(m_life->destroyedOn.load(), std::thread::id()) << "it is still in its call";
    Release();
}

TEST_F(DriverThreadTest, EndDestroysTheDriverAndWhatIsPostedBehindItIsNotCarriedOut) {
    auto thread = Start();
    int count = 0;
    thread->Post(DriverCall::Setting, [&count](IDriver&) { ++count; });
    EXPECT_FALSE(thread->HasEnded());
    EXPECT_TRUE(thread->End());
    EXPECT_TRUE(thread->HasEnded());
    EXPECT_EQ(count, 1);
    EXPECT_NE(m_life->destroyedOn.load(), std::thread::id());
    thread->Post(DriverCall::Setting, [&count](IDriver&) { ++count; });
    EXPECT_TRUE(thread->Wait());
    EXPECT_TRUE(thread->End());
    EXPECT_EQ(count, 1);
}

TEST_F(DriverThreadTest, DriverThatHangsWhenItIsDestroyedIsGivenUp) {
    m_life->onDestroy = [released = m_released] { released.wait(); };
    auto thread = Start(std::chrono::milliseconds(300));
    thread->Post(DriverCall::Setting, [](IDriver&) {});
    EXPECT_FALSE(thread->End());
    EXPECT_EQ(m_givenUp, QStringList{u"destroying the driver has not returned within 0.3 s; the driver is "
                                     "given up"_s});
    Release();
    thread.reset();
    EXPECT_EQ(m_givenUp.size(), 1);
}

TEST_F(DriverThreadTest, DriverThatThrowsWhenItIsDestroyedIsGivenUpAndTheProcessGoesOn) {
    m_life->onDestroy = [] { throw std::runtime_error("no power"); };
    auto thread = Start();
    thread->Post(DriverCall::Setting, [](IDriver&) {});
    EXPECT_FALSE(thread->End());
    EXPECT_EQ(m_givenUp,
              QStringList{u"destroying the driver has failed: it threw an exception: no power; the "
                          "driver is given up"_s});
    EXPECT_TRUE(DriverThread::HasGivenUpAny());
}

TEST_F(DriverThreadTest, CallOutOfWhichNothingCanBeCaughtGivesTheDriverUp) {
    auto thread = Start();
    std::atomic<bool> isCalled = false;
    const std::function<void()> fail = [] { throw 1; };
    thread->Post(DriverCall::Setting, [fail](IDriver&) { [&]() noexcept { fail(); }(); });
    thread->Post(DriverCall::Setting, [&](IDriver&) { isCalled = true; });
    EXPECT_TRUE(SpinUntil([&] { return !m_givenUp.isEmpty(); }));
    EXPECT_EQ(m_givenUp,
              QStringList{u"a setting has failed: it threw an exception; the driver is given up"_s});
    thread.reset();
    EXPECT_FALSE(isCalled);
}

TEST_F(DriverThreadTest, DriverThatWantsToEndTheProcessIsGivenUp) {
    auto thread = Start();
    thread->Post(DriverCall::Setting, [](IDriver&) { std::terminate(); });
    EXPECT_FALSE(thread->Wait());
    EXPECT_EQ(m_givenUp,
              QStringList{u"a setting has failed: it has called std::terminate; the driver is given up"_s});
}

TEST_F(DriverThreadTest, OtherThreadsEndTheProcessAsTheyWouldWithoutADriver) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto terminate = [this] {
        std::set_terminate([] { std::_Exit(7); });
        auto thread = Start();
        std::thread(std::terminate).join();
    };
    EXPECT_EXIT(terminate(), testing::ExitedWithCode(7), "");
}

TEST_F(DriverThreadTest, NothingThatAGivenUpDriverDeliversArrives) {
    int blocks = 0;
    QObject::connect(m_receiver.get(), &DriverReceiver::BlockReceived, m_receiver.get(),
                     [&](BearingBlock&) { ++blocks; });
    auto thread = Start(std::chrono::milliseconds(300));
    std::promise<void> delivered;
    thread->Post(DriverCall::SetMode, [&, released = m_released](IDriver&) {
        released.wait();
        unsigned long long time = 0;
        Bearing bearing;
        KvZANCommon::StatusStruct status;
        m_receiver->fillScanBuffer(0, time, 0, 1, &bearing, status);
        delivered.set_value();
    });
    EXPECT_FALSE(thread->Wait());
    Release();
    delivered.get_future().wait();
    m_receiver->PassOnWaiting();
    EXPECT_EQ(blocks, 0);
}

TEST_F(DriverThreadTest, CallThatEndsWithinItsTimeoutIsNotGivenUpHoweverManyFollow) {
    auto thread = Start(std::chrono::milliseconds(1000));
    for (int i = 0; i < 8; ++i) { // the time is the rule: in all longer than the time-out
        thread->Post(DriverCall::Setting,
                     [](IDriver&) { std::this_thread::sleep_for(std::chrono::milliseconds(200)); });
    }
    EXPECT_TRUE(thread->Wait());
    EXPECT_EQ(m_givenUp, QStringList());
}

TEST_F(DriverThreadTest, CallThatIsPostedWithoutAnEventLoopWakesTheSleepingThread) {
    auto thread = Start();
    AwaitIdle(*thread);
    std::promise<void> called;
    thread->Post(DriverCall::Setting, [&](IDriver&) { called.set_value(); });
    EXPECT_EQ(called.get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready);
}

TEST_F(DriverThreadTest, EventHandlerDoesNotWakeTheSleepingThreadAndTheLoopDoesWhenItGoesOn) {
    auto thread = Start();
    AwaitIdle(*thread);
    std::atomic<int> count = 0;
    QEventLoop loop;
    RunLoopWith(loop, [&] {
        for (int i = 0; i < 2; ++i) {
            thread->Post(DriverCall::Setting, [&](IDriver&) { ++count; });
        }
        thread->Post(
            DriverCall::Setting, [&](IDriver&) { ++count; }, [&] { loop.quit(); });
        std::this_thread::sleep_for(std::chrono::milliseconds(50)); // a thread that is woken calls within it
        EXPECT_EQ(count, 0);
    });
    EXPECT_EQ(count, 3);
}

TEST_F(DriverThreadTest, LoopThatIsTooBusyToSleepWakesTheThread) {
    auto thread = Start();
    AwaitIdle(*thread);
    std::atomic<bool> isCalled = false;
    QEventLoop loop;
    QObject busy;
    const std::function<void()> goOn = [&] {
        if (isCalled) {
            loop.quit();
        } else {
            QMetaObject::invokeMethod(&busy, goOn, Qt::QueuedConnection);
        }
    };
    RunLoopWith(loop, [&] {
        thread->Post(DriverCall::Setting, [&](IDriver&) { isCalled = true; });
        goOn();
    });
    EXPECT_TRUE(isCalled);
}

TEST_F(DriverThreadTest, WaitingInAnEventHandlerWakesTheThread) {
    auto thread = Start();
    AwaitIdle(*thread);
    int count = 0;
    QEventLoop loop;
    RunLoopWith(loop, [&] {
        thread->Post(DriverCall::Setting, [&](IDriver&) { ++count; });
        EXPECT_TRUE(thread->Wait());
        EXPECT_EQ(count, 1);
        loop.quit();
    });
}

TEST_F(DriverThreadTest, WhatAnEventHandlerHasPostedIsCarriedOutWhenTheThreadEndsInIt) {
    auto thread = Start();
    AwaitIdle(*thread);
    int count = 0;
    QEventLoop loop;
    RunLoopWith(loop, [&] {
        thread->Post(DriverCall::Setting, [&](IDriver&) { ++count; });
        thread.reset();
        EXPECT_EQ(count, 1);
        loop.quit();
    });
}

TEST_F(DriverThreadTest, WhatAnEventHandlerPostsBehindACallThatHangsIsNotCarriedOut) {
    auto thread = Start(std::chrono::milliseconds(300));
    std::atomic<int> count = 0;
    thread->Post(DriverCall::Initialize, Hang());
    QEventLoop loop;
    QObject::connect(thread.get(), &DriverThread::GivenUp, &loop, &QEventLoop::quit);
    RunLoopWith(loop, [&] { thread->Post(DriverCall::Setting, [&](IDriver&) { ++count; }); });
    EXPECT_TRUE(thread->IsGivenUp());
    RunLoopWith(loop, [&] {
        thread->Post(DriverCall::Setting, [&](IDriver&) { ++count; });
        loop.quit();
    });
    Release();
    thread.reset();
    EXPECT_EQ(count, 0);
}

TEST_F(DriverThreadTest, CallsOfFourThreadsAreCarriedOutAtOnceAndInTheOrderOfEach) {
    constexpr int THREADS = 4;
    constexpr int CALLS = 1000;
    auto thread = Start();
    AwaitIdle(*thread);
    std::vector<std::vector<int>> orders(THREADS); // the driver's thread alone changes them
    std::promise<void> allCalled;
    int count = 0;
    QEventLoop loop;
    RunLoopWith(loop, [&] {
        std::vector<std::thread> posting;
        for (std::vector<int>& order : orders) {
            posting.emplace_back([&] {
                for (int i = 0; i < CALLS; ++i) {
                    thread->Post(DriverCall::Setting, [&, i](IDriver&) {
                        order.push_back(i);
                        if (++count == THREADS * CALLS) {
                            allCalled.set_value();
                        }
                    });
                }
            });
        }
        for (std::thread& each : posting) {
            each.join();
        }
        EXPECT_EQ(allCalled.get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready)
            << "without the loop of the main thread";
        loop.quit();
    });
    ASSERT_TRUE(thread->Wait());
    for (const std::vector<int>& order : orders) {
        EXPECT_EQ(order.size(), static_cast<std::size_t>(CALLS));
        EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    }
}
