#include "valueframework/valuedescriptor.h"

#include "support/observers.h"
#include "support/printing.h"
#include "valueframework/tree.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

class ValueDescriptorTest : public testing::Test {
protected:
    ValueDescriptorTest() { ValueDescriptor::SetBasePath(u"/DEVICES/ZANServer"_s); }
    ~ValueDescriptorTest() override {
        tree.Clear();
        ValueDescriptor::SetBasePath({});
    }

    Tree& tree = *Tree::Instance();
};

TEST(ValueDescriptor, TheBasePathIsEmptyAtFirst) {
    EXPECT_EQ(ValueDescriptor::GetBasePath(), QString());
}

TEST_F(ValueDescriptorTest, TheBasePathIsOneForTheProcess) {
    EXPECT_EQ(ValueDescriptor::GetBasePath(), u"/DEVICES/ZANServer"_s);
    ValueDescriptor::SetBasePath(u"/X"_s);
    EXPECT_EQ(ValueDescriptor::GetBasePath(), u"/X"_s);
}

TEST_F(ValueDescriptorTest, TheBasePathIsKeptWithoutASlashAtItsEnd) {
    ValueDescriptor::SetBasePath(u"/X/"_s);
    EXPECT_EQ(ValueDescriptor::GetBasePath(), u"/X"_s);
    ValueDescriptor::SetBasePath(u"/"_s);
    EXPECT_EQ(ValueDescriptor::GetBasePath(), QString());
}

TEST_F(ValueDescriptorTest, NamesItsValue) {
    const ValueDescriptor descriptor(u"/DevAttr/OperationMode"_s, MakeDefault::Int());
    EXPECT_EQ(descriptor.PathName(), u"/DevAttr/OperationMode"_s);
    EXPECT_EQ(descriptor.GetName(), u"OperationMode"_s);
    EXPECT_EQ(ValueDescriptor(u"Name"_s, MakeDefault::Int()).GetName(), u"Name"_s);
}

TEST_F(ValueDescriptorTest, CreatesItsValueBelowTheBasePath) {
    const ValueDescriptor descriptor(u"/DevAttr/OperationMode"_s, MakeDefault::Int(3, 0, 5));
    ValueBase* value = descriptor.Create(nullptr);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->GetPath(), u"/DEVICES/ZANServer/DevAttr/OperationMode"_s);
    EXPECT_EQ(value->GetName(), u"OperationMode"_s);
    EXPECT_EQ(value->GetDescriptor(), &descriptor);
    EXPECT_EQ(tree.GetValue(u"/DEVICES/ZANServer/DevAttr/OperationMode"_s), value);
}

TEST_F(ValueDescriptorTest, CreatesItsValueBelowAPathThatIsNamedWhateverTheBasePathIs) {
    const ValueDescriptor descriptor(u"/DevAttr/OperationMode"_s, MakeDefault::Int(3, 0, 5));
    ValueBase* value = descriptor.CreateBelow(u"/Other"_s, nullptr);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->GetPath(), u"/Other/DevAttr/OperationMode"_s);
    EXPECT_EQ(value->GetDescriptor(), &descriptor);
    EXPECT_EQ(descriptor.CreateBelow(u"/Other/"_s, nullptr), value);
    EXPECT_EQ(ValueDescriptor::GetBasePath(), u"/DEVICES/ZANServer"_s);
    EXPECT_EQ(tree.GetNode(u"/DEVICES"_s), nullptr);
}

TEST_F(ValueDescriptorTest, TheBasePathOfTheMomentCounts) {
    const ValueDescriptor descriptor(u"/v"_s, MakeDefault::Int());
    ValueBase* first = descriptor.Create(nullptr);
    ValueDescriptor::SetBasePath(u"/B"_s);
    ValueBase* second = descriptor.Create(nullptr);
    EXPECT_EQ(first->GetPath(), u"/DEVICES/ZANServer/v"_s);
    EXPECT_EQ(second->GetPath(), u"/B/v"_s);
    ValueDescriptor::SetBasePath({});
    EXPECT_EQ(descriptor.Create(nullptr)->GetPath(), u"/v"_s);
}

TEST_F(ValueDescriptorTest, AValueThatIsThereIsReturnedAsItIsWhateverItsType) {
    const ValueDescriptor asInt(u"/v"_s, MakeDefault::Int(7));
    const ValueDescriptor asBool(u"/v"_s, MakeDefault::Bool(true));
    const ValueDescriptor asNode(u"/v"_s, MakeDefault::Nothing());
    auto* value = dynamic_cast<ValueNumericInt*>(asInt.Create(nullptr));
    ASSERT_NE(value, nullptr);
    value->SetValue(8, nullptr);
    EXPECT_EQ(asInt.Create(nullptr), value);
    EXPECT_EQ(asBool.Create(nullptr), value);
    EXPECT_EQ(asNode.Create(nullptr), value);
    EXPECT_EQ(value->GetValue(), 8);
    EXPECT_EQ(value->GetDescriptor(), &asInt);
}

TEST_F(ValueDescriptorTest, ADescriptorOfANodeMakesTheNodeAndReturnsNoValue) {
    const ValueDescriptor descriptor(u"/Antennas"_s, MakeDefault::Nothing());
    EXPECT_EQ(descriptor.MakeValue(), nullptr);
    EXPECT_EQ(descriptor.Create(nullptr), nullptr);
    const Node* node = tree.GetNode(u"/DEVICES/ZANServer/Antennas"_s);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetDescriptor(), &descriptor);
    EXPECT_EQ(descriptor.Create(nullptr), nullptr);
    EXPECT_EQ(tree.GetNode(u"/DEVICES/ZANServer/Antennas"_s), node);
}

TEST_F(ValueDescriptorTest, WhatCouldNotBeMadeIsNull) {
    tree.CreateNode(u"/DEVICES/ZANServer/node"_s);
    ValueDescriptor(u"/value"_s, MakeDefault::Int()).Create(nullptr);
    const QString levels = u"/x"_s.repeated(Tree::MAX_LEVELS);
    for (const QString& pathName :
         {u"/node"_s, u"/value/below"_s, u"/a//b"_s, u"/a/"_s, u"/"_s, u""_s, levels}) {
        const ValueDescriptor descriptor(pathName, MakeDefault::Int());
        EXPECT_EQ(descriptor.Create(nullptr), nullptr) << pathName.toStdString();
    }
    ValueDescriptor::SetBasePath(u"no/path"_s);
    EXPECT_EQ(ValueDescriptor(u"/v"_s, MakeDefault::Int()).Create(nullptr), nullptr);
    EXPECT_EQ(tree.GetValueCount(), 1);
}

TEST_F(ValueDescriptorTest, ADescriptorMakesAnyNumberOfValuesOutsideTheTree) {
    const ValueDescriptor descriptor(u"/v"_s, MakeDefault::Text(u"text"_s));
    const std::unique_ptr<ValueBase> first = descriptor.MakeValue();
    const std::unique_ptr<ValueBase> second = descriptor.MakeValue();
    EXPECT_NE(first, second);
    EXPECT_TRUE(first->Compare(second.get()));
    EXPECT_EQ(first->GetParent(), nullptr);
    EXPECT_EQ(tree.GetValueCount(), 0);
}

/// The value that a maker makes, as its type.
template <class T>
std::unique_ptr<T> Made(const ValueDescriptor::Maker& maker) {
    std::unique_ptr<ValueBase> value = maker();
    EXPECT_NE(dynamic_cast<T*>(value.get()), nullptr);
    return std::unique_ptr<T>(dynamic_cast<T*>(value.release()));
}

TEST(MakeDefault, MakesNumbersWithTheirRange) {
    const auto integer = Made<ValueNumericInt>(MakeDefault::Int(5, -1, 10, 2));
    EXPECT_EQ(integer->GetValue(), 5);
    EXPECT_EQ(integer->GetMin(), -1);
    EXPECT_EQ(integer->GetMax(), 10);
    EXPECT_EQ(integer->GetStep(), 2);
    EXPECT_EQ(Made<ValueNumericInt>(MakeDefault::Int(5, -1, 10))->GetStep(), 1);

    const auto number = Made<ValueNumericDouble>(MakeDefault::Double(0.5, 0.0, 1.0, 0.1));
    EXPECT_EQ(number->GetValue(), 0.5);
    EXPECT_EQ(number->GetMin(), 0.0);
    EXPECT_EQ(number->GetMax(), 1.0);
    EXPECT_EQ(number->GetStep(), 0.1);
}

TEST(MakeDefault, MakesNumbersWithoutARange) {
    const auto integer = Made<ValueNumericInt>(MakeDefault::Int(5));
    EXPECT_EQ(integer->GetValue(), 5);
    EXPECT_EQ(integer->GetMin(), std::numeric_limits<int>::lowest());
    EXPECT_EQ(integer->GetMax(), std::numeric_limits<int>::max());
    const auto number = Made<ValueNumericDouble>(MakeDefault::Double());
    EXPECT_EQ(number->GetValue(), 0.0);
    EXPECT_EQ(number->GetMin(), std::numeric_limits<double>::lowest());
    EXPECT_EQ(number->GetMax(), std::numeric_limits<double>::max());
}

TEST(MakeDefault, MakesTheOtherTypes) {
    EXPECT_FALSE(Made<ValueBool>(MakeDefault::Bool())->GetValue());
    EXPECT_TRUE(Made<ValueBool>(MakeDefault::Bool(true))->GetValue());
    EXPECT_EQ(Made<ValueString>(MakeDefault::Text())->GetValue(), QString());
    EXPECT_EQ(Made<ValueString>(MakeDefault::Text(u"text"_s))->GetValue(), u"text"_s);
    EXPECT_EQ(Made<ValueTimeStamp>(MakeDefault::TimeStamp())->GetValue(), 0U);
    EXPECT_EQ(Made<ValueBearing>(MakeDefault::Bearing())->GetValue(), BearingResult());
    EXPECT_TRUE(Made<ValueBearingList>(MakeDefault::BearingList())->Empty());
    EXPECT_TRUE(Made<ValueStringList>(MakeDefault::TextList())->Empty());
    EXPECT_FALSE(MakeDefault::Nothing());
}

TEST(MakeDefault, MakesSelectionsWithTheFirstItemCurrent) {
    const auto selection = Made<ValueSelection>(MakeDefault::Selection({{u"a"_s, 1.0, 5}, {u"b"_s, 2.0, 6}}));
    ASSERT_EQ(selection->GetItems().size(), 2U);
    EXPECT_EQ(selection->GetCurrentKey(), 5);
    EXPECT_EQ(selection->GetItems()[1], SelectionItem(u"b"_s, 2.0, 6));
    EXPECT_EQ(Made<ValueSelection>(MakeDefault::Selection({}))->GetCurrentIndex(), -1);
}

} // namespace
