#include "zanserver/currentreading.h"

#include "support/printing.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString A = u"/dev/ttyUSB0"_s;
const QString B = u"/dev/ttyUSB1"_s;

class CurrentReadingTest : public testing::Test {
protected:
    using Reading = ZANServer::CurrentReading<int>;

    Reading m_reading{3s};
};

} // namespace

TEST_F(CurrentReadingTest, IsNothingBeforeTheFirstOne) {
    EXPECT_EQ(m_reading.Get(0s), std::nullopt);
    EXPECT_EQ(m_reading.GetAge(0s), std::nullopt);
    EXPECT_EQ(m_reading.GetRest(0s), std::nullopt);
    EXPECT_EQ(m_reading.GetReceiver(), QString());
}

TEST_F(CurrentReadingTest, IsTheLastOneUntilThatIsOlderThanTheLimit) {
    m_reading.Take(A, 1, 10, 5s);
    EXPECT_EQ(m_reading.Get(5s), 10);
    EXPECT_EQ(m_reading.GetAge(7s), 2s);
    EXPECT_EQ(m_reading.GetRest(7s), 1s);
    EXPECT_EQ(m_reading.Get(8s), 10) << "just as old as the limit";
    EXPECT_EQ(m_reading.Get(8001ms), std::nullopt);
    EXPECT_EQ(m_reading.GetAge(8001ms), std::nullopt);
    m_reading.Take(A, 2, 20, 9s);
    EXPECT_EQ(m_reading.Get(12s), 20);
}

TEST_F(CurrentReadingTest, WhoseTimeStandsStillIsNotANewOne) {
    for (const auto now : {0s, 1s, 2s, 3s}) {
        m_reading.Take(A, 1000, 10 + static_cast<int>(now.count()), now);
        EXPECT_EQ(m_reading.Get(now), 10);
    }
    for (const auto now : {4s, 5s, 60s, 3600s}) {
        m_reading.Take(A, 1000, 20, now);
        EXPECT_EQ(m_reading.Get(now), std::nullopt) << "however long it goes on";
    }
    m_reading.Take(A, 1001, 30, 3601s);
    EXPECT_EQ(m_reading.Get(3601s), 30);
}

TEST_F(CurrentReadingTest, WithoutATimeIsANewOneWheneverItArrives) {
    m_reading.Take(A, {}, 10, 0s);
    m_reading.Take(A, {}, 20, 2s);
    EXPECT_EQ(m_reading.Get(5s), 20);
}

TEST_F(CurrentReadingTest, WhoseTimeGoesBackIsALateOneUntilTheLastHasAgedOut) {
    m_reading.Take(A, 5000, 10, 0s);
    m_reading.Take(A, 4000, 20, 1s);
    EXPECT_EQ(m_reading.Get(1s), 10);
    m_reading.Take(A, 6000, 30, 2s);
    EXPECT_EQ(m_reading.Get(2s), 30);
    // The receiver corrects its clock.
    m_reading.Take(A, 100, 40, 3s);
    EXPECT_EQ(m_reading.Get(3s), 30);
    m_reading.Take(A, 200, 50, 5001ms);
    EXPECT_EQ(m_reading.Get(5001ms), 50);
    m_reading.Take(A, 300, 60, 6s);
    EXPECT_EQ(m_reading.Get(6s), 60);
}

TEST_F(CurrentReadingTest, WhoseTimeJumpsForwardIsANewOne) {
    m_reading.Take(A, 1000, 10, 0s);
    m_reading.Take(A, 1'000'000'000, 20, 1s);
    EXPECT_EQ(m_reading.Get(1s), 20);
}

TEST_F(CurrentReadingTest, OfTwoReceiversTheFirstIsKeptUntilItsLastReadingHasAgedOut) {
    m_reading.Take(A, 1000, 10, 0s);
    for (quint64 i = 0; i < 3; ++i) {
        m_reading.Take(B, 1500 + 1000 * i, 70, std::chrono::seconds(i) + 500ms);
        m_reading.Take(A, 2000 + 1000 * i, 20, std::chrono::seconds(i + 1));
        EXPECT_EQ(m_reading.Get(std::chrono::seconds(i + 1)), 20);
        EXPECT_EQ(m_reading.GetReceiver(), A);
    }
    m_reading.Take(B, 9000, 70, 6s); // A's last one came at 3 s
    EXPECT_EQ(m_reading.Get(6s), 20);
    m_reading.Take(B, 10000, 71, 6001ms);
    EXPECT_EQ(m_reading.Get(6001ms), 71);
    m_reading.Take(A, 11000, 30, 7s);
    EXPECT_EQ(m_reading.Get(7s), 71) << "A is back, and B is kept";
    EXPECT_EQ(m_reading.GetReceiver(), B);
}

TEST_F(CurrentReadingTest, ReceiverWhoseTimeHasLongStoodStillDoesNotTakeOver) {
    m_reading.Take(A, 1000, 10, 0s);
    m_reading.Take(B, 77, 70, 1s);
    m_reading.Take(B, 77, 70, 5s);
    EXPECT_EQ(m_reading.Get(5s), std::nullopt);
}

TEST_F(CurrentReadingTest, ThatTheReceiverHasLostIsNoneAtOnceAndTheReceiverIsKept) {
    m_reading.Take(A, 1000, 10, 0s);
    m_reading.Lose(B);
    EXPECT_EQ(m_reading.Get(1s), 10) << "it is not B's";
    m_reading.Lose(A);
    EXPECT_EQ(m_reading.Get(1s), std::nullopt);
    m_reading.Take(B, 1000, 70, 2s);
    EXPECT_EQ(m_reading.Get(2s), std::nullopt);
    m_reading.Take(A, 2000, 20, 3s);
    EXPECT_EQ(m_reading.Get(3s), 20);
    m_reading.Lose(A);
    m_reading.Take(B, 9000, 71, 6001ms);
    EXPECT_EQ(m_reading.Get(6001ms), 71);
}

TEST_F(CurrentReadingTest, OnlyTheNamedReceiverCounts) {
    Reading reading(3s, B);
    reading.Take(A, 1000, 10, 0s);
    EXPECT_EQ(reading.Get(0s), std::nullopt);
    EXPECT_FALSE(reading.Listens(A, 0s));
    EXPECT_TRUE(reading.Listens(B, 0s));
    reading.Take(B, 1000, 70, 1s);
    reading.Take(A, 9000, 10, 5s);
    EXPECT_EQ(reading.Get(1s), 70);
    EXPECT_EQ(reading.Get(5s), std::nullopt) << "no other one takes over";
}

TEST_F(CurrentReadingTest, ThousandsOfNamesDoNotKeepAReceiverFromBeingHeard) {
    for (int i = 0; i < 5000; ++i) {
        m_reading.Take(QString::number(i), 1000, i, 0s);
    }
    EXPECT_EQ(m_reading.Get(0s), 0);
    m_reading.Take(u"0"_s, 2000, 10, 1s);
    EXPECT_EQ(m_reading.Get(1s), 10);
}
