#include "zancommon/ohpparamssynchronizer.h"

#include "support/observers.h"

#include <gtest/gtest.h>

#include <memory>

using KvZANCommon::OHPParamsSynchronizer;
using KvZANCommon::OverheadPassParams;

namespace {

void ExpectContent(const OverheadPassParams& params, int threshold, bool isValid) {
    EXPECT_EQ(params.GetThreshold(), threshold);
    EXPECT_EQ(params.IsValid(), isValid);
}

class OHPParamsSynchronizerTest : public testing::Test {
protected:
    OverheadPassParams m_first;
    OverheadPassParams m_second;
};

TEST_F(OHPParamsSynchronizerTest, ConstructionCopiesTheFirstSetIntoTheSecond) {
    m_first.SetThreshold(100, nullptr);
    m_first.SetValid(true, nullptr);
    m_second.SetThreshold(200, nullptr);
    CodeObserver firstObserver;
    CodeObserver secondObserver;
    m_first.AddObserver(&firstObserver);
    m_second.AddObserver(&secondObserver);
    const OHPParamsSynchronizer synchronizer(m_first, m_second);
    ExpectContent(m_first, 100, true);
    ExpectContent(m_second, 100, true);
    EXPECT_TRUE(firstObserver.codes.empty());
    EXPECT_EQ(secondObserver.codes.size(), 2U);
}

TEST_F(OHPParamsSynchronizerTest, ChangesOfEitherSetReachTheOtherOnceWithoutComingBack) {
    const OHPParamsSynchronizer synchronizer(m_first, m_second);
    CodeObserver firstObserver;
    CodeObserver secondObserver;
    m_first.AddObserver(&firstObserver);
    m_second.AddObserver(&secondObserver);

    m_first.SetThreshold(1, nullptr);
    m_first.SetValid(true, nullptr);
    ExpectContent(m_second, 1, true);
    m_second.SetThreshold(2, nullptr);
    m_second.SetValid(false, nullptr);
    ExpectContent(m_first, 2, false);
    EXPECT_EQ(firstObserver.codes.size(), 4U);
    EXPECT_EQ(secondObserver.codes.size(), 4U);
}

TEST_F(OHPParamsSynchronizerTest, OriginatorOfAChangeIsNotNotified) {
    const OHPParamsSynchronizer synchronizer(m_first, m_second);
    CodeObserver originator;
    m_first.AddObserver(&originator);
    m_first.SetThreshold(1, &originator);
    ExpectContent(m_second, 1, false);
    EXPECT_TRUE(originator.codes.empty());
}

TEST_F(OHPParamsSynchronizerTest, ItsOwnChangeDoesNotComeBack) {
    OHPParamsSynchronizer synchronizer(m_first, m_second);
    m_first.SetValid(true, &synchronizer);
    m_first.SetThreshold(1, nullptr);
    ExpectContent(m_first, 1, true);
    ExpectContent(m_second, 1, true);
}

TEST_F(OHPParamsSynchronizerTest, OnlyCode3IsHandled) {
    OHPParamsSynchronizer synchronizer(m_first, m_second);
    m_first.SetThreshold(1, &synchronizer);
    for (const auto code : {TChangeCode::GoingAway, TChangeCode::ListReplaced, TChangeCode::NodeGoingAway}) {
        synchronizer.Update(&m_first, code);
        EXPECT_EQ(m_second.GetThreshold(), 600);
    }
    synchronizer.Update(&m_first, TChangeCode::Changed);
    EXPECT_EQ(m_second.GetThreshold(), 1);
}

TEST_F(OHPParamsSynchronizerTest, OtherSubjectsAreIgnored) {
    OHPParamsSynchronizer synchronizer(m_first, m_second);
    m_first.SetThreshold(1, &synchronizer);
    OverheadPassParams copy(m_first); // it has the observers of the first set
    copy.SetThreshold(2, nullptr);
    synchronizer.Update(nullptr, TChangeCode::Changed);
    ExpectContent(m_first, 1, false);
    ExpectContent(m_second, 600, false);
}

TEST_F(OHPParamsSynchronizerTest, DestructionLeavesBothSets) {
    {
        const OHPParamsSynchronizer synchronizer(m_first, m_second);
        EXPECT_EQ(m_first.GetObserverCount(), 1U);
        EXPECT_EQ(m_second.GetObserverCount(), 1U);
    }
    EXPECT_EQ(m_first.GetObserverCount(), 0U);
    EXPECT_EQ(m_second.GetObserverCount(), 0U);
    m_first.SetThreshold(1, nullptr);
    ExpectContent(m_second, 600, false);
}

TEST_F(OHPParamsSynchronizerTest, SetThatIsGoneIsNotTouched) {
    auto first = std::make_unique<OverheadPassParams>();
    auto synchronizer = std::make_unique<OHPParamsSynchronizer>(*first, m_second);
    first.reset();
    m_second.SetThreshold(1, nullptr);
    ExpectContent(m_second, 1, false);
    synchronizer->Update(nullptr, TChangeCode::Changed);
    synchronizer.reset();
    EXPECT_EQ(m_second.GetObserverCount(), 0U);
}

TEST_F(OHPParamsSynchronizerTest, ChainsAndRingsOfSetsStayEqual) {
    OverheadPassParams third;
    const OHPParamsSynchronizer one(m_first, m_second);
    const OHPParamsSynchronizer two(m_second, third);
    const OHPParamsSynchronizer three(third, m_first);
    third.SetThreshold(1, nullptr);
    m_second.SetValid(true, nullptr);
    for (const OverheadPassParams* params : {&m_first, &m_second, &third}) {
        ExpectContent(*params, 1, true);
    }
}

TEST_F(OHPParamsSynchronizerTest, SetJoinedWithItselfStaysUsable) {
    const OHPParamsSynchronizer synchronizer(m_first, m_first);
    m_first.SetThreshold(1, nullptr);
    ExpectContent(m_first, 1, false);
}

TEST_F(OHPParamsSynchronizerTest, WhatAnObserverChangesDuringTheCopyIsKept) {
    FunctionObserver reaction([this](Observable*, TChangeCode) { m_second.SetValid(true, nullptr); });
    const OHPParamsSynchronizer synchronizer(m_first, m_second);
    m_second.AddObserver(&reaction);
    m_first.SetThreshold(1, nullptr);
    ExpectContent(m_first, 1, true);
    ExpectContent(m_second, 1, true);
}

TEST_F(OHPParamsSynchronizerTest, ObserverMayDestroyTheSynchronizerMeanwhile) {
    auto synchronizer = std::make_unique<OHPParamsSynchronizer>(m_first, m_second);
    FunctionObserver reaction([&synchronizer](Observable*, TChangeCode) { synchronizer.reset(); });
    m_second.AddObserver(&reaction);
    m_first.SetThreshold(1, nullptr);
    EXPECT_FALSE(synchronizer);
    EXPECT_EQ(m_first.GetObserverCount(), 0U);
}

TEST_F(OHPParamsSynchronizerTest, ObserverMayDestroyASetMeanwhile) {
    auto second = std::make_unique<OverheadPassParams>();
    const OHPParamsSynchronizer synchronizer(m_first, *second);
    FunctionObserver reaction([&second](Observable*, TChangeCode) { second.reset(); });
    second->AddObserver(&reaction);
    m_first.SetThreshold(1, nullptr);
    EXPECT_FALSE(second);
    m_first.SetValid(true, nullptr);
    ExpectContent(m_first, 1, true);
}

} // namespace
