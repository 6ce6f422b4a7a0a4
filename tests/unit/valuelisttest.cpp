#include "valueframework/valuelist.h"

#include "support/observers.h"
#include "support/printing.h"
#include "support/valuesamples.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QuadFloat ONE(1, 2, 3, 4);
const QuadFloat TWO(-0.5, 0, 1e-300, 1e300);

class ValueListTest : public testing::Test {
protected:
    ValueListTest() {
        list.PushBack(ONE, nullptr);
        list.PushBack(TWO, nullptr);
        list.AddObserver(&observer);
    }

    ValueQuadFloatList list;
    CodeObserver observer;
};

TEST(ValueList, StartsEmpty) {
    ValueQuadFloatList list;
    EXPECT_TRUE(list.Empty());
    EXPECT_EQ(list.GetCount(), 0U);
    EXPECT_TRUE(list.IsLast());
    EXPECT_EQ(list.GetStringValue(), QString());
}

TEST_F(ValueListTest, KeepsItsElementsInOrder) {
    EXPECT_FALSE(list.Empty());
    EXPECT_EQ(list.GetCount(), 2U);
    EXPECT_EQ(list.GetElements(), (std::vector{ONE, TWO}));
}

TEST_F(ValueListTest, PushBackNotifiesEachTimeButNotTheOriginator) {
    list.PushBack(ONE, nullptr);
    list.PushBack(ONE, nullptr);
    list.PushBack(ONE, &observer);
    EXPECT_EQ(observer.codes, std::vector(2, TChangeCode::Changed));
    EXPECT_EQ(list.GetCount(), 5U);
}

TEST_F(ValueListTest, AnElementOfTheListItselfCanBeAppended) {
    for (int i = 0; i < 100; ++i) {
        list.PushBack(list.GetElements().front(), nullptr);
    }
    EXPECT_EQ(list.GetElements().back(), ONE);
}

TEST_F(ValueListTest, RemoveFirstTakesFromTheFrontAndNotifiesOnceIfItTakesAnything) {
    list.RemoveFirst(0);
    EXPECT_TRUE(observer.codes.empty());
    list.RemoveFirst(1);
    EXPECT_EQ(list.GetElements(), std::vector{TWO});
    EXPECT_EQ(observer.codes.size(), 1U);
    list.RemoveFirst(7, &observer);
    EXPECT_TRUE(list.Empty());
    EXPECT_EQ(observer.codes.size(), 1U);
}

TEST_F(ValueListTest, ClearNotifiesOnceAndAnEmptyListNotifiesNobody) {
    list.Clear(nullptr);
    EXPECT_TRUE(list.Empty());
    list.Clear(nullptr);
    EXPECT_EQ(observer.codes, std::vector{TChangeCode::Changed});
    list.PushBack(ONE, &observer);
    list.Clear(&observer);
    EXPECT_EQ(observer.codes.size(), 1U);
}

TEST_F(ValueListTest, AWalkVisitsEachElementInOrder) {
    std::vector<QuadFloat> seen;
    for (list.ToBegin(); !list.IsLast();) {
        seen.push_back(list.Next());
    }
    EXPECT_EQ(seen, (std::vector{ONE, TWO}));
    EXPECT_TRUE(list.IsLast());
    list.ToBegin();
    EXPECT_EQ(list.Next(), ONE);
    list.ToBegin();
    EXPECT_EQ(list.Next(), ONE);
}

TEST_F(ValueListTest, AWalkMayChangeTheElementsAndSaysSo) {
    list.ToBegin();
    list.Next().second = 99;
    EXPECT_TRUE(observer.codes.empty());
    list.HasChanged(TChangeCode::Changed, nullptr);
    EXPECT_EQ(list.GetElements()[0], QuadFloat(1, 99, 3, 4));
    EXPECT_EQ(observer.codes, std::vector{TChangeCode::Changed});
}

TEST_F(ValueListTest, AnElementAppendedDuringAWalkIsVisited) {
    list.ToBegin();
    list.Next();
    list.Next();
    EXPECT_TRUE(list.IsLast());
    list.PushBack(ONE, nullptr);
    EXPECT_FALSE(list.IsLast());
    EXPECT_EQ(list.Next(), ONE);
}

TEST_F(ValueListTest, AWalkEndsWhenTheContentIsReplaced) {
    const auto walkToTheEnd = [&] {
        for (list.ToBegin(); !list.IsLast();) {
            list.Next();
        }
    };
    walkToTheEnd();
    list.Clear(nullptr);
    EXPECT_TRUE(list.IsLast());
    list.PushBack(ONE, nullptr);
    EXPECT_EQ(list.Next(), ONE);
    EXPECT_TRUE(list.SetStringValue(u"5,6,7,8;"_s, nullptr));
    EXPECT_EQ(list.Next(), QuadFloat(5, 6, 7, 8));
    list.Assign(ValueQuadFloatList());
    EXPECT_TRUE(list.IsLast());
}

TEST_F(ValueListTest, AnElementIsInTheTextWithASemicolonBehindIt) {
    EXPECT_EQ(list.GetStringValue(), u"1,2,3,4;-0.5,0,1e-300,1e+300;"_s);
}

TEST_F(ValueListTest, AnEmptyTextIsAnEmptyList) {
    EXPECT_TRUE(list.SetStringValue({}, nullptr));
    EXPECT_TRUE(list.Empty());
    EXPECT_EQ(observer.codes.size(), 1U);
}

TEST_F(ValueListTest, AMalformedTextLeavesTheListWhole) {
    for (const QString& text :
         {u" "_s, u";"_s, u"1,2,3,4"_s, u"1,2,3;"_s, u"1,2,3,4,5;"_s, u"1,2,3,4;;"_s, u";1,2,3,4;"_s,
          u"1,2,3,4;5,6,7,8"_s, u"1,2,3,x;"_s, u"1,2,3,nan;"_s, u"1,2,3,4\\;"_s, u"1,2,3,4\\u00;"_s,
          u"1,2,3,4;\0"_s, QString(1'000'000, u';'), QString(1'000'000, u',')}) {
        EXPECT_FALSE(list.SetStringValue(text, nullptr)) << text.left(30).toStdString();
    }
    EXPECT_EQ(list.GetElements(), (std::vector{ONE, TWO}));
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(ValueListTest, AHundredThousandElementsRoundTrip) {
    ValueBearingList source;
    for (int i = 0; i < 100'000; ++i) {
        source.PushBack(SampleBearing(static_cast<quint16>(i % 3600)), nullptr);
    }
    ValueBearingList target;
    EXPECT_TRUE(target.SetStringValue(source.GetStringValue(), nullptr));
    EXPECT_TRUE(target.Compare(&source));
}

TEST_F(ValueListTest, ListsAreEqualWhenAllElementsAre) {
    const std::unique_ptr<ValueBase> clone = list.Clone();
    EXPECT_TRUE(list.Compare(clone.get()));
    list.PushBack(ONE, nullptr);
    EXPECT_FALSE(list.Compare(clone.get()));
}

} // namespace
