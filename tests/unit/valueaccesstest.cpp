#include "valueframework/valueaccess.h"

#include "support/observers.h"
#include "support/printing.h"
#include "support/tracelines.h"
#include "valueframework/adapter.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using ZANPlatform::CreateNode;
using ZANPlatform::CreateValue;
using ZANPlatform::GetOrCreateValue;

namespace {

QString LeakLine(const QString& path) {
    return u"valueframework\\valueclasses\\valueobservermacros(297): !!!!!!!MEMORY LEAK! The value with the path '"_s +
           path +
           u"' could not be created!!! A value of this name already exists for a different type!!!!!!!!"_s;
}

class ValueAccessTest : public testing::Test {
protected:
    ValueAccessTest() { ValueDescriptor::SetBasePath(u"/DEVICES/ZANServer"_s); }
    ~ValueAccessTest() override {
        tree.Clear();
        ValueDescriptor::SetBasePath({});
    }

    Tree& tree = *Tree::Instance();
    TraceLines trace;
};

// --- get or create by path ---

TEST_F(ValueAccessTest, AMissingValueIsMadeAtItsPath) {
    auto* value = GetOrCreateValue<ValueBool>(u"/ZANServer/Res/Valid"_s);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->GetName(), u"Valid"_s);
    EXPECT_EQ(value->GetPath(), u"/ZANServer/Res/Valid"_s);
    EXPECT_EQ(tree.Find<ValueBool>(u"/ZANServer/Res/Valid"_s), value);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(ValueAccessTest, AnExistingValueIsReturnedAsItIs) {
    auto* value = GetOrCreateValue<ValueInt>(u"/ZANServer/v"_s);
    value->SetValue(5, nullptr);
    EXPECT_EQ(GetOrCreateValue<ValueInt>(u"/ZANServer/v"_s), value);
    EXPECT_EQ(value->GetValue(), 5);
    EXPECT_EQ(tree.GetValueCount(), 1);
}

TEST_F(ValueAccessTest, EveryTypeCanBeMade) {
    EXPECT_NE(GetOrCreateValue<ValueBool>(u"/A/bool"_s), nullptr);
    EXPECT_NE(GetOrCreateValue<ValueInt>(u"/A/int"_s), nullptr);
    EXPECT_NE(GetOrCreateValue<ValueString>(u"/A/string"_s), nullptr);
    EXPECT_NE(GetOrCreateValue<ValueTimeStamp>(u"/A/time"_s), nullptr);
    EXPECT_NE(GetOrCreateValue<ValueBearing>(u"/A/bearing"_s), nullptr);
    EXPECT_NE(GetOrCreateValue<ValueNumericInt>(u"/A/numericInt"_s), nullptr);
    EXPECT_NE(GetOrCreateValue<ValueNumericDouble>(u"/A/numericDouble"_s), nullptr);
    EXPECT_NE(GetOrCreateValue<ValueSelection>(u"/A/selection"_s), nullptr);
    EXPECT_NE(GetOrCreateValue<ValueBearingList>(u"/A/bearings"_s), nullptr);
    EXPECT_NE(GetOrCreateValue<ValueQuadFloatList>(u"/A/quads"_s), nullptr);
    EXPECT_NE(GetOrCreateValue<ValueTrafficControlFrequencyList>(u"/A/frequencies"_s), nullptr);
    EXPECT_EQ(tree.GetValueCount(), 11);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(ValueAccessTest, AValueOfAnotherTypeAtThePathYieldsNothingAndOneLeakLineAndStaysUnchanged) {
    auto* integer = GetOrCreateValue<ValueInt>(u"/ZANServer/v"_s);
    integer->SetValue(5, nullptr);
    CodeObserver observer;
    integer->AddObserver(&observer);

    EXPECT_EQ(GetOrCreateValue<ValueBool>(u"/ZANServer/v"_s), nullptr);

    EXPECT_EQ(trace.lines, QStringList{LeakLine(u"/ZANServer/v"_s)});
    EXPECT_EQ(tree.Find<ValueInt>(u"/ZANServer/v"_s), integer);
    EXPECT_EQ(integer->GetValue(), 5);
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(ValueAccessTest, ANumberWithARangeIsTakenForANumberButNotTheOtherWayRound) {
    auto* numeric = GetOrCreateValue<ValueNumericInt>(u"/A/numeric"_s);
    EXPECT_EQ(GetOrCreateValue<ValueInt>(u"/A/numeric"_s), numeric);
    GetOrCreateValue<ValueInt>(u"/A/plain"_s);
    EXPECT_EQ(GetOrCreateValue<ValueNumericInt>(u"/A/plain"_s), nullptr);
    EXPECT_EQ(trace.lines, QStringList{LeakLine(u"/A/plain"_s)});
}

TEST_F(ValueAccessTest, ANodeAtThePathYieldsNothing) {
    Node* node = tree.CreateNode(u"/A/B"_s);
    EXPECT_EQ(GetOrCreateValue<ValueInt>(u"/A/B"_s), nullptr);
    EXPECT_EQ(trace.lines, QStringList{LeakLine(u"/A/B"_s)});
    EXPECT_EQ(tree.GetNode(u"/A/B"_s), node);
}

TEST_F(ValueAccessTest, APathThatIsNoPathYieldsNothingAndIsTracedAsItIs) {
    const QStringList paths{u""_s,      u"v"_s,         u"/"_s,
                            u"A/v"_s,   u"/A/"_s,       u"//v"_s,
                            u"/A//v"_s, u"/A/%1//%2"_s, u"/x"_s.repeated(10'000)};
    for (const QString& path : paths) {
        trace.lines.clear();
        EXPECT_EQ(GetOrCreateValue<ValueInt>(path), nullptr) << path.left(30).toStdString();
        EXPECT_EQ(trace.lines, QStringList{LeakLine(path)});
    }
    EXPECT_EQ(tree.GetValueCount(), 0);
    EXPECT_TRUE(tree.GetNode(u"/"_s)->GetTreeItems().isEmpty());
}

TEST_F(ValueAccessTest, TheLeakLineIsNotWrittenWhenInformationIsNotTraced) {
    GetOrCreateValue<ValueInt>(u"/A/v"_s);
    ErrorHandler::Instance().SetTraceMask(TraceBit::ASSERTION);
    EXPECT_EQ(GetOrCreateValue<ValueBool>(u"/A/v"_s), nullptr);
    EXPECT_TRUE(trace.lines.isEmpty());
}

// --- a typed value from a descriptor ---

TEST_F(ValueAccessTest, ATypedValueIsCreatedFromItsDescriptor) {
    const ValueDescriptor descriptor(u"/v"_s, MakeDefault::Int(3, 0, 5));
    auto* value = CreateValue<ValueNumericInt>(descriptor, nullptr);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->GetPath(), u"/DEVICES/ZANServer/v"_s);
    EXPECT_EQ(value->GetValue(), 3);
    EXPECT_EQ(CreateValue<ValueNumericInt>(descriptor, nullptr), value);
}

TEST_F(ValueAccessTest, ATypedValueIsCreatedBelowAPathThatIsNamed) {
    const ValueDescriptor descriptor(u"/v"_s, MakeDefault::Int(3, 0, 5));
    auto* value = CreateValue<ValueNumericInt>(u"/Other"_s, descriptor, nullptr);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->GetPath(), u"/Other/v"_s);
    EXPECT_EQ(CreateValue<ValueNumericInt>(u"/Other"_s, descriptor, nullptr), value);
    EXPECT_THROW(CreateValue<ValueBool>(u"/Other"_s, descriptor, nullptr), KWException);
}

/// Creates a bool from a descriptor, which must fail, and returns the exception.
KWException CreationFailure(const ValueDescriptor& descriptor) {
    try {
        CreateValue<ValueBool>(descriptor, nullptr);
    } catch (const KWException& exception) {
        return exception;
    }
    ADD_FAILURE() << "nothing was thrown";
    return {{}, {}, {}, {}, 0, 0};
}

TEST_F(ValueAccessTest, AValueOfAnotherTypeFromADescriptorIsThrownWithItsPath) {
    const KWException exception = CreationFailure(ValueDescriptor(u"/DevAttr/Mode"_s, MakeDefault::Int()));
    EXPECT_EQ(exception.GetMessage(), u"Wrong type assumed for /DevAttr/Mode."_s);
    EXPECT_EQ(exception.GetFunctionName(), u"CreateValue"_s);
    EXPECT_EQ(exception.GetSourceFile(), u"valueframework\\valueclasses\\valueobservermacros"_s);
    EXPECT_EQ(exception.GetDetail(), QString());
    EXPECT_EQ(exception.GetCode(), 0xFFFFFFFFU);
}

TEST_F(ValueAccessTest, WhatADescriptorCouldNotMakeIsThrownToo) {
    EXPECT_EQ(CreationFailure(ValueDescriptor(u"/Node"_s, MakeDefault::Nothing())).GetMessage(),
              u"Wrong type assumed for /Node."_s);
    EXPECT_EQ(CreationFailure(ValueDescriptor(u"/a//b"_s, MakeDefault::Bool())).GetMessage(),
              u"Wrong type assumed for /a//b."_s);
    EXPECT_EQ(CreationFailure(ValueDescriptor(u"/%1//%2"_s, MakeDefault::Bool())).GetMessage(),
              u"Wrong type assumed for /%1//%2."_s);
}

TEST_F(ValueAccessTest, AnExistingValueOfAnotherTypeIsThrownAndStays) {
    GetOrCreateValue<ValueInt>(u"/DEVICES/ZANServer/v"_s)->SetValue(5, nullptr);
    EXPECT_EQ(CreationFailure(ValueDescriptor(u"/v"_s, MakeDefault::Bool())).GetMessage(),
              u"Wrong type assumed for /v."_s);
    EXPECT_EQ(tree.Find<ValueInt>(u"/DEVICES/ZANServer/v"_s)->GetValue(), 5);
}

// --- a node from a descriptor ---

TEST_F(ValueAccessTest, ANodeIsCreatedFromItsDescriptor) {
    const ValueDescriptor descriptor(u"/Antennas/1"_s, MakeDefault::Nothing());
    Node* node = CreateNode(descriptor, nullptr);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetPath(), u"/DEVICES/ZANServer/Antennas/1"_s);
    EXPECT_EQ(node->GetDescriptor(), &descriptor);
    EXPECT_EQ(CreateNode(descriptor, nullptr), node);
}

TEST_F(ValueAccessTest, ANodeThatCouldNotBeCreatedIsThrown) {
    GetOrCreateValue<ValueInt>(u"/DEVICES/ZANServer/v"_s);
    for (const QString& pathName : {u"/v"_s, u"/v/below"_s, u"/a//b"_s, u"/%1//"_s}) {
        const ValueDescriptor descriptor(pathName, MakeDefault::Nothing());
        try {
            CreateNode(descriptor, nullptr);
            ADD_FAILURE() << "nothing was thrown for " << pathName.toStdString();
        } catch (const KWException& exception) {
            EXPECT_EQ(exception.GetMessage(),
                      u"Could not create node according to value descriptor "_s + pathName + u'.');
            EXPECT_EQ(exception.GetFunctionName(), u"CreateNode"_s);
            EXPECT_EQ(exception.GetSourceFile(), u"valueframework\\valueclasses\\valueobservermacros"_s);
            EXPECT_EQ(exception.GetSourceLine(), 175U);
            EXPECT_EQ(exception.GetCode(), 0xFFFFFFFFU);
        }
    }
}

TEST_F(ValueAccessTest, ADescriptorOfAValueMakesNoNode) {
    EXPECT_THROW(CreateNode(ValueDescriptor(u"/v"_s, MakeDefault::Int()), nullptr), KWException);
}

// --- child values of an adapter's node ---

class ValueAccessAdapterTest : public ValueAccessTest {
protected:
    const ValueDescriptor support{u"/AntActivePassiveSupport"_s, MakeDefault::Int()};
    const ValueDescriptor deeper{u"/Range/Min"_s, MakeDefault::Double()};
};

TEST_F(ValueAccessAdapterTest, AChildValueIsFoundByItsDescriptor) {
    Node* node = tree.CreateNode(u"/A"_s);
    auto* value = GetOrCreateValue<ValueNumericInt>(u"/A/AntActivePassiveSupport"_s);
    auto* min = GetOrCreateValue<ValueNumericDouble>(u"/A/Range/Min"_s);
    const Adapter adapter(node);
    EXPECT_EQ(adapter.GetNode(), node);
    EXPECT_EQ(adapter.GetValue<ValueNumericInt>(support), value);
    EXPECT_EQ(adapter.GetValue<ValueInt>(support), value);
    EXPECT_EQ(adapter.GetValue<ValueNumericDouble>(deeper), min);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(ValueAccessAdapterTest, AnAbsentChildOrOneOfAnotherTypeIsTracedAndIgnored) {
    const QString line = u"devicecontrol\\stddevicedefinition\\stdadapter(219): "
                         u"_GETVALUE AntActivePassiveSupport failed - ignored"_s;
    const Adapter adapter(tree.CreateNode(u"/A"_s));
    EXPECT_EQ(adapter.GetValue<ValueNumericInt>(support), nullptr);
    EXPECT_EQ(trace.lines, QStringList{line});
    GetOrCreateValue<ValueBool>(u"/A/AntActivePassiveSupport"_s);
    EXPECT_EQ(adapter.GetValue<ValueNumericInt>(support), nullptr);
    EXPECT_EQ(trace.lines, (QStringList{line, line}));
    EXPECT_EQ(adapter.GetValue<ValueNumericDouble>(deeper), nullptr);
    EXPECT_EQ(trace.lines.last(),
              u"devicecontrol\\stddevicedefinition\\stdadapter(219): _GETVALUE Min failed - ignored"_s);
}

TEST_F(ValueAccessAdapterTest, NothingIsTracedWhenInformationIsNotTraced) {
    const Adapter adapter(tree.CreateNode(u"/A"_s));
    ErrorHandler::Instance().SetTraceMask(TraceBit::ASSERTION);
    EXPECT_EQ(adapter.GetValue<ValueNumericInt>(support), nullptr);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(ValueAccessAdapterTest, WithoutANodeThereAreNoValues) {
    const Adapter adapter(nullptr);
    EXPECT_EQ(adapter.GetNode(), nullptr);
    EXPECT_EQ(adapter.GetValue<ValueNumericInt>(support), nullptr);
    EXPECT_EQ(trace.lines.size(), 1);
}

TEST_F(ValueAccessAdapterTest, WhenTheNodeIsGoneThereAreNoValues) {
    const Adapter adapter(tree.CreateNode(u"/A"_s));
    GetOrCreateValue<ValueNumericInt>(u"/A/AntActivePassiveSupport"_s);
    tree.Clear();
    EXPECT_EQ(adapter.GetNode(), nullptr);
    EXPECT_EQ(adapter.GetValue<ValueNumericInt>(support), nullptr);
}

} // namespace
