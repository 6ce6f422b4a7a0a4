#include "kwbase/tolmos.h"

#include <gtest/gtest.h>

#include <chrono>

namespace {

unsigned long long WallClock() {
    using namespace std::chrono;
    return static_cast<unsigned long long>(
        duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count());
}

class StoppedClock : public ITolmOS {
public:
    [[nodiscard]] unsigned long long GetCurrentTime() const override { return 1234; }
    bool TranslateHostName(const QString&, QString&) const override { return false; }
};

TEST(TolmOS, TheClockIsTheMachinesInMillisecondsSince1970) {
    const unsigned long long before = WallClock();
    const unsigned long long now = TolmOS::Create().GetCurrentTime();
    const unsigned long long after = WallClock();
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
}

TEST(TolmOS, CreateGivesTheSameSystemEachTime) {
    EXPECT_EQ(&TolmOS::Create(), &TolmOS::Create());
}

TEST(TolmOS, AnotherSystemCanStandInForIt) {
    ITolmOS& real = TolmOS::Create();
    StoppedClock stopped;
    TolmOS::Replace(&stopped);
    EXPECT_EQ(&TolmOS::Create(), &stopped);
    EXPECT_EQ(TolmOS::Create().GetCurrentTime(), 1234U);
    TolmOS::Replace(nullptr);
    EXPECT_EQ(&TolmOS::Create(), &real);
}

} // namespace
