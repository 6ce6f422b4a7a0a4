#include "zanserver/drivererrands.h"

#include "support/fakedevice.h"
#include "support/printing.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <future>
#include <optional>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using KvZANCommon::IDriver;

namespace {

class DriverErrandsTest : public testing::Test {
protected:
    void Settle() {
        m_thread.Wait();
        QCoreApplication::processEvents();
    }

    FakeDevice m_device;
    DriverThread m_thread{[this] { return std::make_unique<FakeDriver>(m_device); },
                          std::make_shared<DriverReceiver>(u"device"_s)};
    std::optional<DriverErrands> m_errands{m_thread};
};

/// An errand that notes where it is carried out and answered, and when it is gone.
class NotedErrand final : public DriverErrand {
public:
    explicit NotedErrand(std::atomic<int>& living)
        : m_living(living) {
        ++m_living;
    }
    ~NotedErrand() override { --m_living; }

    void CarryOut(IDriver& driver) override {
        carriedOutOn = QThread::currentThread();
        driver.SearchHold();
    }
    void TakeAnswer() override {
        answeredOn = QThread::currentThread();
        ++answers;
    }

    QThread* carriedOutOn = nullptr;
    QThread* answeredOn = nullptr;
    int answers = 0;

private:
    std::atomic<int>& m_living;
};

} // namespace

TEST_F(DriverErrandsTest, ErrandIsCarriedOutOnTheDriversThreadAndAnsweredOnTheMainThread) {
    std::atomic<int> living = 0;
    auto errand = std::make_unique<NotedErrand>(living);
    NotedErrand& sent = *errand;
    m_errands->Keep(std::move(errand));
    for (int i = 0; i < 2; ++i) {
        m_errands->Send(DriverCall::Setting, sent);
        Settle();
    }
    EXPECT_EQ(m_device.TakeCalls().size(), 2);
    EXPECT_EQ(sent.answers, 2);
    EXPECT_EQ(sent.answeredOn, QThread::currentThread());
    EXPECT_NE(sent.carriedOutOn, QThread::currentThread());
    m_errands.reset();
    EXPECT_EQ(living, 0);
}

TEST_F(DriverErrandsTest, ErrandThatIsNotAnsweredWhenTheThreadHasEndedIsGoneWithTheErrands) {
    std::atomic<int> living = 0;
    auto errand = std::make_unique<NotedErrand>(living);
    NotedErrand& sent = *errand;
    m_errands->Keep(std::move(errand));
    m_errands->Send(DriverCall::Setting, sent);
    EXPECT_TRUE(m_thread.End());
    EXPECT_EQ(m_device.TakeCalls().size(), 1);
    m_errands.reset();
    EXPECT_EQ(living, 0);
}

TEST_F(DriverErrandsTest, CallThatThrowsIsAnsweredToo) {
    bool isAnswered = false;
    m_errands->Call(
        DriverCall::Query, [](IDriver&) { throw 1; }, [&] { isAnswered = true; });
    Settle();
    EXPECT_TRUE(isAnswered);
}

TEST_F(DriverErrandsTest, NothingIsAnsweredWhenTheyAreGoneAndTheLastErrandTakesWhatIsLeft) {
    std::atomic<int> living = 0;
    std::promise<void> release;
    m_thread.Post(DriverCall::Setting, [&](IDriver&) { release.get_future().wait(); });
    auto errand = std::make_unique<NotedErrand>(living);
    NotedErrand& sent = *errand;
    m_errands->Keep(std::move(errand));
    m_errands->Send(DriverCall::Setting, sent);
    bool isAnswered = false;
    m_errands->Call(
        DriverCall::Query, [](IDriver&) {}, [&] { isAnswered = true; });
    m_errands.reset();
    EXPECT_EQ(living, 1) << "the driver's thread is going to use it";
    release.set_value();
    Settle();
    EXPECT_FALSE(isAnswered);
    EXPECT_EQ(living, 0);
    EXPECT_EQ(m_device.TakeCalls(), QStringList{u"SearchHold"_s});
}

TEST_F(DriverErrandsTest, TextsOfDriversBecomeOneBoundedLine) {
    EXPECT_EQ(Bounded(u"  two\n\tlines  "_s), u"two lines"_s);
    EXPECT_EQ(Bounded(u"\x1b[31mred\x7f"_s), u"[31mred"_s) << "nothing that a terminal obeys";
    EXPECT_EQ(Bounded(QString(1000, u'x')).size(), 200);
    EXPECT_LE(Bounded(QString(1000, u'ä'), 99).toUtf8().size(), 99);
    EXPECT_EQ(Bounded(QString(), 10), QString());
}

TEST_F(DriverErrandsTest, FailureWithoutATextIsToldWithItsCode) {
    FakeDriver driver(m_device);
    EXPECT_EQ(TakeLastError(driver, -7), u"the driver refuses it with -7"_s);
    m_device.Refuse(u"SearchHold"_s, u"no search"_s);
    EXPECT_EQ(driver.SearchHold(), -2);
    EXPECT_EQ(TakeLastError(driver, -2), u"no search"_s);
    EXPECT_EQ(driver.GetLastError(), QString()) << "taken once";
}
