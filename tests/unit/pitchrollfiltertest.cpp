#include "zancommon/pitchrollfilter.h"

#include "support/bearings.h"
#include "support/observers.h"
#include "support/printing.h"
#include "support/treevalues.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTranslator>

#include <array>
#include <limits>
#include <memory>
#include <random>
#include <vector>

using namespace Qt::StringLiterals;
using KvZANCommon::PitchRollFilter;

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

ValueNumericDouble* InsertAngle(const QString& path, double angle) {
    constexpr double LIMIT = 1e9;
    return InsertInTree<ValueNumericDouble>(path, angle, -LIMIT, LIMIT, 0.1);
}

class PitchRollFilterTest : public testing::Test {
protected:
    void SetUp() override { Tree::Instance()->Clear(); }

    void BindPitch(double pitch, double threshold) {
        InsertAngle(u"/Test/Pitch"_s, pitch);
        InsertAngle(u"/Test/PitchThreshold"_s, threshold);
        m_filter.SetPitchValuePath(u"/Test/Pitch"_s);
        m_filter.SetPitchThresholdValuePath(u"/Test/PitchThreshold"_s);
    }
    void BindRoll(double roll, double threshold) {
        InsertAngle(u"/Test/Roll"_s, roll);
        InsertAngle(u"/Test/RollThreshold"_s, threshold);
        m_filter.SetRollValuePath(u"/Test/Roll"_s);
        m_filter.SetRollThresholdValuePath(u"/Test/RollThreshold"_s);
    }
    void BindStatus() {
        m_pDataValid = InsertInTree<ValueBool>(u"/Test/DataValid"_s, true);
        m_pStateInfo = InsertInTree<ValueString>(u"/Test/StateInfo"_s, u"fine"_s);
        m_filter.SetZANDataValidValuePath(u"/Test/DataValid"_s);
        m_filter.SetZANDataStateInfoValuePath(u"/Test/StateInfo"_s);
    }
    void ExpectStatusUntouched() const {
        EXPECT_TRUE(m_pDataValid->GetValue());
        EXPECT_EQ(m_pStateInfo->GetValue(), u"fine"_s);
    }
    void ExpectStatusRejected() const {
        EXPECT_FALSE(m_pDataValid->GetValue());
        EXPECT_EQ(m_pStateInfo->GetValue(), u"Pitch/Roll value exceeds threshold."_s);
    }

    PitchRollFilter m_filter;
    ValueBool* m_pDataValid = nullptr;
    ValueString* m_pStateInfo = nullptr;
};

struct Limit {
    double angle;
    double threshold;
    bool isExceeded;
};

constexpr auto LIMITS = std::to_array<Limit>({
    {5.0, 5.0, true},
    {-6.0, 5.0, true},
    {4.99, -5.0, false},
    {4.99, 5.0, false},
    {-5.0, 5.0, true},
    {5.0, -5.0, true},
    {-5.0, -5.0, true},
    {-4.99, -5.0, false},
    {0.0, 0.0, true},
    {0.0, 5.0, false},
    {5.01, 5.0, true},
    {NOT_A_NUMBER, 5.0, false},
    {5.0, NOT_A_NUMBER, false},
    {NOT_A_NUMBER, NOT_A_NUMBER, false},
});

class PitchRollFilterLimitTest : public PitchRollFilterTest, public testing::WithParamInterface<Limit> {};

TEST_P(PitchRollFilterLimitTest, PitchIsExceededWhenItsMagnitudeReachesThatOfTheThreshold) {
    BindPitch(GetParam().angle, GetParam().threshold);
    EXPECT_EQ(m_filter.IsFilterConditionMet(), GetParam().isExceeded);
}

TEST_P(PitchRollFilterLimitTest, RollIsExceededWhenItsMagnitudeReachesThatOfTheThreshold) {
    BindRoll(GetParam().angle, GetParam().threshold);
    EXPECT_EQ(m_filter.IsFilterConditionMet(), GetParam().isExceeded);
}

INSTANTIATE_TEST_SUITE_P(Limits, PitchRollFilterLimitTest, testing::ValuesIn(LIMITS));

TEST_F(PitchRollFilterTest, ConditionIsNotMetWhileNothingIsBound) {
    EXPECT_FALSE(m_filter.IsFilterConditionMet());
}

TEST_F(PitchRollFilterTest, ConditionFollowsThePitchAloneWhileOnlyThePitchPairIsBound) {
    BindPitch(0.0, 5.0);
    auto* pitch = Tree::Instance()->Find<ValueNumericDouble>(u"/Test/Pitch"_s);
    EXPECT_FALSE(m_filter.IsFilterConditionMet());
    pitch->SetValue(5.0, nullptr);
    EXPECT_TRUE(m_filter.IsFilterConditionMet());
    pitch->SetValue(-4.0, nullptr);
    EXPECT_FALSE(m_filter.IsFilterConditionMet());
}

TEST_F(PitchRollFilterTest, ConditionIsMetWhenEitherLimitIsExceeded) {
    BindPitch(1.0, 5.0);
    BindRoll(1.0, 3.0);
    auto* pitch = Tree::Instance()->Find<ValueNumericDouble>(u"/Test/Pitch"_s);
    auto* roll = Tree::Instance()->Find<ValueNumericDouble>(u"/Test/Roll"_s);
    EXPECT_FALSE(m_filter.IsFilterConditionMet());
    roll->SetValue(4.0, nullptr);
    EXPECT_TRUE(m_filter.IsFilterConditionMet());
    pitch->SetValue(6.0, nullptr);
    EXPECT_TRUE(m_filter.IsFilterConditionMet());
    roll->SetValue(0.0, nullptr);
    EXPECT_TRUE(m_filter.IsFilterConditionMet());
}

TEST_F(PitchRollFilterTest, LimitIsNotExceededWhileItsThresholdIsUnbound) {
    InsertAngle(u"/Test/Pitch"_s, 90.0);
    InsertAngle(u"/Test/Roll"_s, 90.0);
    m_filter.SetPitchValuePath(u"/Test/Pitch"_s);
    m_filter.SetRollValuePath(u"/Test/Roll"_s);
    EXPECT_FALSE(m_filter.IsFilterConditionMet());
}

TEST_F(PitchRollFilterTest, LimitIsNotExceededWhileItsAngleIsUnbound) {
    InsertAngle(u"/Test/Threshold"_s, 0.0);
    m_filter.SetPitchThresholdValuePath(u"/Test/Threshold"_s);
    m_filter.SetRollThresholdValuePath(u"/Test/Threshold"_s);
    EXPECT_FALSE(m_filter.IsFilterConditionMet());
}

TEST_F(PitchRollFilterTest, FirstSuccessfulBindingHolds) {
    BindPitch(90.0, 5.0);
    BindRoll(90.0, 5.0);
    BindStatus();
    InsertAngle(u"/Test/Level"_s, 0.0);
    InsertAngle(u"/Test/Huge"_s, 1000.0);
    m_filter.SetPitchValuePath(u"/Test/Level"_s);
    m_filter.SetPitchThresholdValuePath(u"/Test/Huge"_s);
    m_filter.SetRollValuePath(u"/Test/Level"_s);
    EXPECT_TRUE(m_filter.IsFilterConditionMet());
    Tree::Instance()->Find<ValueNumericDouble>(u"/Test/Pitch"_s)->SetValue(0.0, nullptr);
    m_filter.SetRollThresholdValuePath(u"/Test/Huge"_s);
    EXPECT_TRUE(m_filter.IsFilterConditionMet());

    const auto* otherFlag = InsertInTree<ValueBool>(u"/Test/OtherFlag"_s, true);
    const auto* otherText = InsertInTree<ValueString>(u"/Test/OtherText"_s, u"other"_s);
    m_filter.SetZANDataValidValuePath(u"/Test/OtherFlag"_s);
    m_filter.SetZANDataStateInfoValuePath(u"/Test/OtherText"_s);
    m_filter.Apply(0, nullptr);
    ExpectStatusRejected();
    EXPECT_TRUE(otherFlag->GetValue());
    EXPECT_EQ(otherText->GetValue(), u"other"_s);
}

TEST_F(PitchRollFilterTest, PathWithoutValueOrOfAnotherTypeLeavesTheMemberUnboundForALaterCall) {
    InsertInTree<ValueNumericInt>(u"/Test/Integer"_s);
    m_filter.SetPitchValuePath(u"/Test/Integer"_s);
    m_filter.SetPitchThresholdValuePath(u"/Test/Missing"_s);
    m_filter.SetZANDataValidValuePath(u"/Test/Integer"_s);
    m_filter.SetZANDataStateInfoValuePath({});
    m_filter.Apply(0, nullptr);
    EXPECT_FALSE(m_filter.IsFilterConditionMet());
    EXPECT_EQ(Tree::Instance()->Find<ValueNumericInt>(u"/Test/Integer"_s)->GetValue(), 0);

    BindPitch(5.0, 5.0);
    BindStatus();
    EXPECT_TRUE(m_filter.IsFilterConditionMet());
    m_filter.Apply(0, nullptr);
    ExpectStatusRejected();
}

TEST_F(PitchRollFilterTest, NodeAtThePathLeavesTheMemberUnbound) {
    Tree::Instance()->CreateNode(u"/Test/Pitch"_s);
    InsertAngle(u"/Test/PitchThreshold"_s, 0.0);
    m_filter.SetPitchValuePath(u"/Test/Pitch"_s);
    m_filter.SetPitchThresholdValuePath(u"/Test/PitchThreshold"_s);
    EXPECT_FALSE(m_filter.IsFilterConditionMet());
}

TEST_F(PitchRollFilterTest, ValueThatTheTreeDestroyedIsUnboundAndCanBeBoundAgain) {
    BindPitch(90.0, 5.0);
    BindStatus();
    ASSERT_TRUE(m_filter.IsFilterConditionMet());
    Tree::Instance()->Clear();
    EXPECT_FALSE(m_filter.IsFilterConditionMet());
    std::vector<Bearing> bearings(2, Bearing{.quality = 50});
    m_filter.Apply(2, bearings.data());
    EXPECT_EQ(bearings, std::vector<Bearing>(2));

    BindPitch(90.0, 5.0);
    BindStatus();
    EXPECT_TRUE(m_filter.IsFilterConditionMet());
    m_filter.Apply(2, bearings.data());
    ExpectStatusRejected();
}

TEST_F(PitchRollFilterTest, RenamedValueStaysBound) {
    BindPitch(90.0, 5.0);
    Tree::Instance()->GetValue(u"/Test/Pitch"_s)->SetName(u"Nick"_s, nullptr);
    InsertAngle(u"/Test/Pitch"_s, 0.0);
    m_filter.SetPitchValuePath(u"/Test/Pitch"_s);
    EXPECT_TRUE(m_filter.IsFilterConditionMet());
}

TEST_F(PitchRollFilterTest, BlockIsRejectedWithAllOtherMembersUntouched) {
    BindStatus();
    for (const std::size_t count : {1U, 2U, 7U, 8U, 9U, 64U, 1000U, 60000U}) {
        SCOPED_TRACE(count);
        std::mt19937 random(static_cast<unsigned>(count));
        // Two more than the block: what is behind it is not the filter's.
        std::vector<Bearing> bearings(count + 2);
        for (Bearing& bearing : bearings) {
            bearing = RandomBearing(random);
        }
        std::vector<Bearing> expected = bearings;
        for (std::size_t i = 0; i < count; ++i) {
            expected[i].quality = 0;
        }
        m_filter.Apply(static_cast<unsigned>(count), bearings.data());
        EXPECT_EQ(bearings, expected);
    }
    ExpectStatusRejected();
}

TEST_F(PitchRollFilterTest, ApplyDoesNotAskTheCondition) {
    BindPitch(0.0, 5.0);
    BindStatus();
    ASSERT_FALSE(m_filter.IsFilterConditionMet());
    Bearing bearing{.quality = 80};
    m_filter.Apply(1, &bearing);
    EXPECT_EQ(bearing.quality, 0);
    ExpectStatusRejected();
}

TEST_F(PitchRollFilterTest, EmptyBlockReportsTheRejectionAsWell) {
    BindStatus();
    m_filter.Apply(0, nullptr);
    ExpectStatusRejected();
}

TEST_F(PitchRollFilterTest, UnboundStatusValuesAreNotWritten) {
    Bearing bearing{.quality = 80};
    m_filter.Apply(1, &bearing);
    EXPECT_EQ(bearing, Bearing{});
    BearingResult result;
    result.SetAzimuth(1);
    result.SetQuality(80);
    m_filter.Apply(result);
    EXPECT_EQ(result.GetQuality(), 0);
    EXPECT_EQ(Tree::Instance()->GetValueCount(), 0);
}

TEST_F(PitchRollFilterTest, ResultWithAzimuthIsRejectedWithAllOtherMembersUntouched) {
    BindStatus();
    BearingResult result;
    result.SetFrequency(98.5e6);
    result.SetLevel(-4711);
    result.SetAzimuth(3599);
    result.SetElevation(-12);
    result.SetQuality(77);
    result.SetTimeStamp(1234567890123);
    BearingResult expected = result;
    expected.SetQuality(0);
    m_filter.Apply(result);
    EXPECT_EQ(result, expected);
    ExpectStatusRejected();
}

TEST_F(PitchRollFilterTest, ResultWithoutAzimuthChangesNeitherResultNorTree) {
    BindStatus();
    BearingResult result;
    result.SetElevation(300);
    result.SetQuality(77);
    const BearingResult before = result;
    m_filter.Apply(result);
    EXPECT_EQ(result, before);
    ExpectStatusUntouched();
}

TEST_F(PitchRollFilterTest, ObserversOfTheStatusValuesAreNotified) {
    BindStatus();
    CodeObserver ofValid;
    CodeObserver ofInfo;
    m_pDataValid->AddObserver(&ofValid);
    m_pStateInfo->AddObserver(&ofInfo);
    m_filter.Apply(0, nullptr);
    m_filter.Apply(0, nullptr);
    EXPECT_EQ(ofValid.codes.size(), 1U);
    EXPECT_EQ(ofInfo.codes.size(), 1U);
}

TEST_F(PitchRollFilterTest, ObserverMayRemoveTheStatusValuesMeanwhile) {
    FunctionObserver remover([](Observable*, TChangeCode) { Tree::Instance()->Clear(); });
    BindStatus();
    m_pDataValid->AddObserver(&remover);
    m_filter.Apply(0, nullptr);
    EXPECT_EQ(Tree::Instance()->GetValueCount(), 0);
}

TEST_F(PitchRollFilterTest, ReasonIsTranslatedInTheContextOfQObject) {
    class Translator : public QTranslator {
    public:
        [[nodiscard]] bool isEmpty() const override { return false; }
        QString translate(const char* context, const char* text, const char* disambiguation,
                          int) const override {
            const bool isMine = QLatin1StringView(context) == "QObject"_L1 && !disambiguation &&
                                QLatin1StringView(text) == "Pitch/Roll value exceeds threshold."_L1;
            return isMine ? u"Zu schief."_s : QString();
        }
    } translator;
    BindStatus();
    QCoreApplication::installTranslator(&translator);
    m_filter.Apply(0, nullptr);
    QCoreApplication::removeTranslator(&translator);
    EXPECT_EQ(m_pStateInfo->GetValue(), u"Zu schief."_s);
}

TEST_F(PitchRollFilterTest, CopiesAreBoundToTheSameValues) {
    BindPitch(90.0, 5.0);
    const PitchRollFilter copy = m_filter;
    PitchRollFilter assigned;
    assigned = m_filter;
    EXPECT_TRUE(copy.IsFilterConditionMet());
    EXPECT_TRUE(assigned.IsFilterConditionMet());
    Tree::Instance()->Clear();
    EXPECT_FALSE(copy.IsFilterConditionMet());
    EXPECT_FALSE(assigned.IsFilterConditionMet());
}

TEST_F(PitchRollFilterTest, DestructionReleasesNothing) {
    auto filter = std::make_unique<PitchRollFilter>();
    auto* pitch = InsertAngle(u"/Test/Pitch"_s, 1.5);
    filter->SetPitchValuePath(u"/Test/Pitch"_s);
    filter.reset();
    EXPECT_EQ(Tree::Instance()->Find<ValueNumericDouble>(u"/Test/Pitch"_s), pitch);
    EXPECT_EQ(pitch->GetValue(), 1.5);
}

} // namespace
