#include "zancommon/progresscalculator.h"

#include "support/eventloop.h"

#include <QDeadlineTimer>
#include <QMetaMethod>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

using Percents = std::vector<uint>;

class ProgressCalculatorTest : public testing::Test {
protected:
    ProgressCalculatorTest() {
        QObject::connect(&m_calculator, &ProgressCalculator::Progress,
                         [this](uint percent) { m_percents.push_back(percent); });
    }

    [[nodiscard]] QTimer& Timer() const { return *m_calculator.findChild<QTimer*>(); }
    /// Lets time pass and carries out the tick at its end.
    void TickAfter(qint64 milliseconds) {
        m_now += milliseconds;
        QMetaObject::invokeMethod(&m_calculator, "SlotCalculateProgress", Qt::DirectConnection);
    }

    qint64 m_now = 123456;
    ProgressCalculator m_calculator{nullptr, [this] { return m_now; }};
    Percents m_percents;
};

TEST_F(ProgressCalculatorTest, FiveSecondsAreSignalledInFiveStepsAndEndWithoutASignal) {
    m_calculator.Start(5000);
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(Timer().isActive());
        TickAfter(1000);
    }
    EXPECT_EQ(m_percents, (Percents{20, 40, 60, 80, 100}));
    EXPECT_TRUE(Timer().isActive());
    TickAfter(1000);
    EXPECT_EQ(m_percents.size(), 5U);
    EXPECT_FALSE(Timer().isActive());
}

TEST_F(ProgressCalculatorTest, PercentIsCutToWholeNumbers) {
    m_calculator.Start(3000);
    TickAfter(1004);
    TickAfter(1004);
    TickAfter(1021); // 100.97
    EXPECT_EQ(m_percents, (Percents{33, 66, 100}));
    TickAfter(1); // 101
    EXPECT_EQ(m_percents.size(), 3U);
    EXPECT_FALSE(Timer().isActive());
}

TEST_F(ProgressCalculatorTest, TicksOnceASecond) {
    EXPECT_FALSE(Timer().isActive());
    m_calculator.Start(5000);
    EXPECT_EQ(Timer().interval(), 1000);
    EXPECT_FALSE(Timer().isSingleShot());
    EXPECT_EQ(Timer().parent(), &m_calculator);
}

TEST_F(ProgressCalculatorTest, StartOfZeroLeavesARunningCalculationUntouched) {
    m_calculator.Start(5000);
    TickAfter(1000);
    m_calculator.Start(0);
    EXPECT_TRUE(Timer().isActive());
    TickAfter(1000);
    EXPECT_EQ(m_percents, (Percents{20, 40}));
}

TEST_F(ProgressCalculatorTest, StartOfZeroStartsNothing) {
    m_calculator.Start(0);
    EXPECT_FALSE(Timer().isActive());
    TickAfter(1000);
    EXPECT_TRUE(m_percents.empty());
}

TEST_F(ProgressCalculatorTest, SecondStartBeginsFromZeroWithTheNewDuration) {
    m_calculator.Start(5000);
    TickAfter(3000);
    m_calculator.Start(10000);
    TickAfter(1000);
    EXPECT_EQ(m_percents, (Percents{60, 10}));
    EXPECT_TRUE(Timer().isActive());
}

TEST_F(ProgressCalculatorTest, CalculationCanBeStartedAgainAfterItsEnd) {
    m_calculator.Start(500);
    TickAfter(1000);
    EXPECT_FALSE(Timer().isActive());
    m_calculator.Start(2000);
    EXPECT_TRUE(Timer().isActive());
    TickAfter(1000);
    EXPECT_EQ(m_percents, Percents{50});
}

TEST_F(ProgressCalculatorTest, DurationShorterThanATickEndsAtTheFirstTickWithoutASignal) {
    m_calculator.Start(900);
    TickAfter(1000);
    EXPECT_TRUE(m_percents.empty());
    EXPECT_FALSE(Timer().isActive());
}

TEST_F(ProgressCalculatorTest, ProductOfElapsedTimeWrapsAt32Bits) {
    constexpr qint64 LAST_WHOLE = 42949672; // 4294967200 as a product
    m_calculator.Start(100000000);
    TickAfter(LAST_WHOLE);
    TickAfter(1);
    EXPECT_EQ(m_percents, (Percents{42, 0}));
}

TEST_F(ProgressCalculatorTest, PercentThatIsNegativeAsASignedNumberIsEmitted) {
    m_calculator.Start(1);
    TickAfter(30000000); // the product is 3000000000
    EXPECT_EQ(m_percents, Percents{3000000000U});
    EXPECT_TRUE(Timer().isActive());
}

TEST_F(ProgressCalculatorTest, MetaObjectHasTheSignalAndAPrivateSlot) {
    const QMetaObject& meta = ProgressCalculator::staticMetaObject;
    const QMetaMethod signal = meta.method(meta.indexOfSignal("Progress(uint)"));
    const QMetaMethod slot = meta.method(meta.indexOfSlot("SlotCalculateProgress()"));
    EXPECT_EQ(signal.methodType(), QMetaMethod::Signal);
    EXPECT_EQ(slot.methodType(), QMetaMethod::Slot);
    EXPECT_EQ(slot.access(), QMetaMethod::Private);
}

TEST(ProgressCalculator, RunsOnTheSystemClockAndItsTimer) {
    QObject parent;
    auto* calculator = new ProgressCalculator(&parent);
    EXPECT_EQ(calculator->parent(), &parent);
    Percents percents;
    QObject::connect(calculator, &ProgressCalculator::Progress,
                     [&](uint percent) { percents.push_back(percent); });
    calculator->Start(50000);
    ASSERT_TRUE(SpinUntil([&] { return !percents.empty(); }));
    EXPECT_GE(percents.front(), 2U);  // a tick lasts a second at least ...
    EXPECT_LE(percents.front(), 60U); // ... and the wait for it has an end
}

TEST(ProgressCalculator, TicksAreNeverEarlySoThatAHundredIsSignalled) {
    // Started at a hundred moments of a second: a timer that may round lets some of them come early.
    constexpr int COUNT = 100;
    constexpr uint DURATION_MS = 1000;
    struct Run {
        std::unique_ptr<ProgressCalculator> calculator;
        std::vector<qint64> times; // of the start and of the ticks
        Percents percents;
    };
    std::vector<Run> runs(COUNT);
    for (std::size_t i = 0; i < runs.size(); ++i) {
        Run& run = runs[i];
        run.calculator = std::make_unique<ProgressCalculator>(nullptr, [&run] {
            run.times.push_back(QDeadlineTimer::current().deadline());
            return run.times.back();
        });
        QObject::connect(run.calculator.get(), &ProgressCalculator::Progress,
                         [&run](uint percent) { run.percents.push_back(percent); });
        QTimer::singleShot(static_cast<int>(i) * 10, Qt::PreciseTimer, run.calculator.get(),
                           [&run] { run.calculator->Start(DURATION_MS); });
    }
    ASSERT_TRUE(SpinUntil(
        [&runs] { return std::ranges::all_of(runs, [](const Run& run) { return run.times.size() > 1; }); }));
    for (const Run& run : runs) {
        const qint64 elapsed = run.times[1] - run.times[0];
        EXPECT_GE(elapsed, 1000);
        // On a machine that was too busy the tick may have come after the time of the hundred.
        EXPECT_EQ(run.percents, elapsed < 1010 ? Percents{100} : Percents{}) << elapsed;
    }
}

TEST(ProgressCalculator, CanBeDestroyedWhileItRuns) {
    auto calculator = std::make_unique<ProgressCalculator>(nullptr);
    calculator->Start(5000);
    calculator.reset();
    QCoreApplication::processEvents();
}

} // namespace
