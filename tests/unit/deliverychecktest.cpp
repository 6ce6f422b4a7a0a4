#include "zanserver/deliverycheck.h"

#include "support/printing.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

constexpr qint16 UNUSABLE = -4000;
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

BearingBlock BlockOf(const Bearing& bearing) {
    BearingBlock block;
    block.status.frequency = 121.5e6;
    block.bearings = {bearing};
    return block;
}

/// What the check makes of the marker of a bearing.
qint16 MarkerOf(const Bearing& bearing) {
    BearingBlock block = BlockOf(bearing);
    const bool isTold = !DeliveryCheck().Check(block).isEmpty();
    EXPECT_EQ(isTold, block.bearings[0].marker == UNUSABLE);
    return block.bearings[0].marker;
}

} // namespace

TEST(DeliveryCheck, BearingsWithinTheirLimitsAreLeftAsTheyAre) {
    for (const quint16 azimuth : std::to_array<quint16>({0, 3599, 3600})) {
        EXPECT_EQ(MarkerOf({.azimuth = azimuth}), 0) << azimuth;
    }
    for (const qint16 elevation : {qint16{-900}, qint16{0}, qint16{900}, Bearing::NOT_MEASURED}) {
        EXPECT_EQ(MarkerOf({.elevation = elevation}), 0) << elevation;
    }
    EXPECT_EQ(MarkerOf({.quality = 100}), 0);
    EXPECT_EQ(MarkerOf({.marker = 7, .quality = 50}), 7) << "the driver's own";
}

TEST(DeliveryCheck, BearingsBeyondTheirLimitsAreUnusable) {
    for (const quint16 azimuth : std::to_array<quint16>({3601, 65535})) {
        EXPECT_EQ(MarkerOf({.azimuth = azimuth, .quality = 50}), UNUSABLE) << azimuth;
    }
    for (const qint16 elevation : std::to_array<qint16>({-32767, -901, 901, 32767})) {
        EXPECT_EQ(MarkerOf({.elevation = elevation, .quality = 50}), UNUSABLE) << elevation;
    }
    for (const quint16 quality : std::to_array<quint16>({101, 65535})) {
        EXPECT_EQ(MarkerOf({.quality = quality}), UNUSABLE) << quality;
    }
}

TEST(DeliveryCheck, FrequencyThatCannotBeIsNotKnown) {
    constexpr double INFINITE = std::numeric_limits<double>::infinity();
    for (const double frequency : {0.0, -1.0, 3.1e12, 1e300, INFINITE, -INFINITE, NOT_A_NUMBER}) {
        BearingBlock block = BlockOf({.quality = 50});
        block.status.frequency = frequency;
        DeliveryCheck().Check(block);
        EXPECT_TRUE(std::isnan(block.status.frequency)) << frequency;
        EXPECT_EQ(block.bearings[0].marker, 0) << "the bearing itself is good";
    }
    BearingBlock block = BlockOf({});
    block.status.frequency = 3e12;
    EXPECT_EQ(DeliveryCheck().Check(block), QStringList());
    EXPECT_EQ(block.status.frequency, 3e12);
}

TEST(DeliveryCheck, AnglesOfThePlatformThatCannotBeAreNotMeasured) {
    BearingBlock block = BlockOf({});
    block.status.heading = 1e300;
    block.status.pitch = NOT_A_NUMBER;
    block.status.roll = -std::numeric_limits<double>::infinity();
    EXPECT_EQ(DeliveryCheck().Check(block).size(), 3);
    EXPECT_EQ(block.status.heading, std::nullopt);
    EXPECT_EQ(block.status.pitch, std::nullopt);
    EXPECT_EQ(block.status.roll, std::nullopt);
    for (const double heading : {720.5, -721.0, NOT_A_NUMBER}) {
        block.status.heading = heading;
        DeliveryCheck().Check(block);
        EXPECT_EQ(block.status.heading, std::nullopt) << heading;
    }
    block.status.heading = -720.0;
    block.status.pitch = 12.5;
    EXPECT_EQ(DeliveryCheck().Check(block), QStringList());
    EXPECT_EQ(block.status.heading, -720.0);
    EXPECT_EQ(block.status.pitch, 12.5);
}

TEST(DeliveryCheck, FirstFaultOfEachKindIsToldWithItsNumber) {
    DeliveryCheck check;
    for (const bool isFirst : {true, false}) {
        BearingBlock block = BlockOf({.azimuth = 65535, .quality = 50});
        block.bearings.push_back(block.bearings[0]);
        block.status.frequency = -5.0;
        const QStringList texts{
            u"the driver has delivered an azimuth of 6553.5: such bearings are marked as unusable"_s,
            u"the driver has delivered a frequency of -5: such a frequency counts as not known"_s};
        EXPECT_EQ(check.Check(block), isFirst ? texts : QStringList());
        EXPECT_EQ(block.bearings[1].marker, UNUSABLE);
    }
}
