#include "zanstation/servicenotifier.h"

#include "support/eventloop.h"
#include "support/notifysocket.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <chrono>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// How long the service manager of these tests waits for a sign of life.
constexpr std::chrono::milliseconds WATCHDOG_TIME{20};

class ServiceNotifierTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_directory.isValid());
        qputenv("NOTIFY_SOCKET", SocketName());
        qunsetenv("WATCHDOG_USEC");
        qunsetenv("WATCHDOG_PID");
    }
    void TearDown() override { qunsetenv("NOTIFY_SOCKET"); }

    static void SetWatchdog() {
        qputenv("WATCHDOG_USEC",
                QByteArray::number(qint64{std::chrono::microseconds(WATCHDOG_TIME).count()}));
    }
    [[nodiscard]] QByteArray SocketName() const { return m_directory.filePath(u"notify"_s).toUtf8(); }

    QTemporaryDir m_directory;
    NotifySocket m_manager{SocketName()};
    QString m_status = u"fine"_s;
    ServiceNotifier m_notifier{[this] { return m_status; }};
};

} // namespace

TEST_F(ServiceNotifierTest, TellsNothingUntilItIsReadyAndThenReadinessAndStatus) {
    QCoreApplication::processEvents();
    EXPECT_EQ(m_manager.Take(), QByteArrayList());
    m_notifier.TellReady();
    EXPECT_EQ(m_manager.Take(), (QByteArrayList{"READY=1", "STATUS=fine"}));
}

TEST_F(ServiceNotifierTest, WritesToAnAbstractSocketToo) {
    const QByteArray name = "@zan-notify-" + QByteArray::number(QCoreApplication::applicationPid());
    NotifySocket manager(name);
    qputenv("NOTIFY_SOCKET", name);
    m_notifier.TellReady();
    EXPECT_EQ(manager.Take(), (QByteArrayList{"READY=1", "STATUS=fine"}));
    EXPECT_EQ(m_manager.Take(), QByteArrayList());
}

TEST_F(ServiceNotifierTest, SendsAStatusOnlyWhenItHasChanged) {
    m_notifier.TellReady();
    m_manager.Take();
    int asked = 0;
    QTimer::singleShot(ServiceNotifier::STATUS_INTERVAL + 1s, [&asked] { ++asked; });
    ASSERT_TRUE(SpinUntil([&asked] { return asked == 1; }));
    EXPECT_EQ(m_manager.Take(), QByteArrayList());
    m_status = u"worse"_s;
    QByteArrayList sent;
    ASSERT_TRUE(SpinUntil([&] { return !(sent = m_manager.Take()).isEmpty(); }));
    EXPECT_EQ(sent, QByteArrayList{"STATUS=worse"});
}

TEST_F(ServiceNotifierTest, StatusIsOneLineWhateverTheProblemSays) {
    m_status = u"bad file\nREADY=0\r\nSTOPPING=1"_s;
    m_notifier.TellReady();
    EXPECT_EQ(m_manager.Take(), (QByteArrayList{"READY=1", "STATUS=bad file READY=0 STOPPING=1"}));
}

TEST_F(ServiceNotifierTest, FeedsTheWatchdogFromTheEventLoopWhenTheManagerHasOne) {
    SetWatchdog();
    m_notifier.TellReady();
    m_manager.Take();
    int fed = 0;
    ASSERT_TRUE(SpinUntil([&] {
        const QByteArrayList sent = m_manager.Take();
        EXPECT_EQ(sent.count("WATCHDOG=1"), sent.size());
        fed += static_cast<int>(sent.size());
        return fed >= 5;
    }));
}

TEST_F(ServiceNotifierTest, LoopThatHangsDoesNotFeedTheWatchdog) {
    SetWatchdog();
    m_notifier.TellReady();
    ASSERT_TRUE(SpinUntil([&] { return m_manager.Take().contains("WATCHDOG=1"); }));
    // The time is the rule: the loop hangs for as long as many signs of life would take.
    std::this_thread::sleep_for(WATCHDOG_TIME * 20);
    EXPECT_EQ(m_manager.Take(), QByteArrayList());
}

TEST_F(ServiceNotifierTest, FeedsNoWatchdogWithoutOneAndNoneOfAnotherProcess) {
    for (const bool isForAnother : {false, true}) {
        if (isForAnother) {
            SetWatchdog();
            qputenv("WATCHDOG_PID", "1");
        }
        m_notifier.TellReady();
        m_manager.Take();
        // The time is the rule, as above.
        bool isOver = false;
        QTimer::singleShot(WATCHDOG_TIME * 20, [&isOver] { isOver = true; });
        ASSERT_TRUE(SpinUntil([&isOver] { return isOver; }));
        EXPECT_EQ(m_manager.Take(), QByteArrayList());
        m_notifier.TellStopping();
        m_manager.Take();
    }
}

TEST_F(ServiceNotifierTest, TellsOnceThatItIsStoppingAndNothingAfterwards) {
    SetWatchdog();
    m_notifier.TellReady();
    m_manager.Take();
    m_notifier.TellStopping();
    m_notifier.TellStopping();
    EXPECT_EQ(m_manager.Take(), QByteArrayList{"STOPPING=1"});
    // The time is the rule, as above.
    bool isOver = false;
    QTimer::singleShot(WATCHDOG_TIME * 20, [&isOver] { isOver = true; });
    ASSERT_TRUE(SpinUntil([&isOver] { return isOver; }));
    EXPECT_EQ(m_manager.Take(), QByteArrayList());
}

TEST_F(ServiceNotifierTest, ReadinessForWhichThereWasNoRoomGoesWithTheNextMessageAndTheStatusFollows) {
    SetWatchdog();
    m_manager.Fill();
    m_notifier.TellReady();
    m_manager.Take();
    QByteArrayList sent;
    ASSERT_TRUE(SpinUntil([&] { return (sent += m_manager.Take()).contains("STATUS=fine"); }));
    EXPECT_EQ(sent.constFirst(), "READY=1\nWATCHDOG=1");
    EXPECT_FALSE(sent.mid(1).join().contains("READY")) << "once";
}

TEST_F(ServiceNotifierTest, EndForWhichThereWasNoRoomIsToldAgain) {
    {
        ServiceNotifier ending([] { return u"ready"_s; });
        ending.TellReady();
        m_manager.Fill();
        ending.TellStopping();
        m_manager.Take();
    }
    EXPECT_EQ(m_manager.Take(), QByteArrayList{"STOPPING=1\n"});
}

TEST_F(ServiceNotifierTest, TellsAtItsEndThatItIsStoppingIfItWasReady) {
    {
        const ServiceNotifier neverReady([] { return QString(); });
    }
    EXPECT_EQ(m_manager.Take(), QByteArrayList());
    {
        ServiceNotifier notifier([] { return u"ready"_s; });
        notifier.TellReady();
    }
    EXPECT_EQ(m_manager.Take().value(2), "STOPPING=1");
}

TEST_F(ServiceNotifierTest, WithoutAServiceManagerNothingIsSentAndNothingIsAsked) {
    qunsetenv("NOTIFY_SOCKET");
    SetWatchdog();
    int asked = 0;
    ServiceNotifier notifier([&asked] { return QString::number(++asked); });
    notifier.TellReady();
    EXPECT_LT(CountWakeUps(), FEW_WAKE_UPS) << "no timer turns";
    notifier.TellStopping();
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(m_manager.Take(), QByteArrayList());
}
