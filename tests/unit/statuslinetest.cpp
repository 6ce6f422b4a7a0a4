#include "zanstation/statusline.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const StatusLine::Clock::time_point START{1h};

} // namespace

TEST(StatusLine, SaysAtTheStartThatThereIsNoBearingYet) {
    StatusLine line;
    EXPECT_EQ(line.Describe({false, u"scan"_s, {}, 0, {}}, START), u"scan, no bearing yet"_s);
    EXPECT_EQ(line.Describe({false, u"scan"_s, {}, 0, {}}, START + 2s), u"scan, no bearing yet"_s);
}

TEST(StatusLine, HasTheRateOfTheBearingsSinceTheLineBefore) {
    StatusLine line;
    (void)line.Describe({false, u"scan"_s, {}, 0, {}}, START);
    EXPECT_EQ(line.Describe({false, u"scan"_s, 121.5e6, 25, {}}, START + 2s),
              u"scan, 121.5 MHz, 12.5 bearings/s"_s);
    EXPECT_EQ(line.Describe({false, u"ffm"_s, 145e6, 26, {}}, START + 3s), u"ffm, 145 MHz, 1.0 bearings/s"_s);
}

TEST(StatusLine, SaysThatNoBearingsComeAnyMore) {
    StatusLine line;
    (void)line.Describe({false, u"scan"_s, 121.5e6, 25, {}}, START);
    EXPECT_EQ(line.Describe({false, u"scan"_s, 121.5e6, 25, {}}, START + 2s),
              u"scan, 121.5 MHz, no bearings"_s);
}

TEST(StatusLine, HasNoRateWithoutATimeBetweenTwoLines) {
    StatusLine line;
    EXPECT_EQ(line.Describe({false, u"scan"_s, 121.5e6, 25, {}}, START), u"scan, 121.5 MHz"_s);
    EXPECT_EQ(line.Describe({false, u"scan"_s, 121.5e6, 26, {}}, START), u"scan, 121.5 MHz"_s);
}

TEST(StatusLine, EndsWithWhatIsWrong) {
    StatusLine line;
    EXPECT_EQ(line.Describe({false, u"scan"_s, {}, 0, {u""_s, u"no file"_s, u""_s, u"no line"_s}}, START),
              u"scan, no bearing yet; no file; no line"_s);
}

TEST(StatusLine, BeginsWithTheWarningThatTheDeviceIsSimulated) {
    StatusLine line;
    EXPECT_EQ(line.Describe({true, u"scan"_s, {}, 0, {}}, START),
              u"simulated device, scan, no bearing yet"_s);
}
