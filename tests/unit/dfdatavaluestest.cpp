#include "zancommon/dfdatavalues.h"

#include "support/observers.h"
#include "support/printing.h"
#include "valueframework/valueaccess.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using ZANPlatform::GetOrCreateValue;

namespace {

class DFDataValuesTest : public testing::Test {
protected:
    ~DFDataValuesTest() override { tree.Clear(); }

    /// Makes the values of attitude and position with contents of their own.
    void MakeShip() {
        GetOrCreateValue<ValueNumericDouble>(u"/ZANServer/Res/PosR/Altitude"_s)->SetValue(12.5, nullptr);
        GetOrCreateValue<ValueNumericDouble>(u"/ZANServer/Res/PosR/Roll"_s)->SetValue(2.5, nullptr);
        GetOrCreateValue<ValueNumericDouble>(u"/ZANServer/Res/PosR/Pitch"_s)->SetValue(-1.5, nullptr);
        GetOrCreateValue<ValueTimeStamp>(u"/ZANServer/Res/PosR/PosLastUpdate"_s)->SetValue(7000, nullptr);
        latitude = GetOrCreateValue<ValueNumericDouble>(u"/ZANServer/Res/PosR/PosLatitude"_s);
        latitude->SetValue(48.1, nullptr);
        GetOrCreateValue<ValueNumericDouble>(u"/ZANServer/Res/PosR/PosLongitude"_s)->SetValue(11.5, nullptr);
        values.Find(&observer);
    }
    void MakeEmitters(long statusIndex) {
        auto* const status = GetOrCreateValue<ValueSelection>(u"/ZANServer/Par/Evt/SRStatus"_s);
        status->AddItem({u"Off"_s, 0.0, 0}, nullptr);
        status->AddItem({u"On"_s, 0.0, 1}, nullptr);
        status->SetCurrentIndex(statusIndex, nullptr);
        GetOrCreateValue<ValueBearingList>(u"/ZANServer/Res/DfR/AzimuthList"_s)->PushBack({}, nullptr);
        values.Find(&observer);
    }

    Tree& tree = *Tree::Instance();
    ValueNumericDouble* latitude = nullptr;
    CodeObserver observer;
    DFDataValues values;
};

} // namespace

TEST_F(DFDataValuesTest, WhatIsAbsentLeavesItsMarker) {
    values.Find(&observer);
    const DFDataSentence::Head head = values.MakeHead(values.GetBearing());
    EXPECT_EQ(head.azimuth, -10);
    EXPECT_EQ(head.heading, -1);
    EXPECT_EQ(head.quality, 0);
    EXPECT_EQ(head.level, -50);
    EXPECT_EQ(head.frequency, 0.0);
    EXPECT_EQ(head.time, std::nullopt);
    const DFDataSentence::Tail tail = values.MakeTail(values.GetBearing());
    EXPECT_EQ(tail.elevation, 0);
    EXPECT_EQ(tail.pitch, 0.0);
    EXPECT_EQ(tail.positionTime, std::nullopt);
    EXPECT_FALSE(values.IsOperating());
    EXPECT_EQ(values.GetEmitters(), nullptr);
}

TEST_F(DFDataValuesTest, AHeadHoldsTheBearingAndTheHeading) {
    auto* const bearing = GetOrCreateValue<ValueBearing>(u"/ZANServer/Res/DfR/Azimuth"_s);
    GetOrCreateValue<ValueInt>(u"/ZANServer/Res/HeaR/TrueHeading"_s)->SetValue(1234, nullptr);
    values.Find(&observer);
    BearingResult result;
    result.SetAzimuth(715);
    result.SetFrequency(121.5e6);
    result.SetQuality(90);
    result.SetLevel(-4500);
    result.SetTimeStamp(5000);
    bearing->SetValue(result, nullptr);
    EXPECT_EQ(observer.codes, std::vector{TChangeCode::Changed});
    const DFDataSentence::Head head = values.MakeHead(values.GetBearing());
    EXPECT_EQ(head.azimuth, 715);
    EXPECT_EQ(head.frequency, 121.5e6);
    EXPECT_EQ(head.quality, 90);
    EXPECT_EQ(head.level, -4500);
    EXPECT_EQ(head.time, 5000U);
    EXPECT_EQ(head.heading, 1234);
}

TEST_F(DFDataValuesTest, ATailHoldsAttitudeAndPosition) {
    MakeShip();
    BearingResult bearing;
    bearing.SetElevation(123);
    const DFDataSentence::Tail tail = values.MakeTail(bearing);
    EXPECT_EQ(tail.elevation, 123);
    EXPECT_EQ(tail.altitude, 12.5);
    EXPECT_EQ(tail.roll, 2.5);
    EXPECT_EQ(tail.pitch, -1.5);
    EXPECT_EQ(tail.positionTime, 7000U);
    EXPECT_EQ(tail.latitude, 48.1);
    EXPECT_EQ(tail.longitude, 11.5);
}

TEST_F(DFDataValuesTest, APositionOfWhichOneHalfIsNotMeasuredIsAbsentWithItsTime) {
    MakeShip();
    latitude->SetState(TValueState::NotMeasured, nullptr);
    const DFDataSentence::Tail tail = values.MakeTail({});
    EXPECT_EQ(tail.positionTime, std::nullopt);
    EXPECT_EQ(tail.latitude, 0.0);
    EXPECT_EQ(tail.longitude, 0.0);
    EXPECT_EQ(tail.altitude, 12.5);
}

TEST_F(DFDataValuesTest, EmittersAreThereInSuperResolutionModeOnly) {
    MakeEmitters(1);
    ASSERT_NE(values.GetEmitters(), nullptr);
    EXPECT_EQ(values.GetEmitters()->size(), 1U);
    GetOrCreateValue<ValueSelection>(u"/ZANServer/Par/Evt/SRStatus"_s)->SetCurrentIndex(0, nullptr);
    EXPECT_EQ(values.GetEmitters(), nullptr);
}

TEST_F(DFDataValuesTest, IsOperatingInEveryModeButTheOneWithKeyZero) {
    auto* const mode = GetOrCreateValue<ValueSelection>(u"/ZANServer/DevAttr/OperationMode"_s);
    mode->AddItem({u"Standby"_s, 0.0, 0}, nullptr);
    mode->AddItem({u"Scan"_s, 0.0, 3}, nullptr);
    values.Find(&observer);
    mode->SetCurrentKey(0, nullptr);
    EXPECT_FALSE(values.IsOperating());
    mode->SetCurrentKey(3, nullptr);
    EXPECT_TRUE(values.IsOperating());
}

TEST_F(DFDataValuesTest, ABearingThatGoesAwayIsAbsentFromThenOn) {
    auto* const bearing = GetOrCreateValue<ValueBearing>(u"/ZANServer/Res/DfR/Azimuth"_s);
    values.Find(&observer);
    EXPECT_TRUE(values.IsBearing(bearing));
    EXPECT_FALSE(values.LetGoOfBearingIfGoing(bearing, TChangeCode::Changed));
    EXPECT_TRUE(values.LetGoOfBearingIfGoing(bearing, TChangeCode::GoingAway));
    EXPECT_FALSE(values.IsBearing(bearing));
    EXPECT_EQ(bearing->GetObserverCount(), 0U);
}

TEST_F(DFDataValuesTest, LettingGoEndsTheObservationOfBearingAndEmitters) {
    auto* const bearing = GetOrCreateValue<ValueBearing>(u"/ZANServer/Res/DfR/Azimuth"_s);
    MakeEmitters(1);
    auto* const emitters = tree.GetValue(u"/ZANServer/Res/DfR/AzimuthList"_s);
    EXPECT_EQ(bearing->GetObserverCount(), 1U);
    EXPECT_EQ(emitters->GetObserverCount(), 1U);
    values.LetGo();
    EXPECT_EQ(bearing->GetObserverCount(), 0U);
    EXPECT_EQ(emitters->GetObserverCount(), 0U);
    EXPECT_EQ(values.GetEmitters(), nullptr);
}
