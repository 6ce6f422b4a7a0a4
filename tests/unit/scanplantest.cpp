#include "simulator/scanplan.h"

#include <gtest/gtest.h>

using namespace Simulator;
using namespace std::chrono_literals;

namespace {

/// VUHF with a realtime bandwidth of 10 MHz, and HF with 1 MHz.
Scenario ScenarioOf() {
    Scenario scenario;
    scenario.device.options = {OPTION_ZAN_HFR, OPTION_ZANTIDE_SR};
    scenario.device.converters = {CONVERTER_RCV03, CONVERTER_RCV01};
    scenario.device.antennas = {{QStringLiteral("PX115SR"), 0, -1, 0.0},
                                {QStringLiteral("PX104SR_L"), 1, -1, 0.0}};
    return scenario;
}

KvZANCommon::FreqRangeDefinition RangeOf(double start, double step, double stop) {
    return MakeRange({start, step, stop}, 0);
}

class ScanPlanTest : public testing::Test {
protected:
    [[nodiscard]] ScanPlan Plan() const { return {m_scenario.device, m_settings, EMODE_SCAN}; }

    const Scenario m_scenario = ScenarioOf();
    DeviceSettings m_settings = MakeInitialSettings(m_scenario);
};

} // namespace

TEST_F(ScanPlanTest, EachChannelIsMeasuredOnceInOrder) {
    m_settings.ranges = {RangeOf(118e6, 25e3, 137e6), RangeOf(156e6, 25e3, 162e6)};
    const ScanPlan plan = Plan();
    unsigned long channel = 0;
    for (const ScanPlan::Hop& hop : plan.GetHops()) {
        EXPECT_EQ(hop.firstChannel, channel);
        EXPECT_EQ(hop.firstFrequency, hop.range == 0 ? 118e6 + 25e3 * static_cast<double>(channel)
                                                     : 156e6 + 25e3 * static_cast<double>(channel - 761));
        channel += hop.count;
    }
    EXPECT_EQ(channel, 761U + 241U);
}

TEST_F(ScanPlanTest, AHopFitsIntoTheRealtimeBandwidth) {
    m_settings.ranges = {RangeOf(118e6, 25e3, 137e6)};
    const ScanPlan wide = Plan();
    ASSERT_EQ(wide.GetHops().size(), 2U);
    EXPECT_EQ(wide.GetHops()[0].path.sampleMode->realtimeBandwidth, 10e6);
    m_settings.ranges[0].GetDFSettings().realtimeBandwidth = 2e6;
    const ScanPlan narrow = Plan();
    EXPECT_GE(narrow.GetHops().size(), 10U);
    for (const ScanPlan::Hop& hop : narrow.GetHops()) {
        EXPECT_LE(hop.step * (hop.count - 1) + hop.resolution, 2e6);
    }
}

TEST_F(ScanPlanTest, SweepTimeFollowsTheSettings) {
    m_settings.ranges = {RangeOf(118e6, 25e3, 137e6)};
    m_settings.averageTime = 0.1;
    EXPECT_EQ(Plan().GetSweepTime(), 202ms); // two hops, and a millisecond to settle for each
    m_settings.averageTime = 0.02;
    EXPECT_EQ(Plan().GetSweepTime(), 42ms);
    m_settings.scanAveraging = 5;
    EXPECT_EQ(Plan().GetSweepTime(), 202ms);
    m_settings.ranges[0].SetAverageTime(50); // a range has its own
    EXPECT_EQ(Plan().GetSweepTime(), 502ms);
    m_settings.ranges[0].GetDFSettings().realtimeBandwidth = 5e6; // four hops
    EXPECT_EQ(Plan().GetSweepTime(), 1004ms);
}

TEST_F(ScanPlanTest, AFineResolutionTakesItsTime) {
    m_settings.averageTime = 0.0;
    m_settings.ranges = {RangeOf(118e6, 25e3, 119e6)};
    m_settings.ranges[0].GetDFSettings().realtimeBandwidth = 2e6;
    m_settings.ranges[0].GetDFSettings().resolutionBandwidth = 1000.0;
    EXPECT_EQ(Plan().GetSweepTime(), 3ms); // two periods of 1 kHz
    m_settings.ranges[0].GetDFSettings().measurementTime = 0.5;
    EXPECT_EQ(Plan().GetSweepTime(), 501ms);
}

TEST_F(ScanPlanTest, AveragesAreCounted) {
    m_settings.ranges = {RangeOf(118e6, 25e3, 119e6)};
    m_settings.ranges[0].GetDFSettings().measurementTime = 0.01;
    m_settings.averageTime = 0.1;
    m_settings.scanAveraging = 3;
    EXPECT_EQ(Plan().GetHops().at(0).averageCount, 30.0);
    m_settings.averageTime = 0.0;
    m_settings.scanAveraging = 1;
    EXPECT_EQ(Plan().GetHops().at(0).averageCount, 1.0);
}

TEST_F(ScanPlanTest, SkippedChannelsAreLeftOut) {
    m_settings.ranges = {RangeOf(118e6, 25e3, 119e6)};
    for (std::size_t channel = 10; channel <= 19; ++channel) {
        m_settings.skipped[channel] = true;
    }
    const ScanPlan plan = Plan();
    ASSERT_EQ(plan.GetHops().size(), 2U);
    EXPECT_EQ(plan.GetHops()[0].count, 10U);
    EXPECT_EQ(plan.GetHops()[1].firstChannel, 20U);
    EXPECT_EQ(plan.GetHops()[1].count, 21U);
}

TEST_F(ScanPlanTest, ARangeOverTwoAntennasIsMeasuredWithBoth) {
    m_settings.antennas[1].range = {300e3, 25e6};
    m_settings.antennas[0].range = {25.1e6, 1300e6};
    m_settings.ranges = {RangeOf(24e6, 25e3, 26e6)};
    const ScanPlan plan = Plan();
    EXPECT_EQ(plan.GetHops().front().path.antenna, 1U);
    EXPECT_EQ(plan.GetHops().back().path.antenna, 0U);
    for (const ScanPlan::Hop& hop : plan.GetHops()) {
        const double last = hop.firstFrequency + hop.step * (hop.count - 1);
        EXPECT_TRUE(last <= 25e6 || hop.firstFrequency >= 25.1e6);
    }
}

TEST_F(ScanPlanTest, ARangeMayHaveNumbersOfItsOwn) {
    m_settings.ranges = {RangeOf(118e6, 25e3, 119e6)};
    m_settings.ranges[0].SetFirstChannel(100);
    m_settings.ranges[0].SetLastChannel(140);
    const ScanPlan plan = Plan();
    EXPECT_EQ(plan.GetHops().at(0).firstChannel, 100U);
    EXPECT_EQ(plan.FindHop(120), 0U);
}

TEST_F(ScanPlanTest, WithoutRangesThereIsNothingToDo) {
    m_settings.ranges.clear();
    EXPECT_TRUE(Plan().GetHops().empty());
    EXPECT_EQ(Plan().GetSweepTime(), 0ms);
}

TEST_F(ScanPlanTest, TheStopFrequencyIsTheLastChannel) {
    EXPECT_EQ(ScanPlan::CountChannels(RangeOf(118e6, 25e3, 119e6)), 41.0);
    EXPECT_EQ(ScanPlan::CountChannels(RangeOf(118e6, 8333.0 + 1.0 / 3.0, 118.025e6)), 4.0);
    EXPECT_EQ(ScanPlan::CountChannels(RangeOf(118e6, 25e3, 118e6)), 1.0);
}
