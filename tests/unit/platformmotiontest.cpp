#include "simulator/platformmotion.h"

#include "simulator/propagation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace Simulator;

namespace {

Track TrackOf(double course, double speed, double climb = 0.0) {
    Track track;
    track.start = {55.0, 5.0, 100.0};
    track.course = course;
    track.speed = speed;
    track.climb = climb;
    return track;
}

Track WayOf(std::vector<WayPoint> way, bool repeat = false) {
    Track track;
    track.way = std::move(way);
    track.repeat = repeat;
    return track;
}

double AngleBetween(double a, double b) {
    return std::abs(std::remainder(a - b, 360.0));
}

} // namespace

TEST(PlatformMotion, WhatStandsStaysWhereItIs) {
    const Place place = PlatformMotion::GetPlace(TrackOf(0.0, 0.0), 1e6);
    EXPECT_EQ(place.latitude, 55.0);
    EXPECT_EQ(place.longitude, 5.0);
    EXPECT_EQ(place.altitude, 100.0);
}

TEST(PlatformMotion, ACourseIsFollowedAtItsSpeed) {
    const Track track = TrackOf(90.0, 10.0, 2.0);
    const Place place = PlatformMotion::GetPlace(track, 100.0);
    const Sight sight = Propagation::Look(track.start, place);
    EXPECT_NEAR(std::hypot(sight.distance, 0.0), std::hypot(1000.0, 200.0), 5.0);
    EXPECT_NEAR(sight.azimuth, 90.0, 0.1);
    EXPECT_EQ(place.altitude, 300.0);
}

TEST(PlatformMotion, NothingSinksBelowTheGround) {
    EXPECT_EQ(PlatformMotion::GetPlace(TrackOf(0.0, 0.0, -1.0), 1e6).altitude, 0.0);
}

TEST(PlatformMotion, AWayIsFollowedBetweenItsPoints) {
    const Track track = WayOf({{10.0, {55.0, 5.0, 0.0}}, {20.0, {56.0, 7.0, 1000.0}}});
    EXPECT_EQ(PlatformMotion::GetPlace(track, 0.0).latitude, 55.0);
    EXPECT_NEAR(PlatformMotion::GetPlace(track, 15.0).latitude, 55.5, 1e-9);
    EXPECT_NEAR(PlatformMotion::GetPlace(track, 15.0).longitude, 6.0, 1e-9);
    EXPECT_NEAR(PlatformMotion::GetPlace(track, 15.0).altitude, 500.0, 1e-9);
    EXPECT_EQ(PlatformMotion::GetPlace(track, 1e6).latitude, 56.0);
}

TEST(PlatformMotion, AWayIsRepeated) {
    const Track track = WayOf({{10.0, {55.0, 5.0, 0.0}}, {20.0, {56.0, 7.0, 0.0}}}, true);
    EXPECT_NEAR(PlatformMotion::GetPlace(track, 35.0).latitude, 55.5, 1e-9);
    EXPECT_NEAR(PlatformMotion::GetPlace(track, 1e8 + 15.0).latitude, 55.5, 1e-6);
}

TEST(PlatformMotion, AWayOverTheDateLineIsTheShortOne) {
    const Track track = WayOf({{0.0, {0.0, 179.0, 0.0}}, {10.0, {0.0, -179.0, 0.0}}});
    EXPECT_NEAR(std::abs(PlatformMotion::GetPlace(track, 5.0).longitude), 180.0, 1e-9);
    EXPECT_NEAR(PlatformMotion::GetPlace(track, 7.5).longitude, -179.5, 1e-9);
}

TEST(PlatformMotion, AShipHeadsWhereItGoes) {
    Platform platform;
    platform.track = TrackOf(123.0, 5.0);
    EXPECT_NEAR(PlatformMotion(platform, 1).GetState(10.0).heading, 123.0, 1e-9);
    platform.heading = 10.0;
    EXPECT_NEAR(PlatformMotion(platform, 1).GetState(10.0).heading, 10.0, 1e-9);
}

TEST(PlatformMotion, AShipTurnsAtAPointAndDoesNotJump) {
    Platform platform;
    platform.track = WayOf({{0.0, {55.0, 5.0, 0.0}}, {1000.0, {55.1, 5.0, 0.0}}, {2000.0, {55.1, 5.2, 0.0}}});
    const PlatformMotion motion(platform, 1);
    EXPECT_LT(AngleBetween(motion.GetState(500.0).heading, 0.0), 0.1);
    EXPECT_LT(AngleBetween(motion.GetState(1500.0).heading, 90.0), 0.2);
    for (double time = 0.0; time < 2000.0; ++time) {
        EXPECT_LT(AngleBetween(motion.GetState(time).heading, motion.GetState(time + 1.0).heading), 5.0)
            << time;
    }
}

TEST(PlatformMotion, SwellRollsWithItsAmplitudeAndPeriod) {
    Platform platform;
    platform.track = TrackOf(0.0, 0.0);
    platform.roll = {8.0, 12.0};
    platform.heave = {1.5, 8.0};
    const PlatformMotion motion(platform, 3);
    double highest = 0.0;
    for (double time = 0.0; time < 100.0; time += 0.1) {
        const PlatformMotion::State state = motion.GetState(time);
        highest = std::max(highest, std::abs(state.roll));
        EXPECT_NEAR(state.roll, motion.GetState(time + 12.0).roll, 1e-6);
        EXPECT_LE(std::abs(state.place.altitude - 100.0), 1.5);
        EXPECT_EQ(state.pitch, 0.0);
    }
    EXPECT_NEAR(highest, 8.0, 0.1);
}

TEST(PlatformMotion, TheSeedGivesTheSwell) {
    Platform platform;
    platform.roll = {8.0, 12.0};
    EXPECT_EQ(PlatformMotion(platform, 3).GetState(1.0).roll, PlatformMotion(platform, 3).GetState(1.0).roll);
    EXPECT_NE(PlatformMotion(platform, 3).GetState(1.0).roll, PlatformMotion(platform, 4).GetState(1.0).roll);
}
