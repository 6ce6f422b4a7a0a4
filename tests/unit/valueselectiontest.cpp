#include "valueframework/valueselection.h"

#include "support/observers.h"
#include "support/printing.h"
#include "valueframework/valuetypes.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;

namespace {

class ValueSelectionTest : public testing::Test {
protected:
    ValueSelectionTest() {
        selection.AddItem({u"low"_s, 1.5, 10}, nullptr);
        selection.AddItem({u"high"_s, 2.5, 20}, nullptr);
        selection.AddItem({u"high"_s, 3.5, 20}, nullptr); // same name and key again
        selection.AddObserver(&observer);
    }

    ValueSelection selection;
    CodeObserver observer;
};

TEST(ValueSelection, StartsWithoutItemsAndWithoutAChoice) {
    const ValueSelection selection;
    EXPECT_TRUE(selection.GetItems().empty());
    EXPECT_EQ(selection.GetCurrentIndex(), -1);
    EXPECT_EQ(selection.GetCurrentKey(), 0);
    EXPECT_EQ(selection.GetStringValue(), QString());
}

TEST(ValueSelection, WithoutItemsNothingCanBeChosen) {
    ValueSelection selection;
    EXPECT_FALSE(selection.SetCurrentIndex(0, nullptr));
    EXPECT_FALSE(selection.SetCurrentIndex(-1, nullptr));
    EXPECT_FALSE(selection.SetCurrentKey(0, nullptr));
    EXPECT_FALSE(selection.SetStringValue({}, nullptr));
    EXPECT_EQ(selection.GetCurrentIndex(), -1);
}

TEST_F(ValueSelectionTest, TheItemsKeepTheirOrderAndTheirParts) {
    ASSERT_EQ(selection.GetItems().size(), 3U);
    EXPECT_EQ(selection.GetItems()[1].GetName(), u"high"_s);
    EXPECT_EQ(selection.GetItems()[1].GetValue(), 2.5);
    EXPECT_EQ(selection.GetItems()[1].GetKey(), 20);
}

TEST_F(ValueSelectionTest, TheFirstItemIsCurrentUntilAnotherOneIsChosen) {
    EXPECT_EQ(selection.GetCurrentIndex(), 0);
    EXPECT_EQ(selection.GetCurrentKey(), 10);
    EXPECT_EQ(selection.GetStringValue(), u"low"_s);
}

TEST_F(ValueSelectionTest, AnItemIsChosenByKeyNameOrPosition) {
    EXPECT_TRUE(selection.SetCurrentKey(20, nullptr));
    EXPECT_EQ(selection.GetCurrentIndex(), 1) << "the first one with this key";
    EXPECT_TRUE(selection.SetStringValue(u"low"_s, nullptr));
    EXPECT_EQ(selection.GetCurrentIndex(), 0);
    EXPECT_TRUE(selection.SetStringValue(u"high"_s, nullptr));
    EXPECT_EQ(selection.GetCurrentIndex(), 1) << "the first one with this name";
    EXPECT_TRUE(selection.SetCurrentIndex(2, nullptr));
    EXPECT_EQ(selection.GetCurrentIndex(), 2);
    EXPECT_EQ(selection.GetCurrentKey(), 20);
    EXPECT_EQ(observer.codes, std::vector(4, TChangeCode::Changed));
}

TEST_F(ValueSelectionTest, WhatIsNoItemIsRefusedAndNotifiesNobody) {
    EXPECT_FALSE(selection.SetCurrentIndex(-1, nullptr));
    EXPECT_FALSE(selection.SetCurrentIndex(3, nullptr));
    EXPECT_FALSE(selection.SetCurrentKey(0, nullptr));
    for (const QString& name : {u""_s, u"LOW"_s, u"low "_s, u"low\0"_s, u"10"_s, QString(1'000'000, u'x')}) {
        EXPECT_FALSE(selection.SetStringValue(name, nullptr));
    }
    EXPECT_EQ(selection.GetCurrentIndex(), 0);
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(ValueSelectionTest, ChoosingTheCurrentItemAgainNotifiesNobody) {
    EXPECT_TRUE(selection.SetCurrentIndex(0, nullptr));
    EXPECT_TRUE(selection.SetCurrentKey(10, nullptr));
    EXPECT_TRUE(selection.SetStringValue(u"low"_s, nullptr));
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(ValueSelectionTest, TheOriginatorIsNotNotified) {
    selection.SetCurrentIndex(1, &observer);
    selection.AddItem({u"more"_s, 0.0, 30}, &observer);
    selection.Clear(&observer);
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(ValueSelectionTest, AddingAnItemKeepsTheChoiceAndNotifies) {
    selection.SetCurrentIndex(1, nullptr);
    selection.AddItem({u"more"_s, 0.0, 30}, nullptr);
    EXPECT_EQ(selection.GetCurrentIndex(), 1);
    EXPECT_EQ(observer.codes.size(), 2U);
}

TEST_F(ValueSelectionTest, ClearRemovesItemsAndChoiceAndNotifiesOnce) {
    selection.Clear(nullptr);
    EXPECT_TRUE(selection.GetItems().empty());
    EXPECT_EQ(selection.GetCurrentIndex(), -1);
    EXPECT_EQ(selection.GetCurrentKey(), 0);
    EXPECT_EQ(observer.codes, std::vector{TChangeCode::Changed});
    selection.Clear(nullptr);
    EXPECT_EQ(observer.codes.size(), 1U);
    selection.AddItem({u"new"_s, 0.0, 5}, nullptr);
    EXPECT_EQ(selection.GetCurrentKey(), 5);
}

TEST_F(ValueSelectionTest, AddItemsFillsFromATableAndNotifiesOnce) {
    const std::vector<SelItemDesc> items = {{u"a"_s, 0.5, 1}, {u"b"_s, -0.5, -2}, {u"not added"_s, 0.0, 3}};
    SelItemDesc::AddItems(items.data(), 2, &selection);
    ASSERT_EQ(selection.GetItems().size(), 5U);
    EXPECT_EQ(selection.GetItems()[3], SelectionItem(u"a"_s, 0.5, 1));
    EXPECT_EQ(selection.GetItems()[4], SelectionItem(u"b"_s, -0.5, -2));
    EXPECT_EQ(observer.codes, std::vector{TChangeCode::Changed});
}

TEST_F(ValueSelectionTest, AddItemsOfNothingAddsNothingAndNotifiesNobody) {
    const SelItemDesc item(u"a"_s, 0.5, 1);
    SelItemDesc::AddItems(nullptr, 1, &selection);
    SelItemDesc::AddItems(&item, 0, &selection);
    SelItemDesc::AddItems(&item, -1, &selection);
    SelItemDesc::AddItems(&item, 1, nullptr);
    EXPECT_EQ(selection.GetItems().size(), 3U);
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(ValueSelectionTest, AssignTakesOverItemsAndChoice) {
    ValueSelection target;
    EXPECT_TRUE(selection.SetCurrentIndex(2, nullptr));
    EXPECT_TRUE(target.Assign(selection));
    EXPECT_EQ(target.GetItems(), selection.GetItems());
    EXPECT_EQ(target.GetCurrentIndex(), 2);
}

TEST_F(ValueSelectionTest, ItemsAndChoiceBothCountWhenComparing) {
    const std::unique_ptr<ValueBase> clone = selection.Clone();
    EXPECT_TRUE(selection.Compare(clone.get()));
    selection.SetCurrentIndex(1, nullptr);
    EXPECT_FALSE(selection.Compare(clone.get()));
    selection.SetCurrentIndex(0, nullptr);
    selection.AddItem({u"more"_s, 0.0, 30}, nullptr);
    EXPECT_FALSE(selection.Compare(clone.get()));
}

} // namespace
