#include "simulator/bearingmeter.h"

#include "simulator/accuracy.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Simulator;

namespace {

constexpr double FREQUENCY = 120e6;
constexpr double RESOLUTION = 10'000.0;

Reception::Signal SignalOf(double level, double azimuth, double elevation = 10.0,
                           double frequency = FREQUENCY, double bandwidth = 6000.0) {
    return {frequency - bandwidth / 2.0, frequency + bandwidth / 2.0, std::pow(10.0, level / 10.0), azimuth,
            elevation};
}

BearingMeter::Setup SetupOf(double noiseLevel = -120.0) {
    BearingMeter::Setup setup;
    setup.resolution = RESOLUTION;
    setup.noise = std::pow(10.0, noiseLevel / 10.0);
    return setup;
}

std::vector<Bearing> Measure(const std::vector<Reception::Signal>& signals, const BearingMeter::Setup& setup,
                             std::size_t count = 1) {
    RandomNumbers random(1);
    BearingMeter meter(random);
    std::vector<Bearing> bearings;
    for (std::size_t i = 0; i < count; ++i) {
        Bearing bearing;
        meter.Measure(signals, FREQUENCY, RESOLUTION, setup, {&bearing, 1});
        bearings.push_back(bearing);
    }
    return bearings;
}

/// Root mean square of the angle to a direction, degrees.
double ErrorOf(const std::vector<Bearing>& bearings, double azimuth) {
    double sum = 0.0;
    for (const Bearing& bearing : bearings) {
        const double error = std::remainder(bearing.azimuth / 10.0 - azimuth, 360.0);
        sum += error * error;
    }
    return std::sqrt(sum / static_cast<double>(bearings.size()));
}

} // namespace

TEST(BearingMeter, ASignalIsFoundWhereItIs) {
    const std::vector<Bearing> bearings = Measure({SignalOf(-60.0, 71.5)}, SetupOf(), 1000);
    EXPECT_LT(ErrorOf(bearings, 71.5), 1.0);
    EXPECT_NEAR(bearings.front().level, -6000, 200);
    EXPECT_GT(bearings.front().quality, 80);
    EXPECT_EQ(bearings.front().marker, 0);
}

TEST(BearingMeter, AzimuthsAreWithinTheCircleAroundNorth) {
    for (const Bearing& bearing : Measure({SignalOf(-60.0, 0.0)}, SetupOf(), 1000)) {
        EXPECT_LT(bearing.azimuth, 3600);
        EXPECT_TRUE(bearing.azimuth < 100 || bearing.azimuth > 3500) << bearing.azimuth;
    }
}

TEST(BearingMeter, WhatIsBelowTheNoiseIsNotHeard) {
    for (const Bearing& bearing : Measure({SignalOf(-121.0, 71.5)}, SetupOf(-120.0), 100)) {
        EXPECT_EQ(bearing.quality, 0);
        EXPECT_EQ(bearing.elevation, Bearing::NOT_MEASURED);
        EXPECT_NEAR(bearing.level, -12'000, 310);
        EXPECT_LT(bearing.azimuth, 3600);
    }
}

TEST(BearingMeter, NoiseOfTheBearingFollowsTheLevel) {
    const double strong = ErrorOf(Measure({SignalOf(-60.0, 71.5)}, SetupOf(), 2000), 71.5);
    const double weak = ErrorOf(Measure({SignalOf(-105.0, 71.5)}, SetupOf(), 2000), 71.5);
    const double weakest = ErrorOf(Measure({SignalOf(-115.0, 71.5)}, SetupOf(), 2000), 71.5);
    EXPECT_LT(strong, weak);
    EXPECT_LT(1.5 * weak, weakest);
}

TEST(BearingMeter, AveragingMakesAWeakBearingBetter) {
    BearingMeter::Setup setup = SetupOf();
    const double single = ErrorOf(Measure({SignalOf(-115.0, 71.5)}, setup, 2000), 71.5);
    setup.averageCount = 100.0;
    const std::vector<Bearing> averaged = Measure({SignalOf(-115.0, 71.5)}, setup, 2000);
    EXPECT_LT(4.0 * ErrorOf(averaged, 71.5), single);
    EXPECT_EQ(averaged.front().averageCount, 100);
}

TEST(BearingMeter, SpreadIsTheDeviationOfTheAzimuth) {
    const std::vector<Bearing> bearings = Measure({SignalOf(-110.0, 71.5)}, SetupOf(), 5000);
    EXPECT_NEAR(bearings.front().azimuthSpread / 10.0, ErrorOf(bearings, 71.5), 0.3);
}

TEST(BearingMeter, QualityFallsWithTheSpread) {
    double sumOfStrong = 0.0;
    double sumOfWeak = 0.0;
    for (const Bearing& bearing : Measure({SignalOf(-60.0, 71.5)}, SetupOf(), 100)) {
        sumOfStrong += bearing.quality;
    }
    for (const Bearing& bearing : Measure({SignalOf(-115.0, 71.5)}, SetupOf(), 100)) {
        sumOfWeak += bearing.quality;
        EXPECT_GE(bearing.quality, 1);
    }
    EXPECT_GT(sumOfStrong, sumOfWeak + 1000.0);
}

TEST(BearingMeter, OneDegreeInDirectionIsManyInAzimuthNearTheZenith) {
    const double low = ErrorOf(Measure({SignalOf(-60.0, 71.5, 0.0)}, SetupOf(), 2000), 71.5);
    const double high = ErrorOf(Measure({SignalOf(-60.0, 71.5, 80.0)}, SetupOf(), 2000), 71.5);
    EXPECT_NEAR(high / low, 1.0 / std::cos(80.0 * 3.14159265 / 180.0), 0.6);
}

TEST(BearingMeter, WatsonWattHasNoElevation) {
    BearingMeter::Setup setup = SetupOf();
    EXPECT_NEAR(Measure({SignalOf(-60.0, 71.5, 40.0)}, setup).front().elevation, 400, 60);
    setup.method = METHOD_WAT;
    EXPECT_EQ(Measure({SignalOf(-60.0, 71.5, 40.0)}, setup).front().elevation, Bearing::NOT_MEASURED);
}

TEST(BearingMeter, AnElevationIsNotBelowTheHorizon) {
    for (const Bearing& bearing : Measure({SignalOf(-60.0, 71.5, -0.5)}, SetupOf(), 100)) {
        EXPECT_GE(bearing.elevation, 0);
        EXPECT_LT(bearing.elevation, 150);
    }
}

TEST(BearingMeter, AnArbitraryDirectionHasNoElevation) {
    const Bearing bearing = Measure({SignalOf(-119.9, 71.5, 40.0)}, SetupOf()).front();
    EXPECT_GT(bearing.quality, 0);
    EXPECT_EQ(bearing.elevation, Bearing::NOT_MEASURED);
}

TEST(BearingMeter, OfTwoInAChannelTheFarStrongerOneIsMeasured) {
    const std::vector<Bearing> bearings =
        Measure({SignalOf(-60.0, 71.5), SignalOf(-90.0, 200.0)}, SetupOf(), 500);
    EXPECT_LT(ErrorOf(bearings, 71.5), 2.5);
}

TEST(BearingMeter, TwoOfOneStrengthDisturbEachOther) {
    const Bearing alone = Measure({SignalOf(-60.0, 71.5)}, SetupOf()).front();
    const Bearing both = Measure({SignalOf(-60.0, 71.5), SignalOf(-60.5, 100.0)}, SetupOf()).front();
    EXPECT_GT(both.azimuthSpread, 5 * alone.azimuthSpread);
    EXPECT_LT(both.quality, alone.quality);
    EXPECT_NEAR(both.level, -5720, 150); // their powers are added
}

TEST(BearingMeter, SuperResolutionTellsThemApartTheStrongestFirst) {
    RandomNumbers random(1);
    BearingMeter meter(random);
    const std::vector<Reception::Signal> both{SignalOf(-70.0, 71.5), SignalOf(-60.0, 200.0),
                                              SignalOf(-130.0, 300.0)};
    const std::vector<Bearing> bearings = meter.Resolve(both, FREQUENCY, SetupOf(), 4);
    ASSERT_EQ(bearings.size(), 2U); // the third is below the noise
    EXPECT_NEAR(bearings[0].azimuth, 2000, 40);
    EXPECT_NEAR(bearings[1].azimuth, 715, 40);
    EXPECT_EQ(meter.Resolve(both, FREQUENCY, SetupOf(), 1).size(), 1U);
    EXPECT_TRUE(meter.Resolve({}, FREQUENCY, SetupOf(), 4).empty());
}

TEST(BearingMeter, AChannelHearsItsPartOfAWideSignal) {
    // 100 kHz wide, of which a channel of 10 kHz takes a tenth: 10 dB less.
    const Bearing bearing = Measure({SignalOf(-60.0, 71.5, 10.0, FREQUENCY, 100'000.0)}, SetupOf()).front();
    EXPECT_NEAR(bearing.level, -7000, 200);
}

TEST(BearingMeter, EachChannelHearsItsOwnSignals) {
    RandomNumbers random(1);
    BearingMeter meter(random);
    std::vector<Bearing> bearings(10);
    meter.Measure(std::vector{SignalOf(-60.0, 71.5, 10.0, FREQUENCY + 3 * RESOLUTION),
                              SignalOf(-60.0, 200.0, 10.0, FREQUENCY + 9 * RESOLUTION)},
                  FREQUENCY, RESOLUTION, SetupOf(), bearings);
    for (std::size_t i = 0; i < bearings.size(); ++i) {
        EXPECT_EQ(bearings[i].quality > 0, i == 3 || i == 9) << i;
    }
}

TEST(BearingMeter, OffsetTurnsTheAzimuth) {
    BearingMeter::Setup setup = SetupOf();
    setup.azimuthOffset = -100.0;
    EXPECT_NEAR(Measure({SignalOf(-60.0, 71.5)}, setup).front().azimuth, 3315, 40);
}

TEST(BearingMeter, WhatIsBelowTheThresholdIsRejected) {
    BearingMeter::Setup setup = SetupOf();
    setup.lowestLevel = -50.0;
    EXPECT_EQ(Measure({SignalOf(-60.0, 71.5)}, setup).front().quality, 0);
    setup.lowestLevel = -70.0;
    EXPECT_GT(Measure({SignalOf(-60.0, 71.5)}, setup).front().quality, 0);
}

TEST(BearingMeter, FilterTakesASectorFromNorth) {
    BearingMeter::Setup setup = SetupOf();
    setup.azimuthOffset = 180.0; // which the filter does not care about
    setup.filter.azimuthFrom = 35'000;
    setup.filter.azimuthTo = 1000; // across north
    EXPECT_GT(Measure({SignalOf(-60.0, 2.0)}, setup).front().quality, 0);
    EXPECT_GT(Measure({SignalOf(-60.0, 357.0)}, setup).front().quality, 0);
    EXPECT_EQ(Measure({SignalOf(-60.0, 20.0)}, setup).front().quality, 0);
    setup.filter.azimuthFrom = 1000;
    setup.filter.azimuthTo = 9000;
    EXPECT_GT(Measure({SignalOf(-60.0, 20.0)}, setup).front().quality, 0);
    EXPECT_EQ(Measure({SignalOf(-60.0, 357.0)}, setup).front().quality, 0);
}

TEST(BearingMeter, FilterTakesElevationQualityAndSpread) {
    BearingMeter::Setup setup = SetupOf();
    setup.filter.elevationTo = 3000;
    EXPECT_EQ(Measure({SignalOf(-60.0, 71.5, 60.0)}, setup).front().quality, 0);
    EXPECT_GT(Measure({SignalOf(-60.0, 71.5, 10.0)}, setup).front().quality, 0);
    setup.filter = {};
    setup.filter.qualityMin = 80;
    EXPECT_EQ(Measure({SignalOf(-118.0, 71.5)}, setup).front().quality, 0);
    setup.filter = {};
    setup.filter.azimuthSpreadMax = 200;
    EXPECT_EQ(Measure({SignalOf(-118.0, 71.5)}, setup).front().quality, 0);
    EXPECT_GT(Measure({SignalOf(-60.0, 71.5)}, setup).front().quality, 0);
}

TEST(Accuracy, LargerAperturesAreBetter) {
    const double small = Accuracy::GetDeviation(METHOD_WAT, 10.0, 1.0);
    const double large = Accuracy::GetDeviation(METHOD_COR, 10.0, 1.0);
    EXPECT_LT(large, small);
    EXPECT_LT(large, Accuracy::GetDeviation(METHOD_VEC, 10.0, 1.0));
}

TEST(Accuracy, NoAverageIsBetterThanTheMethod) {
    EXPECT_GT(Accuracy::GetDeviation(METHOD_COR, 1e9, 1e9), 0.5);
    EXPECT_LT(Accuracy::GetDeviation(METHOD_COR, 1e-9, 1.0), 105.0);
}

TEST(Accuracy, QualityIsWithinOneAndAHundred) {
    EXPECT_EQ(Accuracy::GetQuality(0.0), 100.0);
    EXPECT_EQ(Accuracy::GetQuality(180.0), 1.0);
    EXPECT_GT(Accuracy::GetQuality(1.0), Accuracy::GetQuality(5.0));
}
