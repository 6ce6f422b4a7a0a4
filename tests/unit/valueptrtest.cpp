#include "valueframework/valueptr.h"

#include "support/observers.h"
#include "support/printing.h"
#include "valueframework/valueaccess.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;
using ZANPlatform::GetOrCreateValue;
using ZANPlatform::ValuePtr;

namespace {

class ValuePtrTest : public testing::Test {
protected:
    ~ValuePtrTest() override { tree.Clear(); }

    Tree& tree = *Tree::Instance();
    ValueInt* value = GetOrCreateValue<ValueInt>(u"/A/v"_s);
    CodeObserver observer;
};

/// Works with a value as a part of an application does.
class Follower : public IObserver {
public:
    void Update(Observable* subject, TChangeCode code) override {
        if (value.LetGoIfGoing(subject, code)) {
            return;
        }
        contents.push_back(value->GetValue());
    }

    ValuePtr<ValueInt> value;
    std::vector<int> contents;
};

} // namespace

TEST_F(ValuePtrTest, IsNullBeforeAValueIsFound) {
    ValuePtr<ValueInt> pointer;
    EXPECT_FALSE(pointer);
    EXPECT_EQ(pointer.get(), nullptr);
    EXPECT_FALSE(pointer.Find(u"/A/missing"_s, &observer));
    EXPECT_FALSE(pointer);
}

TEST_F(ValuePtrTest, FindsAValueOfItsTypeOnly) {
    ValuePtr<ValueInt> pointer;
    EXPECT_TRUE(pointer.Find(u"/A/v"_s));
    EXPECT_EQ(pointer.get(), value);
    ValuePtr<ValueBool> ofAnotherType;
    EXPECT_FALSE(ofAnotherType.Find(u"/A/v"_s));
}

TEST_F(ValuePtrTest, FindsANodeAndLetsItGo) {
    Node* const node = tree.GetNode(u"/A"_s);
    ValuePtr<Node> pointer;
    ASSERT_TRUE(pointer.Find(u"/A"_s, &observer));
    EXPECT_EQ(pointer.get(), node);
    EXPECT_FALSE(pointer.LetGoIfGoing(node, TChangeCode::GoingAway));
    EXPECT_TRUE(pointer.LetGoIfGoing(node, TChangeCode::NodeGoingAway));
    EXPECT_FALSE(pointer);
    EXPECT_EQ(node->GetObserverCount(), 0U);
}

TEST_F(ValuePtrTest, WithoutAnObserverTheValueIsOnlyRead) {
    ValuePtr<ValueInt> pointer;
    pointer.Find(u"/A/v"_s);
    EXPECT_EQ(value->GetObserverCount(), 0U);
}

TEST_F(ValuePtrTest, TheObserverIsNotifiedOfChangesAndNotOfItsOwn) {
    Follower follower;
    follower.value.Find(u"/A/v"_s, &follower);
    value->SetValue(1, nullptr);
    value->SetValue(2, &follower);
    value->SetValue(3, nullptr);
    EXPECT_EQ(follower.contents, (std::vector{1, 3}));
}

TEST_F(ValuePtrTest, WhatIsHeldStaysWhenAnotherOneIsLookedFor) {
    GetOrCreateValue<ValueInt>(u"/A/w"_s);
    ValuePtr<ValueInt> pointer;
    pointer.Find(u"/A/v"_s, &observer);
    EXPECT_TRUE(pointer.Find(u"/A/w"_s, &observer));
    EXPECT_EQ(pointer.get(), value);
    EXPECT_EQ(value->GetObserverCount(), 1U);
}

TEST_F(ValuePtrTest, AValueThatTheCallerHasFoundTakesThePlaceOfTheOneBefore) {
    auto* const other = GetOrCreateValue<ValueInt>(u"/A/w"_s);
    ValuePtr<ValueInt> pointer;
    pointer.Hold(value, &observer);
    pointer.Hold(other, &observer);
    EXPECT_EQ(pointer.get(), other);
    EXPECT_EQ(value->GetObserverCount(), 0U);
    EXPECT_EQ(other->GetObserverCount(), 1U);
    pointer.Hold(nullptr, &observer);
    EXPECT_FALSE(pointer);
    EXPECT_EQ(other->GetObserverCount(), 0U);
}

TEST_F(ValuePtrTest, AValueThatGoesAwayIsLetGoAndAnotherOneCanBeFoundAtItsPath) {
    Follower follower;
    follower.value.Find(u"/A/v"_s, &follower);
    // What follows the follower in the notification sees it without its value, which is still there.
    bool isHeld = true;
    FunctionObserver later([&](Observable*, TChangeCode) { isHeld = bool(follower.value); });
    value->AddObserver(&later);
    tree.Remove(value);
    EXPECT_FALSE(isHeld);
    EXPECT_TRUE(follower.contents.empty());

    auto* const next = GetOrCreateValue<ValueInt>(u"/A/v"_s);
    EXPECT_TRUE(follower.value.Find(u"/A/v"_s, &follower));
    next->SetValue(4, nullptr);
    EXPECT_EQ(follower.contents, std::vector{4});
}

TEST_F(ValuePtrTest, OnlyItsOwnSubjectsGoingAwayCounts) {
    auto* const other = GetOrCreateValue<ValueInt>(u"/A/w"_s);
    ValuePtr<ValueInt> pointer;
    pointer.Find(u"/A/v"_s, &observer);
    EXPECT_FALSE(pointer.LetGoIfGoing(other, TChangeCode::GoingAway));
    EXPECT_FALSE(pointer.LetGoIfGoing(nullptr, TChangeCode::GoingAway));
    EXPECT_FALSE(pointer.LetGoIfGoing(value, TChangeCode::Changed));
    EXPECT_FALSE(pointer.LetGoIfGoing(value, TChangeCode::NodeGoingAway));
    EXPECT_EQ(pointer.get(), value);
    EXPECT_FALSE(ValuePtr<ValueInt>().LetGoIfGoing(nullptr, TChangeCode::GoingAway));
}

TEST_F(ValuePtrTest, KnowsItsSubject) {
    ValuePtr<ValueInt> pointer;
    EXPECT_FALSE(pointer.Is(nullptr));
    pointer.Find(u"/A/v"_s);
    EXPECT_TRUE(pointer.Is(value));
    EXPECT_FALSE(pointer.Is(tree.GetNode(u"/A"_s)));
    EXPECT_FALSE(pointer.Is(nullptr));
}

TEST_F(ValuePtrTest, BecomesNullWhenTheValueIsDestroyedWithoutANotice) {
    auto outside = std::make_unique<ValueInt>();
    ValuePtr<ValueInt> pointer;
    pointer.Hold(outside.get(), &observer);
    outside.reset();
    EXPECT_FALSE(pointer);
    pointer.LetGo();
}

TEST_F(ValuePtrTest, ItsEndIsTheEndOfTheObservation) {
    {
        ValuePtr<ValueInt> pointer;
        pointer.Find(u"/A/v"_s, &observer);
        EXPECT_EQ(value->GetObserverCount(), 1U);
    }
    EXPECT_EQ(value->GetObserverCount(), 0U);
}

TEST_F(ValuePtrTest, WhoObservesTheValueByOtherMeansGoesOnObservingIt) {
    value->AddObserver(&observer);
    ValuePtr<ValueInt> pointer;
    pointer.Find(u"/A/v"_s, &observer);
    pointer.LetGo();
    EXPECT_EQ(value->GetObserverCount(), 1U);
}

TEST_F(ValuePtrTest, ACopyPointsToTheSameValueAndObservesNothing) {
    auto* const other = GetOrCreateValue<ValueInt>(u"/A/w"_s);
    ValuePtr<ValueInt> pointer;
    pointer.Find(u"/A/v"_s, &observer);
    ValuePtr<ValueInt> copy(pointer);
    EXPECT_EQ(copy.get(), value);
    copy.LetGo();
    EXPECT_EQ(value->GetObserverCount(), 1U);

    ValuePtr<ValueInt> assigned;
    assigned.Hold(other, &observer);
    assigned = pointer;
    EXPECT_EQ(assigned.get(), value);
    EXPECT_EQ(other->GetObserverCount(), 0U);
    ValuePtr<ValueInt>& itself = pointer;
    pointer = itself;
    EXPECT_EQ(value->GetObserverCount(), 1U);
}

TEST_F(ValuePtrTest, AMoveTakesTheObservationAlong) {
    ValuePtr<ValueInt> first;
    ASSERT_TRUE(first.Find(u"/A/v"_s, &observer));
    ValuePtr<ValueInt> second(std::move(first));
    EXPECT_FALSE(first); // NOLINT(bugprone-use-after-move): that is the rule
    EXPECT_EQ(second.get(), value);
    value->SetValue(1);
    EXPECT_EQ(observer.codes.size(), 1U);
    ValuePtr<ValueInt> third;
    third = std::move(second);
    value->SetValue(2);
    EXPECT_EQ(observer.codes.size(), 2U);
    third.LetGo();
    value->SetValue(3);
    EXPECT_EQ(observer.codes.size(), 2U);
}

TEST_F(ValuePtrTest, PointersInAVectorGoOnObservingWhenItGrows) {
    std::vector<ValuePtr<ValueInt>> pointers;
    for (const QString& path : {u"/A/v"_s, u"/A/w"_s, u"/A/x"_s}) {
        GetOrCreateValue<ValueInt>(path);
        pointers.emplace_back().Find(path, &observer);
    }
    for (const ValuePtr<ValueInt>& pointer : pointers) {
        pointer->SetValue(7);
    }
    EXPECT_EQ(observer.codes.size(), 3U);
}

TEST_F(ValuePtrTest, AnObserverMayDeleteItselfInANotice) {
    struct Mortal : IObserver {
        void Update(Observable* subject, TChangeCode code) override {
            if (m_value.LetGoIfGoing(subject, code)) {
                delete this;
            }
        }
        ValuePtr<ValueInt> m_value;
    };
    auto* const mortal = new Mortal;
    mortal->m_value.Find(u"/A/v"_s, mortal);
    value->AddObserver(&observer);
    tree.Remove(value);
    EXPECT_EQ(observer.codes, std::vector{TChangeCode::GoingAway});
}

TEST_F(ValuePtrTest, OutlivesItsObserver) {
    ValuePtr<ValueInt> pointer;
    {
        CodeObserver mortal;
        pointer.Find(u"/A/v"_s, &mortal);
    }
    EXPECT_EQ(value->GetObserverCount(), 0U);
    EXPECT_EQ(pointer.get(), value);
    pointer.LetGo();
    EXPECT_FALSE(pointer);
}
