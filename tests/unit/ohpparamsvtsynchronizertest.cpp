#include "zancommon/ohpparamsvtsynchronizer.h"

#include "support/observers.h"
#include "support/printing.h"
#include "support/tracelines.h"
#include "support/treevalues.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace Qt::StringLiterals;
using KvZANCommon::OHPParamsVtSynchronizer;
using KvZANCommon::OverheadPassParams;

namespace {

const QString THRESHOLD_PATH = u"/ZANServer/OverheadPass/Threshold"_s;
const QString VALID_PATH = u"/ZANServer/OverheadPass/Valid"_s;

ValueNumericInt* Threshold() {
    return Tree::Instance()->Find<ValueNumericInt>(THRESHOLD_PATH);
}
ValueBool* Valid() {
    return Tree::Instance()->Find<ValueBool>(VALID_PATH);
}

class OHPParamsVtSynchronizerTest : public testing::Test {
protected:
    void SetUp() override { Tree::Instance()->Clear(); }

    void ExpectParams(int threshold, bool isValid) const {
        EXPECT_EQ(m_params.GetThreshold(), threshold);
        EXPECT_EQ(m_params.IsValid(), isValid);
    }
    static void ExpectTree(int threshold, bool isValid) {
        ASSERT_TRUE(Threshold());
        ASSERT_TRUE(Valid());
        EXPECT_EQ(Threshold()->GetValue(), threshold);
        EXPECT_EQ(Valid()->GetValue(), isValid);
    }

    OverheadPassParams m_params;
    TraceLines m_trace;
};

TEST_F(OHPParamsVtSynchronizerTest, MissingValuesAreMadeFromTheParameters) {
    m_params.SetThreshold(450, nullptr);
    m_params.SetValid(true, nullptr);
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    ExpectTree(450, true);
    ExpectParams(450, true);
    EXPECT_TRUE(m_trace.lines.isEmpty());
}

TEST_F(OHPParamsVtSynchronizerTest, NewThresholdValueAccepts0To900Only) {
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    EXPECT_EQ(Threshold()->GetMin(), 0);
    EXPECT_EQ(Threshold()->GetMax(), 900);
    EXPECT_EQ(Threshold()->GetStep(), 1);
    EXPECT_FALSE(Threshold()->SetValue(-1, nullptr));
    EXPECT_FALSE(Threshold()->SetValue(901, nullptr));
    ExpectParams(600, false);
    EXPECT_TRUE(Threshold()->SetValue(0, nullptr));
    ExpectParams(0, false);
    EXPECT_TRUE(Threshold()->SetValue(900, nullptr));
    ExpectParams(900, false);
}

TEST_F(OHPParamsVtSynchronizerTest, ValuesThatAreThereGoIntoTheParametersAndKeepTheirRange) {
    InsertInTree<ValueNumericInt>(THRESHOLD_PATH, 1000, -2000, 2000, 5);
    InsertInTree<ValueBool>(VALID_PATH, true);
    CodeObserver observer;
    m_params.AddObserver(&observer);
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    ExpectParams(1000, true);
    ExpectTree(1000, true);
    EXPECT_EQ(Threshold()->GetMin(), -2000);
    EXPECT_EQ(Threshold()->GetMax(), 2000);
    EXPECT_EQ(Threshold()->GetStep(), 5);
    EXPECT_EQ(observer.codes.size(), 2U);
}

TEST_F(OHPParamsVtSynchronizerTest, OneValueThatIsThereIsReadAndTheOtherOneMade) {
    InsertInTree<ValueBool>(VALID_PATH, true);
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    ExpectParams(600, true);
    ExpectTree(600, true);
}

TEST_F(OHPParamsVtSynchronizerTest, ValuesAreBelowTheBasePathGiven) {
    const OHPParamsVtSynchronizer synchronizer(m_params, u"/ZANCONTROL/Device1"_s);
    const auto* threshold =
        Tree::Instance()->Find<ValueNumericInt>(u"/ZANCONTROL/Device1/OverheadPass/Threshold"_s);
    const auto* valid = Tree::Instance()->Find<ValueBool>(u"/ZANCONTROL/Device1/OverheadPass/Valid"_s);
    ASSERT_TRUE(threshold);
    ASSERT_TRUE(valid);
    EXPECT_EQ(threshold->GetValue(), 600);
    EXPECT_EQ(Tree::Instance()->GetValueCount(), 2);
}

TEST_F(OHPParamsVtSynchronizerTest, BasePathMayEndWithASlash) {
    const OHPParamsVtSynchronizer synchronizer(m_params, u"/ZANServer/"_s);
    ExpectTree(600, false);
    EXPECT_TRUE(m_trace.lines.isEmpty());
}

TEST_F(OHPParamsVtSynchronizerTest, BasePathThatIsNoneLeavesTheParametersUsable) {
    const OHPParamsVtSynchronizer synchronizer(m_params, u"no path"_s);
    m_params.SetThreshold(1, nullptr);
    m_params.SetValid(true, nullptr);
    ExpectParams(1, true);
    EXPECT_EQ(Tree::Instance()->GetValueCount(), 0);
}

TEST_F(OHPParamsVtSynchronizerTest, ChangesOfTheTreeReachTheParameters) {
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    Threshold()->SetValue(100, nullptr);
    ExpectParams(100, false);
    Valid()->SetValue(true, nullptr);
    ExpectParams(100, true);
    ExpectTree(100, true);
}

TEST_F(OHPParamsVtSynchronizerTest, ChangesOfTheParametersReachTheTree) {
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    m_params.SetThreshold(100, nullptr);
    ExpectTree(100, false);
    m_params.SetValid(true, nullptr);
    ExpectTree(100, true);
    ExpectParams(100, true);
}

TEST_F(OHPParamsVtSynchronizerTest, EachChangeNotifiesOnceOnEitherSide) {
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    CodeObserver ofParams;
    CodeObserver ofTree;
    m_params.AddObserver(&ofParams);
    Threshold()->AddObserver(&ofTree);
    Valid()->AddObserver(&ofTree);
    m_params.SetThreshold(100, nullptr);
    Threshold()->SetValue(200, nullptr);
    m_params.SetValid(true, nullptr);
    Valid()->SetValue(false, nullptr);
    EXPECT_EQ(ofParams.codes.size(), 4U);
    EXPECT_EQ(ofTree.codes.size(), 4U);
}

TEST_F(OHPParamsVtSynchronizerTest, OriginatorOfAChangeIsNotNotified) {
    OHPParamsVtSynchronizer synchronizer(m_params, {});
    CodeObserver originator;
    m_params.AddObserver(&originator);
    Threshold()->AddObserver(&originator);
    m_params.SetThreshold(100, &originator);
    // By the value, which it did not change, and then by the parameters.
    EXPECT_EQ(originator.subjects, std::vector<const Observable*>{Threshold()});
    originator.subjects.clear();
    Threshold()->SetValue(101, &originator);
    EXPECT_EQ(originator.subjects, std::vector<const Observable*>{&m_params});
    // The synchroniser's own change does not come back to it.
    Threshold()->SetValue(102, &synchronizer);
    ExpectParams(101, false);
}

TEST_F(OHPParamsVtSynchronizerTest, ItsOwnChangeDoesNotComeBackLater) {
    OHPParamsVtSynchronizer synchronizer(m_params, {});
    constexpr unsigned LONG_MS = 3600000;
    Threshold()->SetUpdateTimerTime(LONG_MS);
    Valid()->SetUpdateTimerTime(LONG_MS);
    m_params.SetThreshold(100, nullptr);
    m_params.SetValid(true, nullptr);
    m_params.SetThreshold(1000, &synchronizer);
    m_params.SetValid(false, &synchronizer);
    Threshold()->SetUpdateTimerTime(0); // delivers what is waiting
    Valid()->SetUpdateTimerTime(0);
    ExpectParams(1000, false);
}

TEST_F(OHPParamsVtSynchronizerTest, ThresholdOutsideTheRangeStaysInTheParametersAndTheValueTakesTheNearest) {
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    m_params.SetThreshold(901, nullptr);
    ExpectParams(901, false);
    ExpectTree(900, false);
    m_params.SetThreshold(-1, nullptr);
    ExpectParams(-1, false);
    ExpectTree(0, false);
    m_params.SetValid(true, nullptr);
    ExpectParams(-1, true);
    ExpectTree(0, true);
    Threshold()->SetValue(300, nullptr);
    ExpectParams(300, true);
}

TEST_F(OHPParamsVtSynchronizerTest, NewThresholdValueTakesTheNearestWhenTheParametersAreOutsideItsRange) {
    m_params.SetThreshold(1200, nullptr);
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    ExpectParams(1200, false);
    ExpectTree(900, false);
    Threshold()->SetValue(300, nullptr);
    ExpectParams(300, false);
}

TEST_F(OHPParamsVtSynchronizerTest, NearestThresholdIsThatOfTheRangeTheValueHas) {
    InsertInTree<ValueNumericInt>(THRESHOLD_PATH, 1000, 950, 2000, 5);
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    m_params.SetThreshold(600, nullptr);
    ExpectTree(950, false);
    m_params.SetThreshold(2001, nullptr);
    ExpectTree(2000, false);
    m_params.SetThreshold(1999, nullptr);
    ExpectTree(1999, false);
    ExpectParams(1999, false);
}

TEST_F(OHPParamsVtSynchronizerTest, ThresholdThatTheValueCannotTakeIsTraced) {
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    m_params.SetThreshold(900, nullptr);
    EXPECT_TRUE(m_trace.lines.isEmpty());
    m_params.SetThreshold(901, nullptr);
    ASSERT_EQ(m_trace.lines.size(), 1);
    EXPECT_TRUE(m_trace.lines[0].endsWith(
        u": WARNING: the overhead-pass threshold 901 is outside 0 to 900; the value tree takes 900"_s))
        << m_trace.lines[0].toStdString();
    m_params.SetThreshold(0, nullptr);
    EXPECT_EQ(m_trace.lines.size(), 1);
}

TEST_F(OHPParamsVtSynchronizerTest, ThresholdOfAnotherTypeIsLeftAloneAndTheFlagStaysSynchronised) {
    const auto* wrong = InsertInTree<ValueString>(THRESHOLD_PATH, u"high"_s);
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    ASSERT_EQ(m_trace.lines.size(), 1);
    EXPECT_TRUE(m_trace.lines[0].contains(THRESHOLD_PATH)) << m_trace.lines[0].toStdString();
    EXPECT_EQ(wrong->GetObserverCount(), 0U);
    m_params.SetThreshold(100, nullptr);
    EXPECT_EQ(wrong->GetValue(), u"high"_s);
    m_params.SetValid(true, nullptr);
    EXPECT_TRUE(Valid()->GetValue());
    Valid()->SetValue(false, nullptr);
    ExpectParams(100, false);
}

TEST_F(OHPParamsVtSynchronizerTest, FlagOfAnotherTypeIsLeftAloneAndTheThresholdStaysSynchronised) {
    const auto* wrong = InsertInTree<ValueInt>(VALID_PATH, 5);
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    ASSERT_EQ(m_trace.lines.size(), 1);
    EXPECT_TRUE(m_trace.lines[0].contains(VALID_PATH)) << m_trace.lines[0].toStdString();
    EXPECT_EQ(wrong->GetObserverCount(), 0U);
    m_params.SetValid(true, nullptr);
    EXPECT_EQ(wrong->GetValue(), 5);
    m_params.SetThreshold(100, nullptr);
    EXPECT_EQ(Threshold()->GetValue(), 100);
    Threshold()->SetValue(200, nullptr);
    ExpectParams(200, true);
}

TEST_F(OHPParamsVtSynchronizerTest, IntegerWithoutRangeIsNoThresholdValue) {
    InsertInTree<ValueInt>(THRESHOLD_PATH, 5);
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    ExpectParams(600, false);
    EXPECT_EQ(m_trace.lines.size(), 1);
}

TEST_F(OHPParamsVtSynchronizerTest, RemovedThresholdValueIsForgottenAndTheFlagStaysSynchronised) {
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    EXPECT_TRUE(Tree::Instance()->Remove(Threshold()));
    m_params.SetThreshold(100, nullptr);
    EXPECT_FALSE(Threshold());
    m_params.SetValid(true, nullptr);
    EXPECT_TRUE(Valid()->GetValue());
    Valid()->SetValue(false, nullptr);
    ExpectParams(100, false);
}

TEST_F(OHPParamsVtSynchronizerTest, RemovedFlagIsForgottenAndTheThresholdStaysSynchronised) {
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    EXPECT_TRUE(Tree::Instance()->Remove(Valid()));
    m_params.SetValid(true, nullptr);
    EXPECT_FALSE(Valid());
    m_params.SetThreshold(100, nullptr);
    EXPECT_EQ(Threshold()->GetValue(), 100);
    Threshold()->SetValue(200, nullptr);
    ExpectParams(200, true);
}

TEST_F(OHPParamsVtSynchronizerTest, ValueIsForgottenBeforeItIsGone) {
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    ValueNumericInt* threshold = Threshold();
    // Notified after the synchroniser, while the value is still there.
    FunctionObserver reaction([&](Observable*, TChangeCode) {
        EXPECT_EQ(threshold->GetObserverCount(), 1U);
        m_params.SetThreshold(100, nullptr);
        EXPECT_EQ(threshold->GetValue(), 600);
        threshold->SetValue(200, &reaction);
    });
    threshold->AddObserver(&reaction);
    Tree::Instance()->Remove(threshold);
    ExpectParams(100, false);
}

TEST_F(OHPParamsVtSynchronizerTest, RemovalOfTheWholeBranchIsSurvived) {
    {
        const OHPParamsVtSynchronizer synchronizer(m_params, {});
        Tree::Instance()->Clear();
        m_params.SetThreshold(100, nullptr);
        m_params.SetValid(true, nullptr);
        ExpectParams(100, true);
        EXPECT_EQ(Tree::Instance()->GetValueCount(), 0);
    }
    EXPECT_EQ(m_params.GetObserverCount(), 0U);
}

TEST_F(OHPParamsVtSynchronizerTest, ValueThatAnnouncesGoingAwayButIsNotBeingRemovedIsKept) {
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    Threshold()->HasChanged(TChangeCode::GoingAway, nullptr);
    Valid()->HasChanged(TChangeCode::GoingAway, nullptr);
    m_params.SetThreshold(100, nullptr);
    m_params.SetValid(true, nullptr);
    ExpectTree(100, true);
    Threshold()->SetValue(200, nullptr);
    Valid()->SetValue(false, nullptr);
    ExpectParams(200, false);
}

TEST_F(OHPParamsVtSynchronizerTest, RenamedValueStaysSynchronised) {
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    ValueNumericInt* threshold = Threshold();
    threshold->SetName(u"Limit"_s, nullptr);
    m_params.SetThreshold(100, nullptr);
    EXPECT_EQ(threshold->GetValue(), 100);
    threshold->SetValue(200, nullptr);
    ExpectParams(200, false);
    EXPECT_FALSE(Threshold());
}

TEST_F(OHPParamsVtSynchronizerTest, ValueInsertedAgainAfterItsRemovalIsLeftAlone) {
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    Tree::Instance()->Remove(Threshold());
    auto* newOne = InsertInTree<ValueNumericInt>(THRESHOLD_PATH, 5, 0, 900, 1);
    ASSERT_EQ(Threshold(), newOne);
    m_params.SetThreshold(100, nullptr);
    EXPECT_EQ(newOne->GetValue(), 5);
    newOne->SetValue(6, nullptr);
    ExpectParams(100, false);
    // A later synchroniser takes it up.
    const OHPParamsVtSynchronizer later(m_params, {});
    ExpectParams(6, false);
}

TEST_F(OHPParamsVtSynchronizerTest, OtherCodesAndSubjectsAreIgnored) {
    OHPParamsVtSynchronizer synchronizer(m_params, {});
    m_params.SetThreshold(100, &synchronizer);
    for (const auto code : {TChangeCode::GoingAway, TChangeCode::ListReplaced, TChangeCode::NodeGoingAway}) {
        synchronizer.Update(&m_params, code);
    }
    OverheadPassParams copy(m_params); // it has the observers of the original
    copy.SetThreshold(200, nullptr);
    Tree::Instance()->Remove(Valid());
    synchronizer.Update(nullptr, TChangeCode::Changed);
    synchronizer.Update(nullptr, TChangeCode::GoingAway);
    EXPECT_EQ(Threshold()->GetValue(), 600);
    ExpectParams(100, false);
    synchronizer.Update(&m_params, TChangeCode::Changed);
    EXPECT_EQ(Threshold()->GetValue(), 100);
}

TEST_F(OHPParamsVtSynchronizerTest, DestructionLeavesValuesAndParameters) {
    {
        const OHPParamsVtSynchronizer synchronizer(m_params, {});
        EXPECT_EQ(m_params.GetObserverCount(), 1U);
        EXPECT_EQ(Threshold()->GetObserverCount(), 1U);
        EXPECT_EQ(Valid()->GetObserverCount(), 1U);
    }
    EXPECT_EQ(m_params.GetObserverCount(), 0U);
    EXPECT_EQ(Threshold()->GetObserverCount(), 0U);
    EXPECT_EQ(Valid()->GetObserverCount(), 0U);
    m_params.SetThreshold(100, nullptr);
    ExpectTree(600, false);
}

TEST_F(OHPParamsVtSynchronizerTest, ParametersThatAreGoneAreNotTouched) {
    auto params = std::make_unique<OverheadPassParams>();
    auto synchronizer = std::make_unique<OHPParamsVtSynchronizer>(*params, QString());
    params.reset();
    Threshold()->SetValue(100, nullptr);
    Valid()->SetValue(true, nullptr);
    synchronizer->Update(nullptr, TChangeCode::Changed);
    Tree::Instance()->Remove(Threshold());
    synchronizer.reset();
    EXPECT_EQ(Valid()->GetObserverCount(), 0U);
}

TEST_F(OHPParamsVtSynchronizerTest, ObserverMayRemoveTheValueWhileItIsRead) {
    InsertInTree<ValueNumericInt>(THRESHOLD_PATH, 5, 0, 900, 1);
    InsertInTree<ValueBool>(VALID_PATH, true);
    FunctionObserver reaction([](Observable*, TChangeCode) { Tree::Instance()->Clear(); });
    m_params.AddObserver(&reaction);
    const OHPParamsVtSynchronizer synchronizer(m_params, {});
    EXPECT_EQ(m_params.GetThreshold(), 5);
    m_params.DeleteObserver(&reaction);
    // The threshold value went while it was read; the flag was made again.
    m_params.SetValid(true, nullptr);
    EXPECT_FALSE(Threshold());
    EXPECT_TRUE(Valid()->GetValue());
}

TEST_F(OHPParamsVtSynchronizerTest, ObserverMayDestroyTheParametersMeanwhile) {
    auto params = std::make_unique<OverheadPassParams>();
    const OHPParamsVtSynchronizer synchronizer(*params, {});
    FunctionObserver reaction([&params](Observable*, TChangeCode) { params.reset(); });
    Threshold()->AddObserver(&reaction);
    params->SetThreshold(100, nullptr);
    EXPECT_FALSE(params);
    ExpectTree(100, false);
}

TEST_F(OHPParamsVtSynchronizerTest, ObserverMayDestroySynchronizerParametersAndValuesMeanwhile) {
    auto params = std::make_unique<OverheadPassParams>();
    auto synchronizer = std::make_unique<OHPParamsVtSynchronizer>(*params, QString());
    FunctionObserver reaction([&](Observable*, TChangeCode) {
        Tree::Instance()->Clear();
        synchronizer.reset();
        params.reset();
    });
    Threshold()->AddObserver(&reaction);
    params->SetThreshold(100, nullptr);
    EXPECT_FALSE(params);
    EXPECT_FALSE(synchronizer);
}

TEST_F(OHPParamsVtSynchronizerTest, SynchronizersOfOneBranchKeepTheirSetsEqual) {
    OverheadPassParams other;
    const OHPParamsVtSynchronizer one(m_params, {});
    const OHPParamsVtSynchronizer two(other, {});
    m_params.SetThreshold(100, nullptr);
    other.SetValid(true, nullptr);
    ExpectParams(100, true);
    EXPECT_EQ(other.GetThreshold(), 100);
    ExpectTree(100, true);
}

} // namespace
