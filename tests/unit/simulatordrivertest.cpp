#include "simulator/simulatordriver.h"

#include "support/simulation.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;
using namespace KvZANCommon;
using Simulator::SimulatorDriver;

namespace {

constexpr long OK = SimulatorDriver::OK;
constexpr long FAILED = SimulatorDriver::FAILED;
constexpr long NOT_SUPPORTED = SimulatorDriver::NOT_SUPPORTED;

/// North of the station, 11 km away.
const QByteArray NORTH = R"({"name": "north", "frequency": 121.5e6, "power": 40,
                             "latitude": 55.1, "longitude": 5, "altitude": 1000})";
/// East of it, a little weaker.
const QByteArray EAST = R"({"name": "east", "frequency": 121.5e6, "power": 38,
                            "latitude": 55, "longitude": 5.2, "altitude": 1000})";

class SimulatorDriverTest : public SimulationTest {
protected:
    /// The first results in fixed frequency mode.
    std::vector<SimulationRecorder::Fixed> MeasureFixed(std::size_t count = 20) {
        EXPECT_EQ(m_driver.SetMode(EMODE_FFM), OK);
        EXPECT_TRUE(m_recorder.WaitForFixed(count));
        EXPECT_EQ(m_driver.SetMode(EMODE_STANDBY), OK);
        return m_recorder.fixed;
    }
    std::vector<SimulationRecorder::Block> MeasureBlocks(EMode mode, std::size_t count) {
        EXPECT_EQ(m_driver.SetMode(mode), OK);
        EXPECT_TRUE(m_recorder.WaitForBlocks(count));
        EXPECT_EQ(m_driver.SetMode(EMODE_STANDBY), OK);
        return m_recorder.blocks;
    }
    void Add(FreqRangeDefinition range) { EXPECT_EQ(m_driver.AddFreqRange(&range), OK); }
    long SetDF(const DFSettingsStruct& df, const DEMSettingsStruct& dem = {}) {
        double frequency = 0.0;
        EXPECT_EQ(m_driver.GetFrequency(frequency), OK);
        return m_driver.AlterMeasureSetting(frequency, df, dem);
    }
};

double Off(double azimuth, double wanted) {
    return std::abs(std::remainder(azimuth / 10.0 - wanted, 360.0));
}

/// The channels of a block in which something is heard.
std::vector<quint16> HeardIn(const SimulationRecorder::Block& block) {
    std::vector<quint16> channels;
    for (const Bearing& bearing : block.bearings) {
        if (bearing.quality > 0) {
            channels.push_back(bearing.channel);
        }
    }
    return channels;
}

} // namespace

TEST_F(SimulatorDriverTest, ItFindsTheEmitterToWhichItIsTuned) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    ASSERT_EQ(m_driver.SetFrequency(121.5e6), OK);
    for (const auto& [data, status, averaged] : MeasureFixed()) {
        EXPECT_LT(Off(data.azimuth, 0.0), 6.0);
        EXPECT_NEAR(data.elevation, 50, 120); // 980 m up, 11.1 km away
        EXPECT_NEAR(data.level, 4000 - 9510, 100);
        EXPECT_GT(data.quality, 50);
        EXPECT_EQ(data.frequency, 121.5e6);
        EXPECT_EQ(status.frequency, 121.5e6);
        EXPECT_TRUE(averaged);
    }
}

TEST_F(SimulatorDriverTest, ItHearsNothingOnAnotherFrequency) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    ASSERT_EQ(m_driver.SetFrequency(121.6e6), OK);
    for (const auto& fixed : MeasureFixed()) {
        EXPECT_EQ(fixed.data.quality, 0);
        EXPECT_EQ(fixed.data.elevation, Bearing::NOT_MEASURED);
    }
}

TEST_F(SimulatorDriverTest, BeyondTheHorizonItHearsNothing) {
    ASSERT_EQ(Open(Scenario(R"({"name": "far", "frequency": 121.5e6, "power": 80,
                                "latitude": 57, "longitude": 5, "altitude": 1000})")),
              OK);
    EXPECT_EQ(MeasureFixed().back().data.quality, 0);
}

TEST_F(SimulatorDriverTest, LevelFollowsDistanceAndPower) {
    const auto levelOf = [this](double latitude, int power) {
        m_recorder.fixed.clear();
        EXPECT_EQ(Open(Scenario(QStringLiteral(R"({"name": "a", "frequency": 121.5e6, "power": %1,
                                "latitude": %2, "longitude": 5, "altitude": 1000})")
                                    .arg(power)
                                    .arg(latitude)
                                    .toUtf8())),
                  OK);
        return MeasureFixed().back().data.level;
    };
    const int near = levelOf(55.1, 30);
    EXPECT_NEAR(levelOf(55.2, 30), near - 602, 40); // twice as far: 6 dB
    EXPECT_NEAR(levelOf(55.1, 40), near + 1000, 40);
}

TEST_F(SimulatorDriverTest, EmittersKeepTheirSchedule) {
    ASSERT_EQ(
        Open(Scenario(R"({"name": "a", "frequency": 121.5e6, "power": 40, "latitude": 55.1, "longitude": 5,
                                "altitude": 1000, "schedule": {"start": 1, "stop": 6, "on": 1, "off": 1}})")),
        OK);
    for (const auto& fixed : MeasureFixed(80)) {
        const double time = static_cast<double>(fixed.data.time - 1767268800000U) / 1000.0;
        const bool isOn =
            (time >= 1.0 && time < 2.0) || (time >= 3.0 && time < 4.0) || (time >= 5.0 && time < 6.0);
        EXPECT_EQ(fixed.data.quality > 0, isOn) << time;
    }
}

TEST_F(SimulatorDriverTest, AzimuthsCountFromTheBowWhereThereIsACompass) {
    ASSERT_EQ(Open("{" + Station(R"(, "heading": 100, "compasses": [{"type": "gyro"}])") + "," + Device() +
                   R"(, "emitters": [)" + NORTH + "]}"),
              OK);
    const auto last = MeasureFixed().back();
    EXPECT_NEAR(last.status.heading.value(), 100.0, 0.05);
    EXPECT_FALSE(last.status.magneticHeading);
    EXPECT_LT(Off(last.data.azimuth, 260.0), 6.0);
}

TEST_F(SimulatorDriverTest, AMagneticCompassSaysSo) {
    ASSERT_EQ(Open("{" + Station(R"(, "heading": 100, "declination": 4,
                                     "compasses": [{"type": "fluxgate", "magnetic": true}])") +
                   "," + Device() + R"(, "emitters": [)" + NORTH + "]}"),
              OK);
    const auto last = MeasureFixed().back();
    EXPECT_NEAR(last.status.heading.value(), 96.0, 0.05);
    EXPECT_TRUE(last.status.magneticHeading);
    EXPECT_LT(Off(last.data.azimuth, 260.0), 6.0);
    unsigned long value = 0;
    EXPECT_EQ(m_driver.ReadCompass(0, value), OK);
    EXPECT_EQ(value, 960U);
}

TEST_F(SimulatorDriverTest, WithoutACompassThereIsNoHeading) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    EXPECT_FALSE(MeasureFixed().back().status.heading);
}

TEST_F(SimulatorDriverTest, PositionAndAttitudeAreThoseOfTheStation) {
    ASSERT_EQ(Open("{" +
                   Station(R"(, "course": 0, "speed": 10, "motion": {"roll": {"amplitude": 5, "period": 9}},
                                     "compasses": [{"type": "gyro"}])") +
                   "," + Device() + "}"),
              OK);
    double highest = 0.0;
    for (const auto& fixed : MeasureFixed(100)) {
        const double time = static_cast<double>(fixed.data.time - 1767268800000U) / 1000.0;
        EXPECT_NEAR(fixed.status.latitude.value(), 55.0 + time * 10.0 / 111'200.0, 1e-5);
        EXPECT_EQ(fixed.status.altitude, 20.0);
        highest = std::max(highest, std::abs(fixed.status.roll.value()));
    }
    EXPECT_NEAR(highest, 5.0, 0.3);
    ASSERT_FALSE(m_recorder.fixes.empty());
    EXPECT_TRUE(m_recorder.fixes.front().valid);
    EXPECT_NEAR(m_recorder.fixes.front().latitude, 55.0, 0.001);
    GPSStruct fix;
    m_driver.GetGPSBuffer(fix);
    EXPECT_TRUE(fix.valid);
    EXPECT_EQ(fix.satelliteCount, 9);
}

TEST_F(SimulatorDriverTest, PositionsComeOnceASecond) {
    ASSERT_EQ(Open(Scenario()), OK);
    MeasureFixed(100);
    for (std::size_t i = 1; i < m_recorder.fixes.size(); ++i) {
        EXPECT_EQ(m_recorder.fixes[i].time / 1000, m_recorder.fixes[i - 1].time / 1000 + 1);
    }
    EXPECT_GE(m_recorder.fixes.size(), 10U);
}

TEST_F(SimulatorDriverTest, ThreeSatellitesMakeNoPosition) {
    ASSERT_EQ(Open("{" + Station(R"(, "gps": {"satellites": 3})") + "," + Device() + "}"), OK);
    EXPECT_FALSE(MeasureFixed().back().status.latitude);
    EXPECT_FALSE(m_recorder.fixes.at(0).valid);
}

TEST_F(SimulatorDriverTest, AScanGoesThroughAllChannelsAndFindsWhatIsThere) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    Add(Range(118e6, 25e3, 137e6, 3));
    const auto blocks = MeasureBlocks(EMODE_SCAN, 4);
    ASSERT_GE(blocks.size(), 4U);
    EXPECT_EQ(blocks[0].firstChannel, 0U);
    EXPECT_EQ(blocks[0].bearings.size() + blocks[1].bearings.size(), 761U);
    EXPECT_EQ(blocks[1].firstChannel, blocks[0].bearings.size());
    EXPECT_EQ(blocks[0].range, 3);
    EXPECT_EQ(HeardIn(blocks[0]), std::vector<quint16>{140}); // 118 MHz + 140 * 25 kHz
    EXPECT_TRUE(HeardIn(blocks[1]).empty());
    EXPECT_LT(Off(blocks[0].bearings[140].azimuth, 0.0), 6.0);
    EXPECT_EQ(blocks[0].status.frequency,
              118e6 + 25e3 * static_cast<double>(blocks[0].bearings.size() - 1) / 2.0);
    ASSERT_GE(m_recorder.endsOfScan.size(), 3U);
    EXPECT_FALSE(m_recorder.endsOfScan[0]);
    EXPECT_TRUE(m_recorder.endsOfScan[1]);
    EXPECT_FALSE(m_recorder.endsOfScan[2]);
}

TEST_F(SimulatorDriverTest, ASweepTakesTheTimeThatIsTold) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    Add(Range(118e6, 25e3, 137e6));
    ASSERT_EQ(m_driver.SetAverageTime(0.05), OK);
    long time = 0;
    ASSERT_EQ(m_driver.GetSweepTime(time), OK);
    EXPECT_EQ(time, 102);
    const auto blocks = MeasureBlocks(EMODE_SCAN, 21);
    EXPECT_EQ(blocks[20].time - blocks[0].time, 1020U);
}

TEST_F(SimulatorDriverTest, SkippedChannelsAreNotMeasured) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    Add(Range(121e6, 25e3, 122e6));
    ASSERT_EQ(m_driver.SetSkip(10, 30, true), OK);
    for (const auto& block : MeasureBlocks(EMODE_SCAN, 2)) {
        for (const Bearing& bearing : block.bearings) {
            EXPECT_TRUE(bearing.channel < 10 || bearing.channel > 30);
        }
    }
    ASSERT_EQ(m_driver.SetSkip(10, 30, false), OK);
    m_recorder.blocks.clear();
    EXPECT_EQ(MeasureBlocks(EMODE_SCAN, 1).front().bearings.size(), 41U);
}

TEST_F(SimulatorDriverTest, DeletedRangesAreNotMeasured) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    Add(Range(121e6, 25e3, 122e6));
    ASSERT_EQ(m_driver.DeleteAllChannels(), OK);
    long time = 0;
    EXPECT_EQ(m_driver.GetSweepTime(time), FAILED);
    Add(Range(130e6, 25e3, 131e6));
    EXPECT_NEAR(MeasureBlocks(EMODE_SCAN, 1).front().status.frequency, 130.5e6, 1.0);
}

TEST_F(SimulatorDriverTest, TheScenarioMayBringRanges) {
    ASSERT_EQ(Open("{" + Station() + "," +
                   Device(R"(, "ranges": [{"start": 121e6, "step": 25e3, "stop": 122e6}])") +
                   R"(, "emitters": [)" + NORTH + "]}"),
              OK);
    EXPECT_EQ(HeardIn(MeasureBlocks(EMODE_SCAN, 1).front()), std::vector<quint16>{20});
}

TEST_F(SimulatorDriverTest, WidebandHearsTheWholeRealtimeBandwidthAndNoMore) {
    ASSERT_EQ(Open(Scenario(NORTH + R"(, {"name": "edge", "frequency": 124.5e6, "power": 40, "latitude": 55,
                                          "longitude": 5.2, "altitude": 1000},
                                         {"name": "outside", "frequency": 127.5e6, "power": 40, "latitude": 55,
                                          "longitude": 5.2, "altitude": 1000})")),
              OK);
    ASSERT_EQ(m_driver.SetFrequency(121.5e6), OK);
    const auto block = MeasureBlocks(EMODE_WIDEBAND_FFM, 1).front();
    EXPECT_EQ(block.bearings.size(), 499U); // 10 MHz in channels of 20 kHz, the tuned frequency in the middle
    EXPECT_EQ(HeardIn(block), (std::vector<quint16>{249, 399}));
    EXPECT_EQ(block.status.frequency, 121.5e6);
    EXPECT_FALSE(m_recorder.spectra.empty());
}

TEST_F(SimulatorDriverTest, TheSpectrumShowsTheSignal) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    MeasureFixed();
    const std::vector<short>& spectrum = m_recorder.spectra.at(0);
    ASSERT_EQ(spectrum.size(), 1001U);
    const auto highest = std::ranges::max_element(spectrum) - spectrum.begin();
    EXPECT_NEAR(static_cast<double>(highest), 500.0, 2.0);
    EXPECT_GT(spectrum[500], spectrum[100] + 4000);
}

TEST_F(SimulatorDriverTest, SuperResolutionTellsTwoEmittersOnOneChannelApart) {
    ASSERT_EQ(Open(Scenario(NORTH + "," + EAST)), OK);
    DFSettingsStruct df;
    df.superResolution = true;
    ASSERT_EQ(SetDF(df), OK);
    MeasureFixed();
    const SuperResolutionStruct& result = m_recorder.resolved.at(0);
    ASSERT_EQ(result.emitters.size(), 2U);
    EXPECT_LT(Off(result.emitters[0].azimuth, 0.0), 4.0);
    EXPECT_LT(Off(result.emitters[1].azimuth, 90.0), 4.0);
    EXPECT_EQ(result.frequency, 121.5e6);
    EXPECT_EQ(m_recorder.azimuthSpectra.at(0).size(), 360U);
    EXPECT_EQ(m_recorder.resolved.size(), m_recorder.fixed.size());
}

TEST_F(SimulatorDriverTest, WithoutSuperResolutionThereIsOneBearingOfBoth) {
    ASSERT_EQ(Open(Scenario(NORTH + "," + EAST)), OK);
    const auto last = MeasureFixed().back();
    EXPECT_TRUE(m_recorder.resolved.empty());
    EXPECT_GT(last.data.azimuthSpread, 15);
}

TEST_F(SimulatorDriverTest, TheNumberOfEmittersCanBeSet) {
    ASSERT_EQ(Open(Scenario(NORTH + "," + EAST)), OK);
    DFSettingsStruct df;
    df.method = METHOD_SUPR;
    ASSERT_EQ(SetDF(df), OK);
    ASSERT_EQ(m_driver.SetSRNumOfEmitters(false, 1), OK);
    MeasureFixed();
    EXPECT_EQ(m_recorder.resolved.at(0).emitters.size(), 1U);
    EXPECT_EQ(m_driver.SetSRNumOfEmitters(false, 0), FAILED);
    EXPECT_EQ(m_driver.SetSRNumOfEmitters(false, 5), FAILED);
}

TEST_F(SimulatorDriverTest, ASearchStopsAtEverySignalOnce) {
    ASSERT_EQ(Open(Scenario(NORTH + R"(, {"name": "b", "frequency": 130e6, "power": 40, "latitude": 55,
                                          "longitude": 5.2, "altitude": 1000})")),
              OK);
    Add(Range(118e6, 25e3, 137e6));
    ASSERT_EQ(m_driver.SetHoldTime(1000, 0, 500), OK);
    ASSERT_EQ(m_driver.SetMode(EMODE_SEARCH), OK);
    ASSERT_TRUE(m_recorder.WaitUntil([this] { return m_recorder.found.size() >= 4; }));
    m_driver.SetMode(EMODE_STANDBY);
    EXPECT_EQ(m_recorder.found[0], 121.5e6);
    EXPECT_EQ(m_recorder.found[1], 130e6);
    EXPECT_EQ(m_recorder.found[2], 121.5e6);
    EXPECT_EQ(m_recorder.found[3], 130e6);
    for (const auto& fixed : m_recorder.fixed) {
        EXPECT_TRUE(fixed.data.frequency == 121.5e6 || fixed.data.frequency == 130e6);
    }
}

TEST_F(SimulatorDriverTest, ASearchHoldsASignalAsLongAsItIsThere) {
    ASSERT_EQ(
        Open(Scenario(R"({"name": "a", "frequency": 121.5e6, "power": 40, "latitude": 55.1, "longitude": 5,
                                "altitude": 1000, "schedule": {"on": 5, "off": 5}})")),
        OK);
    Add(Range(121e6, 25e3, 122e6));
    ASSERT_EQ(m_driver.SetHoldTime(0, 0, 300), OK);
    ASSERT_EQ(m_driver.SetMode(EMODE_SEARCH), OK);
    ASSERT_TRUE(m_recorder.WaitUntil([this] { return m_recorder.found.size() >= 2; }));
    m_driver.SetMode(EMODE_STANDBY);
    // Found after the first measurement; then 5 s of signal, and 0.3 s that it waits for its return.
    const quint64 begin = m_recorder.fixed.front().data.time;
    const auto after = std::ranges::find_if(
        m_recorder.fixed, [begin](const auto& each) { return each.data.time > begin + 6000; });
    ASSERT_NE(after, m_recorder.fixed.begin());
    EXPECT_NEAR(static_cast<double>((after - 1)->data.time - 1767268800000U), 5300.0, 150.0);
}

TEST_F(SimulatorDriverTest, AShortSignalIsNotTold) {
    ASSERT_EQ(Open(Scenario(
                  R"({"name": "short", "frequency": 121.1e6, "power": 40, "latitude": 55.1, "longitude": 5,
                                "altitude": 1000, "schedule": {"on": 0.3, "off": 2}},)" +
                  NORTH)),
              OK);
    Add(Range(121e6, 25e3, 122e6));
    ASSERT_EQ(m_driver.SetHoldTime(2000, 1000, 300), OK);
    ASSERT_EQ(m_driver.SetMode(EMODE_SEARCH), OK);
    ASSERT_TRUE(m_recorder.WaitUntil([this] { return m_recorder.found.size() >= 5; }));
    m_driver.SetMode(EMODE_STANDBY);
    EXPECT_EQ(std::ranges::count(m_recorder.found, 121.5e6), std::ssize(m_recorder.found));
}

TEST_F(SimulatorDriverTest, TheOperatorHoldsASearchAndSendsItOn) {
    ASSERT_EQ(Open(Scenario(NORTH + R"(, {"name": "b", "frequency": 121.75e6, "power": 40, "latitude": 55,
                                          "longitude": 5.2, "altitude": 1000})")),
              OK);
    Add(Range(121e6, 25e3, 122e6));
    ASSERT_EQ(m_driver.SetHoldTime(500, 0, 0), OK);
    ASSERT_EQ(m_driver.SearchHold(), OK);
    ASSERT_EQ(m_driver.SetMode(EMODE_SEARCH), OK);
    ASSERT_TRUE(m_recorder.WaitForFixed(50)); // 5 s, ten times the hold time
    EXPECT_TRUE(m_recorder.WaitUntil([this] { return m_recorder.found.size() == 1; }));
    ASSERT_EQ(m_driver.SearchContinue(25), OK); // behind the first signal
    ASSERT_TRUE(m_recorder.WaitUntil([this] { return m_recorder.found.size() >= 2; }));
    m_driver.SetMode(EMODE_STANDBY);
    EXPECT_EQ(m_recorder.found[0], 121e6);
    EXPECT_EQ(m_recorder.found[1], 121.75e6);
}

TEST_F(SimulatorDriverTest, TheSameScenarioGivesTheSameBearingsAtAnySpeed) {
    const auto measure = [](const QString& speed) {
        SimulationRecorder recorder;
        SimulatorDriver driver;
        driver.SetCallback(&recorder);
        std::string address = "ship";
        EXPECT_EQ(driver.Initialize(address, false), OK);
        EXPECT_EQ(driver.SetTest(u"speed "_s + speed), OK);
        driver.SetMode(EMODE_SCAN);
        EXPECT_TRUE(recorder.WaitForBlocks(60));
        driver.SetMode(EMODE_STANDBY);
        recorder.blocks.resize(60);
        return recorder.blocks;
    };
    const auto fast = measure(u"max"_s);
    const auto slow = measure(u"100"_s);
    for (std::size_t i = 0; i < fast.size(); ++i) {
        EXPECT_EQ(fast[i].time, slow[i].time);
        EXPECT_EQ(fast[i].bearings, slow[i].bearings);
        EXPECT_EQ(fast[i].status, slow[i].status);
    }
}

TEST_F(SimulatorDriverTest, AnotherSeedGivesOtherNoise) {
    ASSERT_EQ(Open(Scenario(NORTH, R"(, "seed": 1)")), OK);
    const auto first = MeasureFixed(10);
    m_recorder.fixed.clear();
    ASSERT_EQ(Open(Scenario(NORTH, R"(, "seed": 2)")), OK);
    const auto second = MeasureFixed(10);
    int same = 0;
    for (std::size_t i = 0; i < 10; ++i) {
        same += first[i].data == second[i].data ? 1 : 0;
    }
    EXPECT_LT(same, 2);
}

TEST_F(SimulatorDriverTest, ItRunsAtThePaceOfItsClock) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    ASSERT_EQ(m_driver.SetTest(u"speed 20"_s), OK);
    QElapsedTimer timer;
    timer.start();
    MeasureFixed(40); // 4 s
    EXPECT_GE(timer.elapsed(), 195);
}

TEST_F(SimulatorDriverTest, InStandbyNothingIsDeliveredAndTheClockStandsStill) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    MeasureFixed();
    unsigned long long before = 0;
    unsigned long long after = 0;
    ASSERT_EQ(m_driver.GetZANTime(before), OK);
    const std::size_t count = m_recorder.fixed.size();
    EXPECT_EQ(m_recorder.fixed.back().data.time, before);
    ASSERT_EQ(m_driver.GetZANTime(after), OK);
    EXPECT_EQ(after, before);
    EXPECT_EQ(m_recorder.fixed.size(), count);
    EXPECT_EQ(m_driver.GetReadCount(), static_cast<long>(count));
}

TEST_F(SimulatorDriverTest, WishesOfTheScenarioAreCarriedOutAtTheirTime) {
    ASSERT_EQ(Open(Scenario(NORTH, R"(, "wishes": [{"at": 1, "frequency": 122e6},
                                                   {"at": 2, "mode": "scan", "ranges": [
                                                    {"start": 121e6, "step": 25e3, "stop": 122e6}]}])")),
              OK);
    ASSERT_EQ(m_driver.SetMode(EMODE_FFM), OK);
    ASSERT_TRUE(m_recorder.WaitForBlocks(1));
    m_driver.SetMode(EMODE_STANDBY);
    for (const auto& fixed : m_recorder.fixed) {
        EXPECT_EQ(fixed.data.frequency, fixed.data.time <= 1767268801000U ? 121.5e6 : 122e6);
    }
    EXPECT_EQ(m_recorder.fixed.size(), 20U);
    EXPECT_EQ(m_recorder.blocks.front().bearings.size(), 41U);
}

TEST_F(SimulatorDriverTest, RangesThatTheApplicationCountsByAreNotChangedByTheScenario) {
    ASSERT_EQ(Open(Scenario(NORTH, R"(, "wishes": [{"at": 0, "ranges": [
                                                    {"start": 121e6, "step": 25e3, "stop": 122e6}]}])")),
              OK);
    KvZANCommon::FreqRangeDefinition range;
    range.SetStartFreq(121.4e6);
    range.SetStopFreq(121.6e6);
    range.SetStepFreq(25e3);
    ASSERT_EQ(m_driver.AddFreqRange(&range), OK);
    ASSERT_EQ(m_driver.SetMode(EMODE_SCAN), OK);
    ASSERT_TRUE(m_recorder.WaitForBlocks(1));
    m_driver.SetMode(EMODE_STANDBY);
    EXPECT_EQ(m_recorder.blocks.front().bearings.size(), 9U);
    EXPECT_EQ(m_recorder.errors,
              QStringList{u"ranges or bandwidth that the scenario wishes are left out: others were set"_s});
}

TEST_F(SimulatorDriverTest, EachCommandIsToldOnce) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    m_recorder.commands.clear();
    m_driver.SetFrequency(122e6);
    m_driver.SetAudioVolume(30);
    m_driver.SetMode(EMODE_TDMA); // refused, and told all the same
    m_driver.SetMode(EMODE_STANDBY);
    EXPECT_EQ(m_recorder.commands,
              QStringList({u"frequency 122000000 Hz"_s, u"volume 30"_s, u"mode 6"_s, u"mode standby"_s}));
}

TEST_F(SimulatorDriverTest, WhatTheDeviceDoesNotHaveIsNotSupported) {
    ASSERT_EQ(Open(Scenario()), OK);
    unsigned long long time = 0;
    GSMSettingsStruct gsm;
    EXPECT_EQ(m_driver.SetMode(EMODE_TDMA), NOT_SUPPORTED);
    EXPECT_EQ(m_driver.SetExternalReference(true), NOT_SUPPORTED);
    EXPECT_EQ(m_driver.SetSyncTimes(time, 1), NOT_SUPPORTED);
    EXPECT_EQ(m_driver.SetGSMSetting(900e6, nullptr, gsm), NOT_SUPPORTED);
    EXPECT_EQ(m_driver.FcbSynch(), NOT_SUPPORTED);
    EXPECT_EQ(m_driver.SetSyncTrigger(true), NOT_SUPPORTED);
    EXPECT_FALSE(m_driver.StartDRData(true, 0));
}

TEST_F(SimulatorDriverTest, WhatItCannotDoIsRefusedWithAReason) {
    ASSERT_EQ(Open(Scenario()), OK);
    EXPECT_EQ(m_driver.SetFrequency(2e9), FAILED);
    EXPECT_EQ(m_driver.GetLastError(), u"no antenna serves 2000000000 Hz");
    m_driver.ClearLastError();
    EXPECT_TRUE(m_driver.GetLastError().isEmpty());
    EXPECT_EQ(m_driver.SetFrequency(std::nan("")), FAILED);
    EXPECT_EQ(m_driver.SetAverageTime(-1.0), FAILED);
    EXPECT_EQ(m_driver.SetAudioVolume(101), FAILED);
    EXPECT_EQ(m_driver.SetRfAttenuator(2, 10), FAILED);
    EXPECT_EQ(m_driver.SetRfAttenuator(0, 61), FAILED);
    EXPECT_EQ(m_driver.SetGainControl({u"loud"_s, -1, -1.0}), FAILED);
    EXPECT_EQ(m_driver.SetScanAveraging(0), FAILED);
    EXPECT_EQ(m_driver.SetHoldTime(-1, 0, 0), FAILED);
    EXPECT_EQ(m_driver.SetSkip(5, 4, true), FAILED);
    EXPECT_EQ(m_driver.SetSkip(0, 60'000, true), FAILED);
    EXPECT_EQ(m_driver.AddFreqRange(nullptr), FAILED);
    auto backwards = Range(130e6, 25e3, 120e6);
    EXPECT_EQ(m_driver.AddFreqRange(&backwards), FAILED);
    auto stepless = Range(120e6, 0.0, 130e6);
    EXPECT_EQ(m_driver.AddFreqRange(&stepless), FAILED);
    auto endless = Range(120e6, 1.0, 130e6);
    EXPECT_EQ(m_driver.AddFreqRange(&endless), FAILED);
    auto outside = Range(120e6, 1e6, 1400e6);
    EXPECT_EQ(m_driver.AddFreqRange(&outside), FAILED);
    DFSettingsStruct df;
    df.method = METHOD_WAT; // which the antenna does not have
    EXPECT_EQ(SetDF(df), FAILED);
    EXPECT_EQ(m_driver.AlterMeasureSetting(99e6, {}, {}), FAILED);
}

TEST_F(SimulatorDriverTest, NotMoreChannelsThanThereAreAreTaken) {
    ASSERT_EQ(Open(Scenario()), OK);
    Add(Range(100e6, 10e3, 699.98e6)); // 59999 channels
    auto one = Range(120e6, 25e3, 120e6, 1);
    auto two = Range(120e6, 25e3, 120.025e6, 2);
    EXPECT_EQ(m_driver.AddFreqRange(&two), FAILED);
    EXPECT_EQ(m_driver.AddFreqRange(&one), OK);
    EXPECT_EQ(m_driver.GetMaxChannelCount(EMODE_SCAN), 60'000);
    EXPECT_EQ(m_driver.GetMaxChannelCount(EMODE_TDMA), 0);
}

TEST_F(SimulatorDriverTest, NumbersOfChannelsHaveSixteenBits) {
    ASSERT_EQ(Open(Scenario()), OK);
    auto numbered = Range(120e6, 25e3, 121e6); // 41 channels
    numbered.SetFirstChannel(65'496);
    numbered.SetLastChannel(65'536);
    EXPECT_EQ(m_driver.AddFreqRange(&numbered), FAILED);
    numbered.SetFirstChannel(65'495);
    EXPECT_EQ(m_driver.AddFreqRange(&numbered), OK);
    auto behind = Range(122e6, 25e3, 122e6, 1);
    EXPECT_EQ(m_driver.AddFreqRange(&behind), FAILED);
    EXPECT_EQ(MeasureBlocks(EMODE_SCAN, 1).front().bearings.back().channel, 65'535);
}

TEST_F(SimulatorDriverTest, TimesWithoutEndAreRefused) {
    ASSERT_EQ(Open(Scenario()), OK);
    auto range = Range(120e6, 25e3, 121e6);
    range.GetDFSettings().averageTime = 1e300;
    EXPECT_EQ(m_driver.AddFreqRange(&range), FAILED);
    range.GetDFSettings().averageTime = -1.0;
    range.GetDFSettings().measurementTime = std::nan("");
    EXPECT_EQ(m_driver.AddFreqRange(&range), FAILED);
}

TEST_F(SimulatorDriverTest, WhatIsSetCanBeRead) {
    ASSERT_EQ(Open(Scenario()), OK);
    m_driver.SetFrequency(130e6);
    m_driver.SetAverageTime(0.3);
    m_driver.SetGainControl({u"manual"_s, 20, -1.0});
    m_driver.SetGPSTimeUsage(false);
    FilterSettingsStruct filter;
    filter.qualityMin = 40;
    m_driver.SetFilterSettings(filter);
    double number = 0.0;
    GainControlStruct gain;
    FilterSettingsStruct readFilter;
    bool use = true;
    EXPECT_EQ(m_driver.GetFrequency(number), OK);
    EXPECT_EQ(number, 130e6);
    EXPECT_EQ(m_driver.GetAverageTime(number), OK);
    EXPECT_EQ(number, 0.3);
    EXPECT_EQ(m_driver.GetGainControl(gain), OK);
    EXPECT_EQ(gain.attenuation, 20);
    EXPECT_EQ(m_driver.GetFilterSettings(readFilter), OK);
    EXPECT_EQ(readFilter, filter);
    EXPECT_EQ(m_driver.GetGPSTimeUsage(use), OK);
    EXPECT_FALSE(use);
}

TEST_F(SimulatorDriverTest, MeasureSettingsTellWhatTheDeviceMakesOfThem) {
    ASSERT_EQ(Open(Scenario()), OK);
    double frequency = 0.0;
    DFSettingsStruct df;
    DEMSettingsStruct dem;
    ASSERT_EQ(m_driver.GetMeasureSettings(frequency, df, dem), OK);
    EXPECT_EQ(frequency, 121.5e6);
    EXPECT_EQ(df.realtimeBandwidth, 2e6); // the only one for fixed frequency
    EXPECT_EQ(df.sampleMode, SAMPLEMODE_VUHF_2M);
    EXPECT_EQ(df.resolutionBandwidth, 10'000.0);
    EXPECT_EQ(df.method, METHOD_COR);
    df.resolutionBandwidth = 3000.0; // between 2 and 5 kHz
    ASSERT_EQ(SetDF(df), OK);
    ASSERT_EQ(m_driver.GetMeasureSettings(frequency, df, dem), OK);
    EXPECT_EQ(df.resolutionBandwidth, 2000.0);
}

TEST_F(SimulatorDriverTest, AntennasConvertersAndCompassesAreThoseOfTheScenario) {
    ASSERT_EQ(Open("{" +
                   Station(R"(, "compasses": [{"type": "gyro", "resolution": 0.5, "pitchRoll": false}])") +
                   "," + Device() + "}"),
              OK);
    AntennaPropertyStruct antenna;
    AntennaSubRangeStruct subRange;
    int count = 0;
    ASSERT_EQ(m_driver.GetAntennaProperty(0, antenna, subRange, count), OK);
    EXPECT_EQ(antenna.name, u"PX115SR");
    EXPECT_EQ(antenna.minFrequency, 20e6);
    EXPECT_EQ(antenna.maxFrequency, 1300e6);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(subRange.dfMethods, METHODDETAILED_COR | METHODDETAILED_SUPR);
    AntennaSetupStruct setup;
    ASSERT_EQ(m_driver.GetAntennaSetup(1, setup), OK);
    EXPECT_EQ(setup.range, std::pair(300e3, 30e6));
    EXPECT_EQ(setup.converterHandle, 1);
    EXPECT_EQ(setup.compassHandle, 0);
    ConverterSetupStruct converter;
    ASSERT_EQ(m_driver.GetConverterProperty(1, converter), OK);
    EXPECT_EQ(converter.type, CONVERTER_RCV01);
    EXPECT_EQ(converter.typeName, u"RCV01");
    ASSERT_EQ(m_driver.GetConverterSetup(1, converter), OK);
    EXPECT_TRUE(converter.enabled);
    CompassPropertyStruct compass;
    ASSERT_EQ(m_driver.GetCompassProperty(0, compass), OK);
    EXPECT_EQ(compass.typeName, u"gyro");
    EXPECT_EQ(compass.resolution, 0.5);
    EXPECT_FALSE(compass.pitchRollSupport);
    EXPECT_EQ(m_driver.GetAntennaProperty(2, antenna, subRange, count), FAILED);
    EXPECT_EQ(m_driver.GetAntennaSetup(2, setup), FAILED);
    EXPECT_EQ(m_driver.GetConverterProperty(2, converter), FAILED);
    EXPECT_EQ(m_driver.GetCompassProperty(1, compass), FAILED);
}

TEST_F(SimulatorDriverTest, AnAntennaIsUsedInTheRangeOfItsSetup) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    AntennaSetupStruct setup;
    ASSERT_EQ(m_driver.GetAntennaSetup(0, setup), OK);
    setup.range = {130e6, 1300e6};
    ASSERT_EQ(m_driver.SetAntennaSetup(setup), OK);
    EXPECT_EQ(m_driver.SetFrequency(121.5e6), FAILED);
    EXPECT_EQ(m_driver.SetFrequency(131e6), OK);
    setup.range = {10e6, 1300e6}; // more than the antenna has
    EXPECT_EQ(m_driver.SetAntennaSetup(setup), FAILED);
    setup.handle = 7;
    EXPECT_EQ(m_driver.SetAntennaSetup(setup), FAILED);
}

TEST_F(SimulatorDriverTest, AConverterThatIsOffServesNothing) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    ConverterSetupStruct setup;
    ASSERT_EQ(m_driver.GetConverterSetup(0, setup), OK);
    setup.enabled = false;
    ASSERT_EQ(m_driver.SetConverterSetup(setup), OK);
    EXPECT_EQ(m_driver.SetFrequency(121.5e6), FAILED);
    EXPECT_EQ(m_driver.SetFrequency(5e6), OK);
}

TEST_F(SimulatorDriverTest, AWrongMechanicalOffsetTurnsTheBearings) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    AntennaSetupStruct setup;
    ASSERT_EQ(m_driver.GetAntennaSetup(0, setup), OK);
    setup.mechanicalOffset += 30.0;
    ASSERT_EQ(m_driver.SetAntennaSetup(setup), OK);
    EXPECT_LT(Off(MeasureFixed().back().data.azimuth, 30.0), 6.0);
}

TEST_F(SimulatorDriverTest, AttenuationRaisesTheNoise) {
    ASSERT_EQ(Open(Scenario()), OK);
    const int before = MeasureFixed().back().data.level;
    ASSERT_EQ(m_driver.SetRfAttenuator(0, 20), OK);
    m_recorder.fixed.clear();
    EXPECT_NEAR(MeasureFixed().back().data.level, before + 2000, 500);
}

TEST_F(SimulatorDriverTest, AStrongSignalOverloadsTheReceiverUntilItIsAttenuated) {
    ASSERT_EQ(Open(Scenario(R"({"name": "near", "frequency": 121.5e6, "power": 70, "latitude": 55.005,
                                "longitude": 5, "altitude": 20})")),
              OK);
    EXPECT_TRUE(MeasureFixed().back().status.levelOverflow);
    ASSERT_EQ(m_driver.SetRfAttenuator(0, 30), OK);
    m_recorder.fixed.clear();
    EXPECT_FALSE(MeasureFixed().back().status.levelOverflow);
}

TEST_F(SimulatorDriverTest, AudioHasTheVolumeAndIsSilentBelowTheSquelch) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    const auto levelOf = [this](const DEMSettingsStruct& dem) {
        EXPECT_EQ(SetDF({}, dem), OK);
        m_recorder.fixed.clear();
        m_recorder.audioLevels.clear();
        MeasureFixed();
        return m_recorder.audioLevels.back();
    };
    DEMSettingsStruct dem;
    EXPECT_EQ(levelOf(dem), 0.0); // nothing is demodulated
    dem.demodulation = 1;
    EXPECT_EQ(levelOf(dem), 0.5);
    ASSERT_EQ(m_driver.SetAudioVolume(100), OK);
    EXPECT_EQ(levelOf(dem), 1.0);
    dem.squelch = -20;
    EXPECT_EQ(levelOf(dem), 0.0);
}

TEST_F(SimulatorDriverTest, ResetAverageBeginsAnew) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    ASSERT_EQ(m_driver.SetAverageTime(1.0), OK);
    const auto results = MeasureFixed(30);
    EXPECT_LT(results.front().data.averageCount, results[9].data.averageCount);
    EXPECT_EQ(results[15].data.averageCount, results[25].data.averageCount);
    ASSERT_EQ(m_driver.ResetAverage(), OK);
    m_recorder.fixed.clear();
    EXPECT_EQ(MeasureFixed(1).front().data.averageCount, results.front().data.averageCount);
}

TEST_F(SimulatorDriverTest, RangesKeepTheirChannelsWhenTheirSettingsChange) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    Add(Range(121e6, 25e3, 122e6, 4));
    auto changed = Range(121e6, 25e3, 122e6, 4);
    changed.GetDFSettings().levelThreshold = 0; // dBm: nothing is as strong
    ASSERT_EQ(m_driver.AlterMeasureSetting(&changed), OK);
    EXPECT_TRUE(HeardIn(MeasureBlocks(EMODE_SCAN, 1).front()).empty());
    auto other = Range(121e6, 25e3, 122e6, 5);
    EXPECT_EQ(m_driver.AlterMeasureSetting(&other), FAILED);
}

TEST_F(SimulatorDriverTest, ARangeHasAFilterOfItsOwn) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    Add(Range(121e6, 25e3, 122e6, 4));
    auto filtered = Range(121e6, 25e3, 122e6, 4);
    filtered.GetFilterSettings().azimuthFrom = 9000;
    filtered.GetFilterSettings().azimuthTo = 18'000;
    ASSERT_EQ(m_driver.SetFilterSettings(&filtered), OK);
    EXPECT_TRUE(HeardIn(MeasureBlocks(EMODE_SCAN, 1).front()).empty());
}

TEST_F(SimulatorDriverTest, ResetGivesBackWhatTheDeviceIsSwitchedOnWith) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    m_driver.SetFrequency(5e6);
    Add(Range(121e6, 25e3, 122e6));
    ASSERT_EQ(m_driver.Reset(), OK);
    double frequency = 0.0;
    long time = 0;
    EXPECT_EQ(m_driver.GetFrequency(frequency), OK);
    EXPECT_EQ(frequency, 121.5e6);
    EXPECT_EQ(m_driver.GetSweepTime(time), FAILED);
}

TEST_F(SimulatorDriverTest, HardwareAndTestsAreThoseOfTheScenario) {
    ASSERT_EQ(Open("{" + Station() + R"(, "device": {"type": "ZANTIDE", "converters": [{"type": "RCV03"}],
                   "antennas": [{"name": "PX115SR"}], "components": [
                   {"name": "DF unit", "serialNumber": "7", "version": "2.1"},
                   {"name": "antenna switch", "operational": false}]}})"),
              OK);
    QList<ComponentInfo*> components;
    ASSERT_EQ(m_driver.RequestHWStatus(&components), OK);
    ASSERT_EQ(components.size(), 2);
    EXPECT_EQ(*components[0], (ComponentInfo{u"DF unit"_s, u"7"_s, u"2.1"_s, true}));
    EXPECT_FALSE(components[1]->operational);
    qDeleteAll(components);
    long result = -1;
    ASSERT_EQ(m_driver.BIT(result, true, false), OK);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(m_recorder.testResults,
              QStringList({u"DF unit: no error"_s, u"antenna switch: does not work"_s}));
}

TEST_F(SimulatorDriverTest, ARepeatedTestReportsWhileTheDeviceMeasures) {
    ASSERT_EQ(Open(Scenario()), OK);
    long result = -1;
    ASSERT_EQ(m_driver.BIT(result, false, true), OK);
    EXPECT_EQ(result, 0);
    MeasureFixed(50);
    EXPECT_GE(m_recorder.testResults.size(), 4);
}

TEST_F(SimulatorDriverTest, ACompassIsAskedAndAligned) {
    ASSERT_EQ(
        Open("{" + Station(R"(, "heading": 100, "compasses": [{"type": "gyro"}])") + "," + Device() + "}"),
        OK);
    QString answer;
    ASSERT_EQ(m_driver.SendCompassCommand(0, u"ID?"_s, answer), OK);
    EXPECT_EQ(answer, u"gyro");
    ASSERT_EQ(m_driver.SendCompassCommand(0, u"HDG?"_s, answer), OK);
    EXPECT_EQ(answer, u"100.0");
    EXPECT_EQ(m_driver.SendCompassCommand(0, u"SINK"_s, answer), FAILED);
    EXPECT_EQ(m_driver.SendCompassCommand(1, u"ID?"_s, answer), FAILED);
    ASSERT_EQ(m_driver.SetCompassValue(1105), OK);
    unsigned long value = 0;
    ASSERT_EQ(m_driver.ReadCompass(0, value), OK);
    EXPECT_EQ(value, 1105U);
    EXPECT_EQ(m_driver.ReadCompass(1, value), FAILED);
    EXPECT_EQ(m_driver.SetCompassValue(3600), FAILED);
}

TEST_F(SimulatorDriverTest, ALostLinkEndsTheDeliveriesUntilItIsBack) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    ASSERT_EQ(m_driver.SetMode(EMODE_FFM), OK);
    ASSERT_EQ(m_driver.SetTest(u"fault lostlink on"_s), OK);
    ASSERT_TRUE(m_recorder.WaitUntil([this] { return m_recorder.closed == 1; }));
    EXPECT_EQ(m_recorder.errors, QStringList(u"the link to the device is lost"_s));
    const std::size_t count = m_recorder.fixed.size();
    EXPECT_EQ(m_driver.SetFrequency(122e6), FAILED);
    EXPECT_EQ(m_driver.SetMode(EMODE_FFM), FAILED);
    EXPECT_EQ(m_driver.GetLastError(), u"the link to the device is lost");
    std::string address = m_directory.filePath(u"scenario.json"_s).toStdString();
    EXPECT_EQ(m_driver.Initialize(address, false), FAILED);
    ASSERT_EQ(m_driver.SetTest(u"fault lostlink off"_s), OK);
    ASSERT_EQ(m_driver.Initialize(address, false), OK);
    ASSERT_EQ(m_driver.SetMode(EMODE_FFM), OK);
    EXPECT_TRUE(m_recorder.WaitForFixed(count + 5));
    EXPECT_EQ(m_driver.SetMode(EMODE_STANDBY), OK);
}

TEST_F(SimulatorDriverTest, ALinkThatTheScenarioLosesComesBackBehindTheFault) {
    ASSERT_EQ(Open(Scenario(NORTH, R"(, "faults": [{"kind": "lostlink", "at": 2, "for": 10}])")), OK);
    ASSERT_EQ(m_driver.SetMode(EMODE_FFM), OK);
    ASSERT_TRUE(m_recorder.WaitUntil([this] { return m_recorder.closed == 1; }));
    std::string address = m_directory.filePath(u"scenario.json"_s).toStdString();
    ASSERT_EQ(m_driver.Initialize(address, false), OK); // as fast as possible, the fault is over at once
    const std::size_t count = m_recorder.fixed.size();
    EXPECT_EQ(count, 20U);
    ASSERT_EQ(m_driver.SetMode(EMODE_FFM), OK);
    ASSERT_TRUE(m_recorder.WaitForFixed(count + 1));
    m_driver.SetMode(EMODE_STANDBY);
    EXPECT_EQ(m_recorder.fixed[count].data.time, 1767268812100U);
}

TEST_F(SimulatorDriverTest, AnOperationTellsThatTheLinkIsLostWhenNothingIsMeasured) {
    ASSERT_EQ(Open(Scenario(NORTH, R"(, "faults": [{"kind": "lostlink", "at": 0, "for": 10}])")), OK);
    EXPECT_EQ(m_driver.SetFrequency(122e6), FAILED);
    EXPECT_EQ(m_recorder.errors, QStringList(u"the link to the device is lost"_s));
    EXPECT_EQ(m_recorder.closed, 1);
    EXPECT_EQ(m_driver.SetFrequency(122e6), FAILED);
    EXPECT_EQ(m_recorder.closed, 1) << "once";
    std::string address = m_directory.filePath(u"scenario.json"_s).toStdString();
    ASSERT_EQ(m_driver.Initialize(address, false), OK);
    EXPECT_EQ(m_driver.SetFrequency(122e6), OK);
}

TEST_F(SimulatorDriverTest, ASeedBeginsTheScenarioAgainWithOtherNoise) {
    const auto measure = [this] {
        m_recorder.fixed.clear();
        std::vector<quint16> azimuths;
        for (const auto& fixed : MeasureFixed(30)) { // or more
            azimuths.push_back(fixed.data.azimuth);
        }
        azimuths.resize(30);
        return azimuths;
    };
    ASSERT_EQ(Open(Scenario(NORTH, R"(, "seed": 1)")), OK);
    const std::vector<quint16> ofTheScenario = measure();
    ASSERT_EQ(m_driver.SetTest(u"seed 2"_s), OK);
    const std::vector<quint16> other = measure();
    EXPECT_EQ(m_recorder.fixed.front().data.time, 1767268800100U);
    EXPECT_NE(other, ofTheScenario);
    ASSERT_EQ(m_driver.SetTest(u"seed 1"_s), OK);
    EXPECT_EQ(measure(), ofTheScenario);
}

TEST_F(SimulatorDriverTest, ASilentDeviceDeliversNothingAndGoesOn) {
    ASSERT_EQ(Open(Scenario(NORTH, R"(, "faults": [{"kind": "silence", "at": 1, "for": 2}])")), OK);
    bool isSilent = true;
    for (const auto& fixed : MeasureFixed(50)) {
        isSilent = isSilent && (fixed.data.time < 1767268801000U || fixed.data.time >= 1767268803000U);
    }
    EXPECT_TRUE(isSilent);
    EXPECT_EQ(m_recorder.closed, 0);
}

TEST_F(SimulatorDriverTest, ASlowDeviceTakesItsTime) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    ASSERT_EQ(m_driver.SetTest(u"fault slow on 0.05"_s), OK);
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(m_driver.SetFrequency(122e6), OK);
    EXPECT_GE(timer.elapsed(), 50);
    EXPECT_EQ(m_driver.SetTest(u"fault slow off"_s), OK);
}

TEST_F(SimulatorDriverTest, ACalibrationFailsWhileTheFaultIsThere) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    EXPECT_EQ(m_driver.Calibrate(0), OK);
    ASSERT_EQ(m_driver.SetTest(u"fault calibration on"_s), OK);
    EXPECT_EQ(m_driver.Calibrate(0), FAILED);
    EXPECT_EQ(m_recorder.errors, QStringList(u"the calibration of converter 0 has failed"_s));
    ASSERT_EQ(m_driver.SetTest(u"fault calibration off"_s), OK);
    EXPECT_EQ(m_driver.Calibrate(0), OK);
    EXPECT_EQ(m_driver.Calibrate(9), FAILED);
}

TEST_F(SimulatorDriverTest, OtherTestCommandsAreRefused) {
    ASSERT_EQ(Open(Scenario()), OK);
    for (const QString& command :
         {u""_s, u"speed"_s, u"speed 0"_s, u"speed -1"_s, u"speed nan"_s, u"speed fast"_s, u"fault fire on"_s,
          u"fault silence"_s, u"fault silence maybe"_s, u"fault silence on 3"_s, u"fault slow on x"_s,
          u"fault slow on 61"_s, u"seed"_s, u"seed -1"_s, u"seed x"_s}) {
        EXPECT_EQ(m_driver.SetTest(command), FAILED) << command.toStdString();
        EXPECT_FALSE(m_driver.GetLastError().isEmpty());
        m_driver.ClearLastError();
    }
}

TEST_F(SimulatorDriverTest, BeforeItIsOpenedItAnswersWithFailure) {
    double frequency = 0.0;
    EXPECT_EQ(m_driver.SetFrequency(121.5e6), FAILED);
    EXPECT_EQ(m_driver.GetFrequency(frequency), FAILED);
    EXPECT_EQ(m_driver.SetMode(EMODE_FFM), FAILED);
    EXPECT_EQ(m_driver.SetTest(u"seed 1"_s), FAILED);
    EXPECT_EQ(m_driver.SetMode(EMODE_STANDBY), OK);
    EXPECT_EQ(m_driver.GetReadCount(), 0);
}

TEST_F(SimulatorDriverTest, WithoutALinkNothingIsTakenAndNothingAnswered) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    ASSERT_EQ(m_driver.SetTest(u"fault lostlink on"_s), OK);
    m_recorder.commands.clear();
    auto range = Range(121e6, 25e3, 122e6);
    long number = 0;
    unsigned long value = 0;
    unsigned long long time = 0;
    double real = 0.0;
    bool flag = false;
    int count = 0;
    QString answer;
    GainControlStruct gain;
    FilterSettingsStruct filter;
    DFSettingsStruct df;
    DEMSettingsStruct dem;
    AntennaSetupStruct antenna;
    AntennaPropertyStruct property;
    AntennaSubRangeStruct subRange;
    ConverterSetupStruct converter;
    CompassPropertyStruct compass;
    QList<ComponentInfo*> components;
    const std::vector<long> commands{m_driver.SetMode(EMODE_FFM),
                                     m_driver.Reset(),
                                     m_driver.Calibrate(0),
                                     m_driver.BIT(number, false, false),
                                     m_driver.SetRfAttenuator(0, 0),
                                     m_driver.SetFrequency(121.5e6),
                                     m_driver.SetGainControl({u"auto"_s, -1, -1.0}),
                                     m_driver.SetFilterSettings(filter),
                                     m_driver.SetFilterSettings(&range),
                                     m_driver.SetAverageTime(0.1),
                                     m_driver.ResetAverage(),
                                     m_driver.AddFreqRange(&range),
                                     m_driver.SetGPSTimeUsage(true),
                                     m_driver.SetAntennaSetup(antenna),
                                     m_driver.SetConverterSetup(converter),
                                     m_driver.SetAudioVolume(0),
                                     m_driver.SetHoldTime(0, 0, 0),
                                     m_driver.SearchHold(),
                                     m_driver.SearchContinue(0),
                                     m_driver.AlterMeasureSetting(121.5e6, df, dem),
                                     m_driver.AlterMeasureSetting(&range),
                                     m_driver.DeleteAllChannels(),
                                     m_driver.SetSkip(0, 1, true),
                                     m_driver.SetSRNumOfEmitters(true, 0),
                                     m_driver.SetScanAveraging(1),
                                     m_driver.RequestHWStatus(&components),
                                     m_driver.SendCompassCommand(0, u"ID?"_s, answer),
                                     m_driver.SetCompassValue(0)};
    EXPECT_EQ(m_recorder.commands.size(), std::ssize(commands)); // each is told, and told once
    const std::vector<long> questions{m_driver.GetGPSTimeUsage(flag),
                                      m_driver.ReadCompass(0, value),
                                      m_driver.GetFrequency(real),
                                      m_driver.GetGainControl(gain),
                                      m_driver.GetMeasureSettings(real, df, dem),
                                      m_driver.GetFilterSettings(filter),
                                      m_driver.GetAverageTime(real),
                                      m_driver.GetAntennaProperty(0, property, subRange, count),
                                      m_driver.GetAntennaSetup(0, antenna),
                                      m_driver.GetConverterProperty(0, converter),
                                      m_driver.GetConverterSetup(0, converter),
                                      m_driver.GetCompassProperty(0, compass),
                                      m_driver.GetSweepTime(number),
                                      m_driver.GetZANTime(time)};
    EXPECT_EQ(std::ranges::count(commands, FAILED), std::ssize(commands));
    EXPECT_EQ(std::ranges::count(questions, FAILED), std::ssize(questions));
    EXPECT_TRUE(components.isEmpty());
    EXPECT_EQ(m_recorder.commands.size(), std::ssize(commands)); // who only asks is not told of
}

TEST_F(SimulatorDriverTest, SetupsThatDoNotFitTheDeviceAreRefused) {
    ASSERT_EQ(Open("{" + Station(R"(, "compasses": [{"type": "gyro"}])") + "," + Device() + "}"), OK);
    AntennaSetupStruct good;
    ASSERT_EQ(m_driver.GetAntennaSetup(0, good), OK);
    AntennaSetupStruct antenna = good;
    antenna.converterHandle = 2;
    EXPECT_EQ(m_driver.SetAntennaSetup(antenna), FAILED);
    antenna = good;
    antenna.compassHandle = 1;
    EXPECT_EQ(m_driver.SetAntennaSetup(antenna), FAILED);
    antenna = good;
    antenna.mechanicalOffset = std::nan("");
    EXPECT_EQ(m_driver.SetAntennaSetup(antenna), FAILED);
    ConverterSetupStruct converter;
    ASSERT_EQ(m_driver.GetConverterSetup(0, converter), OK);
    converter.attenuation = -1;
    EXPECT_EQ(m_driver.SetConverterSetup(converter), FAILED);
    converter.attenuation = 0;
    converter.type = CONVERTER_RCV01;
    EXPECT_EQ(m_driver.SetConverterSetup(converter), FAILED);
    converter.handle = 9;
    EXPECT_EQ(m_driver.SetConverterSetup(converter), FAILED);
    EXPECT_EQ(m_driver.GetConverterSetup(9, converter), FAILED);
    EXPECT_EQ(m_driver.SetGainControl({u"manual"_s, 61, -1.0}), FAILED);
    EXPECT_EQ(m_driver.SetScanAveraging(2), OK);
}

TEST_F(SimulatorDriverTest, AnAntennaWithoutSuperResolutionDoesNotGetIt) {
    ASSERT_EQ(Open("{" + Station() + R"(, "device": {"type": "ZANTIDE", "converters": [{"type": "RCV03"}],
                                                   "antennas": [{"name": "PX122"}]}})"),
              OK);
    DFSettingsStruct df;
    df.superResolution = true;
    EXPECT_EQ(SetDF(df), FAILED);
    EXPECT_EQ(m_driver.GetLastError(), u"the antenna for 121500000 Hz has no super resolution");
    EXPECT_EQ(m_driver.SetCompassValue(0), FAILED); // there is none
}

TEST_F(SimulatorDriverTest, ALinkThatIsLostForSecondsIsNotBackAtOnce) {
    ASSERT_EQ(Open(Scenario(NORTH, R"(, "faults": [{"kind": "lostlink", "at": 1, "for": 1e6}])")), OK);
    ASSERT_EQ(m_driver.SetMode(EMODE_FFM), OK);
    ASSERT_TRUE(m_recorder.WaitUntil([this] { return m_recorder.closed == 1; }));
    ASSERT_EQ(m_driver.SetTest(u"speed realtime"_s), OK);
    std::string address = m_directory.filePath(u"scenario.json"_s).toStdString();
    EXPECT_EQ(m_driver.Initialize(address, false), FAILED);
    EXPECT_EQ(m_driver.GetLastError(), u"the link to the device is lost");
}

TEST_F(SimulatorDriverTest, WhatHasNoChannelsDeliversNone) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    for (const EMode mode : {EMODE_SCAN, EMODE_SEARCH}) {
        m_recorder.fixes.clear();
        ASSERT_EQ(m_driver.SetMode(mode), OK);
        EXPECT_TRUE(m_recorder.WaitUntil([this] { return m_recorder.fixes.size() >= 5; }));
        m_driver.SetMode(EMODE_STANDBY);
    }
    EXPECT_TRUE(m_recorder.blocks.empty());
    EXPECT_TRUE(m_recorder.fixed.empty());
}

TEST_F(SimulatorDriverTest, AFrequencyWithoutAReceiverDeliversNothing) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    ConverterSetupStruct setup;
    ASSERT_EQ(m_driver.GetConverterSetup(0, setup), OK);
    setup.enabled = false;
    ASSERT_EQ(m_driver.SetConverterSetup(setup), OK);
    for (const EMode mode : {EMODE_FFM, EMODE_WIDEBAND_FFM}) {
        m_recorder.fixes.clear();
        ASSERT_EQ(m_driver.SetMode(mode), OK);
        EXPECT_TRUE(m_recorder.WaitUntil([this] { return m_recorder.fixes.size() >= 5; }));
        m_driver.SetMode(EMODE_STANDBY);
    }
    EXPECT_TRUE(m_recorder.blocks.empty());
    EXPECT_TRUE(m_recorder.fixed.empty());
}

TEST_F(SimulatorDriverTest, RangesWithoutNumberAreFoundByTheirFrequencies) {
    ASSERT_EQ(Open(Scenario(NORTH)), OK);
    Add(Range(121e6, 25e3, 122e6, -1));
    auto filtered = Range(121e6, 25e3, 122e6, -1);
    EXPECT_EQ(m_driver.SetFilterSettings(&filtered), OK);
    filtered.SetStopFreq(123e6);
    EXPECT_EQ(m_driver.SetFilterSettings(&filtered), FAILED);
    filtered.SetStepFreq(0.0);
    EXPECT_EQ(m_driver.AlterMeasureSetting(&filtered), FAILED);
}

TEST_F(SimulatorDriverTest, WithoutACallbackOrADeviceItSaysSo) {
    SimulatorDriver driver;
    std::string address;
    EXPECT_EQ(driver.Initialize(address, false), FAILED);
    EXPECT_EQ(driver.GetLastError(), u"there is no callback");
    EXPECT_EQ(driver.SetTest(u"fault silence on"_s), FAILED);
    EXPECT_EQ(driver.GetLastError(), u"the device is not open");
}

TEST_F(SimulatorDriverTest, ItSaysWhoItIs) {
    const DriverDescription description = SimulatorDriver::Describe();
    EXPECT_EQ(description.name, u"simulator");
    EXPECT_EQ(description.modes, QList<EMode>({EMODE_FFM, EMODE_WIDEBAND_FFM, EMODE_SCAN, EMODE_SEARCH}));
    EXPECT_EQ(OpenAt(description.addressExample), OK);
}

TEST_F(SimulatorDriverTest, AScenarioThatCannotBeReadIsRefused) {
    EXPECT_EQ(OpenAt(u"/nowhere/one.json"_s), FAILED);
    EXPECT_TRUE(m_driver.GetLastError().startsWith(u"/nowhere/one.json: "));
    EXPECT_EQ(m_driver.SetMode(EMODE_FFM), FAILED);
    EXPECT_EQ(OpenAt({}), OK); // the ship
}

TEST_F(SimulatorDriverTest, ItMayBeDestroyedWhileItMeasures) {
    SimulationRecorder recorder;
    {
        SimulatorDriver driver;
        driver.SetCallback(&recorder);
        std::string address;
        ASSERT_EQ(driver.Initialize(address, false), OK);
        ASSERT_EQ(driver.SetMode(EMODE_SCAN), OK);
    }
    SUCCEED();
}
