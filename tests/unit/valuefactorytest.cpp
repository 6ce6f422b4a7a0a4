#include "valueframework/valuefactory.h"

#include "support/observers.h"
#include "support/printing.h"
#include "support/valuesamples.h"
#include "valueframework/tree.h"

#include <gtest/gtest.h>

#include <typeinfo>

using namespace Qt::StringLiterals;

namespace {

TEST(ValueFactory, TheInstanceIsAlwaysTheSame) {
    EXPECT_EQ(&ValueFactory::Instance(), &ValueFactory::Instance());
}

TEST(ValueFactory, ACloneHasTypeNameContentAndState) {
    for (const ValueSample& sample : ValueSamples()) {
        SCOPED_TRACE(sample.typeName);
        const std::unique_ptr<ValueBase> source = sample.make();
        source->SetName(u"name"_s, nullptr);
        source->SetState(TValueState::NotMeasured, nullptr);
        const std::unique_ptr<ValueBase> clone = ValueFactory::Instance().CloneValue(*source);
        ASSERT_NE(clone, nullptr);
        EXPECT_NE(clone, source);
        const ValueBase& copy = *clone;
        const ValueBase& original = *source;
        EXPECT_TRUE(typeid(copy) == typeid(original));
        EXPECT_TRUE(clone->Compare(source.get()));
        EXPECT_EQ(clone->GetStringValue(), source->GetStringValue());
        EXPECT_EQ(clone->GetName(), u"name"_s);
        EXPECT_EQ(clone->GetState(), TValueState::NotMeasured);
    }
}

TEST(ValueFactory, ACloneIsOutsideTheTreeAndNotObserved) {
    Tree& tree = *Tree::Instance();
    for (const ValueSample& sample : ValueSamples()) {
        SCOPED_TRACE(sample.typeName);
        std::unique_ptr<ValueBase> value = sample.make();
        value->SetName(u"v"_s, nullptr);
        ValueBase* source = tree.InsertValue(u"/A"_s, std::move(value));
        CodeObserver observer;
        source->AddObserver(&observer);
        source->StartTransaction(nullptr);
        const std::unique_ptr<ValueBase> clone = ValueFactory::Instance().CloneValue(*source);
        EXPECT_EQ(clone->GetObserverCount(), 0U);
        EXPECT_EQ(clone->GetParent(), nullptr);
        EXPECT_TRUE(clone->GetPath().isEmpty());
        EXPECT_FALSE(clone->IsTransactionActive());
        EXPECT_EQ(clone->GetDeleteObserver(), nullptr);
        tree.Clear();
        EXPECT_EQ(clone->GetName(), u"v"_s);
    }
}

TEST(ValueFactory, ACloneHasALifeOfItsOwn) {
    for (const ValueSample& sample : ValueSamples()) {
        SCOPED_TRACE(sample.typeName);
        const std::unique_ptr<ValueBase> source = sample.make();
        const std::unique_ptr<ValueBase> clone = ValueFactory::Instance().CloneValue(*source);
        EXPECT_TRUE(clone->Assign(*sample.makeOther()));
        EXPECT_FALSE(clone->Compare(source.get()));
        EXPECT_TRUE(source->Compare(sample.make().get()));
    }
}

TEST(ValueFactory, ACloneHasTheLimits) {
    const ValueNumericInt source(5, 0, 10, 2);
    const std::unique_ptr<ValueBase> clone = ValueFactory::Instance().CloneValue(source);
    auto* number = dynamic_cast<ValueNumericInt*>(clone.get());
    ASSERT_NE(number, nullptr);
    EXPECT_EQ(number->GetMin(), 0);
    EXPECT_EQ(number->GetMax(), 10);
    EXPECT_EQ(number->GetStep(), 2);
    EXPECT_FALSE(number->SetValue(11, nullptr));
}

} // namespace
