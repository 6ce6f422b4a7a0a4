#include "simulator/propagation.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Simulator;

TEST(Propagation, AzimuthIsClockwiseFromNorth) {
    const Place station{55.0, 5.0, 0.0};
    EXPECT_NEAR(Propagation::Look(station, {55.1, 5.0, 0.0}).azimuth, 0.0, 1e-9);
    EXPECT_NEAR(Propagation::Look(station, {55.0, 5.1, 0.0}).azimuth, 90.0, 0.1);
    EXPECT_NEAR(Propagation::Look(station, {54.9, 5.0, 0.0}).azimuth, 180.0, 1e-9);
    EXPECT_NEAR(Propagation::Look(station, {55.0, 4.9, 0.0}).azimuth, 270.0, 0.1);
}

// A minute of latitude is a nautical mile; on the ellipsoid 1855.6 m at 55 degrees.
TEST(Propagation, AHairLeftOfNorthIsNotTheFullCircle) {
    const Sight sight = Propagation::Look({0.0, 0.0, 0.0}, {1.0, -1e-18, 0.0});
    EXPECT_GE(sight.azimuth, 0.0);
    EXPECT_LT(sight.azimuth, 360.0);
}

TEST(Propagation, DistanceIsThatOnTheEllipsoid) {
    EXPECT_NEAR(Propagation::Look({55.0, 5.0, 0.0}, {55.0 + 1.0 / 60.0, 5.0, 0.0}).distance, 1855.6, 0.3);
    EXPECT_NEAR(Propagation::Look({0.0, 5.0, 0.0}, {0.0, 5.0 + 1.0 / 60.0, 0.0}).distance, 1855.3, 0.1);
}

TEST(Propagation, ElevationFollowsHeightAndDistance) {
    const Place station{55.0, 5.0, 0.0};
    EXPECT_NEAR(Propagation::Look(station, {55.0, 5.0, 3000.0}).elevation, 90.0, 1e-6);
    const Place aside = Propagation::Move(station, 30.0, 3000.0);
    EXPECT_NEAR(Propagation::Look(station, {aside.latitude, aside.longitude, 3000.0}).elevation, 45.0, 0.2);
    // 100 km away the Earth has curved by some 0.9 degrees of what is seen: d / 2R.
    const Place far = Propagation::Move(station, 30.0, 100e3);
    EXPECT_NEAR(Propagation::Look(station, far).elevation, -0.45, 0.01);
}

TEST(Propagation, AcrossTheDateLineIsTheShortWay) {
    const Sight sight = Propagation::Look({10.0, 179.9, 0.0}, {10.0, -179.9, 0.0});
    EXPECT_NEAR(sight.azimuth, 90.0, 0.1);
    EXPECT_LT(sight.distance, 22'500.0);
}

TEST(Propagation, MovedByADistanceOneIsSeenAtItAndOnTheCourse) {
    const Place from{55.0, 179.99, 0.0};
    for (const double course : {0.0, 45.0, 137.0, 260.0}) {
        const Sight sight = Propagation::Look(from, Propagation::Move(from, course, 20'000.0));
        EXPECT_NEAR(sight.distance, 20'000.0, 100.0) << course; // sphere and ellipsoid
        EXPECT_NEAR(std::remainder(sight.azimuth - course, 360.0), 0.0, 0.3) << course;
    }
}

// 32.45 dB + 20 log10 (km) + 20 log10 (MHz)
TEST(Propagation, LossIsThatOfFreeSpace) {
    EXPECT_NEAR(Propagation::GetPathLoss(1000.0, 1e6), 32.45, 0.01);
    EXPECT_NEAR(Propagation::GetPathLoss(10e3, 100e6), 92.45, 0.01);
    EXPECT_NEAR(Propagation::GetPathLoss(20e3, 100e6), 98.47, 0.01);
}

TEST(Propagation, NothingIsGainedAtTheEmitter) {
    EXPECT_EQ(Propagation::GetPathLoss(0.0, 1e6), 0.0);
}

// The rule of thumb: 4.12 km times the sum of the square roots of the heights.
TEST(Propagation, HorizonFollowsTheHeights) {
    const Place ship{55.0, 5.0, 16.0};
    const Place aircraft{55.0, 6.0, 2500.0};
    EXPECT_TRUE(Propagation::IsWithinHorizon(127.5e6, ship, aircraft, 221e3));
    EXPECT_FALSE(Propagation::IsWithinHorizon(127.5e6, ship, aircraft, 224e3));
}

TEST(Propagation, BelowThirtyMegahertzThereIsNoHorizon) {
    const Place low{55.0, 5.0, -3.0};
    EXPECT_TRUE(Propagation::IsWithinHorizon(8e6, low, low, 2000e3));
    EXPECT_FALSE(Propagation::IsWithinHorizon(30e6, low, low, 1000.0));
}
