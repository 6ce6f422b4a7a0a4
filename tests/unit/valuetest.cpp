#include "valueframework/value.h"

#include "support/observers.h"
#include "support/printing.h"
#include "support/valuesamples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <typeinfo>

using namespace Qt::StringLiterals;

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

// --- every type ---

TEST(Value, KnowsItsType) {
    for (const ValueSample& sample : ValueSamples()) {
        EXPECT_EQ(sample.make()->GetType(), sample.type);
        EXPECT_EQ(sample.make()->GetTypeName(), QString::fromLatin1(sample.typeName));
    }
}

TEST(Value, TheTextOfEveryTypeRoundTrips) {
    for (const ValueSample& sample : ValueSamples()) {
        SCOPED_TRACE(sample.typeName);
        const std::unique_ptr<ValueBase> source = sample.make();
        const std::unique_ptr<ValueBase> target = sample.makeOther();
        EXPECT_FALSE(target->Compare(source.get()));
        EXPECT_TRUE(target->SetStringValue(source->GetStringValue(), nullptr));
        EXPECT_TRUE(target->Compare(source.get()));
        EXPECT_EQ(target->GetStringValue(), source->GetStringValue());
    }
}

TEST(Value, SettingTheSameTextNotifiesNobodyExceptForBearings) {
    for (const ValueSample& sample : ValueSamples()) {
        SCOPED_TRACE(sample.typeName);
        const std::unique_ptr<ValueBase> value = sample.make();
        CodeObserver observer;
        value->AddObserver(&observer);
        EXPECT_TRUE(value->SetStringValue(value->GetStringValue(), nullptr));
        EXPECT_EQ(observer.codes.size(), sample.type == ValueType::Bearing ? 1U : 0U);
    }
}

TEST(Value, SettingAnotherTextNotifiesOnceAndNotTheOriginator) {
    for (const ValueSample& sample : ValueSamples()) {
        SCOPED_TRACE(sample.typeName);
        const std::unique_ptr<ValueBase> value = sample.make();
        CodeObserver observer;
        CodeObserver originator;
        value->AddObserver(&originator);
        value->AddObserver(&observer);
        EXPECT_TRUE(value->SetStringValue(sample.makeOther()->GetStringValue(), &originator));
        EXPECT_EQ(observer.codes, std::vector{TChangeCode::Changed});
        EXPECT_TRUE(originator.codes.empty());
    }
}

TEST(Value, AssignTakesOverContentAndStateAndNotifiesOnce) {
    for (const ValueSample& sample : ValueSamples()) {
        SCOPED_TRACE(sample.typeName);
        const std::unique_ptr<ValueBase> source = sample.make();
        source->SetName(u"source"_s, nullptr);
        source->SetState(TValueState::NotMeasured, nullptr);
        const std::unique_ptr<ValueBase> target = sample.makeOther();
        target->SetName(u"target"_s, nullptr);
        CodeObserver observer;
        target->AddObserver(&observer);
        EXPECT_TRUE(target->Assign(*source));
        EXPECT_TRUE(target->Compare(source.get()));
        EXPECT_EQ(target->GetState(), TValueState::NotMeasured);
        EXPECT_EQ(target->GetName(), u"target"_s);
        EXPECT_EQ(observer.codes, std::vector{TChangeCode::Changed});
    }
}

TEST(Value, AssigningTheSameNotifiesNobodyExceptForBearings) {
    for (const ValueSample& sample : ValueSamples()) {
        SCOPED_TRACE(sample.typeName);
        const std::unique_ptr<ValueBase> target = sample.make();
        CodeObserver observer;
        target->AddObserver(&observer);
        EXPECT_TRUE(target->Assign(*sample.make()));
        EXPECT_EQ(observer.codes.size(), sample.type == ValueType::Bearing ? 1U : 0U);
    }
}

TEST(Value, AssigningAnotherStateOnlyNotifiesOnce) {
    for (const ValueSample& sample : ValueSamples()) {
        SCOPED_TRACE(sample.typeName);
        const std::unique_ptr<ValueBase> source = sample.make();
        source->SetState(TValueState::NotMeasured, nullptr);
        const std::unique_ptr<ValueBase> target = sample.make();
        CodeObserver observer;
        target->AddObserver(&observer);
        EXPECT_TRUE(target->Assign(*source));
        EXPECT_EQ(observer.codes, std::vector{TChangeCode::Changed});
    }
}

TEST(Value, AssigningItselfChangesNothing) {
    for (const ValueSample& sample : ValueSamples()) {
        SCOPED_TRACE(sample.typeName);
        const std::unique_ptr<ValueBase> value = sample.make();
        EXPECT_TRUE(value->Assign(*value));
        EXPECT_TRUE(value->Compare(sample.make().get()));
    }
}

TEST(Value, AValueOfAnotherTypeIsNeitherAssignedNorEqual) {
    // A number with a range is a number of its type: those two are of one kind.
    const auto isSameKind = [](const ValueBase& one, const ValueBase& other) {
        return typeid(one) == typeid(other) ||
               (one.GetType() == other.GetType() && one.GetType() != ValueType::List);
    };
    int mismatches = 0;
    for (const ValueSample& targetSample : ValueSamples()) {
        for (const ValueSample& sourceSample : ValueSamples()) {
            const std::unique_ptr<ValueBase> target = targetSample.make();
            const std::unique_ptr<ValueBase> source = sourceSample.make();
            if (isSameKind(*target, *source)) {
                continue;
            }
            SCOPED_TRACE(std::string(targetSample.typeName) + " from " + sourceSample.typeName);
            ++mismatches;
            source->SetState(TValueState::NotMeasured, nullptr);
            CodeObserver observer;
            target->AddObserver(&observer);
            EXPECT_FALSE(target->Assign(*source));
            EXPECT_FALSE(target->Compare(source.get()));
            EXPECT_TRUE(target->Compare(targetSample.make().get()));
            EXPECT_EQ(target->GetState(), TValueState::Valid);
            EXPECT_TRUE(observer.codes.empty());
        }
    }
    EXPECT_EQ(mismatches, 12 * 11 - 4);
}

TEST(Value, NullIsNotEqual) {
    for (const ValueSample& sample : ValueSamples()) {
        EXPECT_FALSE(sample.make()->Compare(nullptr));
    }
}

TEST(Value, NameAndStateDoNotCountWhenComparing) {
    for (const ValueSample& sample : ValueSamples()) {
        const std::unique_ptr<ValueBase> one = sample.make();
        one->SetName(u"one"_s, nullptr);
        one->SetState(TValueState::NotMeasured, nullptr);
        EXPECT_TRUE(one->Compare(sample.make().get())) << sample.typeName;
    }
}

// --- typed setters ---

TEST(Value, StartsWithTheDefaultOfItsType) {
    EXPECT_FALSE(ValueBool().GetValue());
    EXPECT_EQ(ValueInt().GetValue(), 0);
    EXPECT_EQ(ValueString().GetValue(), QString());
    EXPECT_EQ(ValueTimeStamp().GetValue(), 0U);
    EXPECT_EQ(ValueNumericDouble().GetValue(), 0.0);
    EXPECT_EQ(ValueBearing().GetValue(), BearingResult());
    EXPECT_EQ(ValueInt().GetState(), TValueState::Valid);
}

TEST(Value, SettingAChangeNotifiesTheObserversAndNotTheOriginator) {
    ValueInt value(1);
    CodeObserver observer;
    CodeObserver originator;
    value.AddObserver(&originator);
    value.AddObserver(&observer);
    EXPECT_TRUE(value.SetValue(2, &originator));
    EXPECT_EQ(value.GetValue(), 2);
    EXPECT_EQ(observer.codes, std::vector{TChangeCode::Changed});
    EXPECT_TRUE(originator.codes.empty());
}

TEST(Value, SettingTheSameNotifiesNobody) {
    ValueInt value(1);
    ValueNumericDouble zero(0.0, -1.0, 1.0, 0.1);
    ValueString text(u"text"_s);
    CodeObserver observer;
    for (ValueBase* each : std::initializer_list<ValueBase*>{&value, &zero, &text}) {
        each->AddObserver(&observer);
    }
    EXPECT_TRUE(value.SetValue(1, nullptr));
    EXPECT_TRUE(zero.SetValue(-0.0, nullptr));
    EXPECT_TRUE(text.SetValue(QString::fromLatin1("text"), nullptr));
    EXPECT_TRUE(observer.codes.empty());
}

TEST(Value, EachBearingNotifiesAlsoWhenItEqualsTheOneBefore) {
    ValueBearing value;
    CodeObserver observer;
    value.AddObserver(&observer);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(value.SetValue(SampleBearing(100), nullptr));
    }
    EXPECT_EQ(observer.codes.size(), 3U);
}

TEST(Value, TheObserverSeesTheNewContent) {
    ValueString value;
    QString seen;
    FunctionObserver observer([&](Observable*, TChangeCode) { seen = value.GetValue(); });
    value.AddObserver(&observer);
    value.SetValue(u"new"_s, nullptr);
    EXPECT_EQ(seen, u"new"_s);
}

TEST(Value, AnObserverMayChangeTheValueAgain) {
    ValueInt value;
    std::vector<int> seen;
    FunctionObserver corrector([&](Observable*, TChangeCode) {
        if (value.GetValue() % 2 != 0) {
            value.SetValue(value.GetValue() + 1, nullptr);
        }
    });
    FunctionObserver watcher([&](Observable*, TChangeCode) { seen.push_back(value.GetValue()); });
    value.AddObserver(&corrector);
    value.AddObserver(&watcher);
    value.SetValue(3, nullptr);
    EXPECT_EQ(value.GetValue(), 4);
    EXPECT_EQ(seen, (std::vector{4, 4})) << "never the content that has been replaced";
}

TEST(Value, ATextThatIsNoContentChangesNothing) {
    for (const ValueSample& sample : ValueSamples()) {
        if (sample.type == ValueType::String) {
            continue; // takes any text
        }
        SCOPED_TRACE(sample.typeName);
        const std::unique_ptr<ValueBase> value = sample.make();
        CodeObserver observer;
        value->AddObserver(&observer);
        EXPECT_FALSE(value->SetStringValue(u"no content"_s, nullptr));
        EXPECT_TRUE(value->Compare(sample.make().get()));
        EXPECT_TRUE(observer.codes.empty());
    }
}

// --- numbers with a range ---

TEST(ValueNumeric, WithoutARangeEveryFiniteNumberIsAccepted) {
    ValueNumericInt integer;
    EXPECT_EQ(integer.GetMin(), std::numeric_limits<int>::lowest());
    EXPECT_EQ(integer.GetMax(), std::numeric_limits<int>::max());
    EXPECT_EQ(integer.GetStep(), 1);
    EXPECT_TRUE(integer.SetValue(std::numeric_limits<int>::lowest(), nullptr));
    EXPECT_TRUE(integer.SetValue(std::numeric_limits<int>::max(), nullptr));

    ValueNumericDouble number;
    EXPECT_TRUE(number.SetValue(std::numeric_limits<double>::lowest(), nullptr));
    EXPECT_TRUE(number.SetValue(std::numeric_limits<double>::max(), nullptr));
    EXPECT_FALSE(number.SetValue(INFINITE, nullptr));
    EXPECT_FALSE(number.SetValue(-INFINITE, nullptr));
    EXPECT_EQ(number.GetValue(), std::numeric_limits<double>::max());
}

TEST(ValueNumeric, TheBoundsAreIncludedAndWhatLiesOutsideIsRefusedNotClipped) {
    ValueNumericInt integer(5, 0, 10, 1);
    ValueNumericDouble number(5.0, 0.0, 10.0, 0.5);
    CodeObserver observer;
    integer.AddObserver(&observer);
    number.AddObserver(&observer);
    for (const int refused : {-1, 11, std::numeric_limits<int>::lowest(), std::numeric_limits<int>::max()}) {
        EXPECT_FALSE(integer.SetValue(refused, nullptr)) << refused;
        EXPECT_FALSE(integer.SetStringValue(QString::number(refused), nullptr)) << refused;
        EXPECT_EQ(integer.GetValue(), 5);
    }
    for (const double refused : {std::nextafter(0.0, -1.0), std::nextafter(10.0, 11.0), INFINITE, -INFINITE,
                                 NOT_A_NUMBER, -NOT_A_NUMBER}) {
        EXPECT_FALSE(number.SetValue(refused, nullptr)) << refused;
        EXPECT_EQ(number.GetValue(), 5.0);
    }
    EXPECT_TRUE(observer.codes.empty());
    EXPECT_TRUE(integer.SetValue(0, nullptr));
    EXPECT_TRUE(integer.SetValue(10, nullptr));
    EXPECT_TRUE(number.SetValue(0.0, nullptr));
    EXPECT_TRUE(number.SetValue(10.0, nullptr));
    EXPECT_EQ(observer.codes.size(), 4U);
}

TEST(ValueNumeric, TheStepDoesNotRestrictTheContent) {
    ValueNumericInt value(0, 0, 10, 5);
    EXPECT_TRUE(value.SetValue(3, nullptr));
    EXPECT_EQ(value.GetValue(), 3);
}

TEST(ValueNumeric, SetMinMaxMovesTheContentToTheNearerBoundAndNotifiesOnce) {
    struct Row {
        int min;
        int max;
        int content;
    };
    for (const Row row : {Row{6, 9, 6}, Row{0, 4, 4}, Row{5, 5, 5}, Row{-100, 100, 5}, Row{-9, -3, -3}}) {
        ValueNumericInt value(5, 0, 10, 1);
        int seen = 0;
        std::vector<TChangeCode> codes;
        FunctionObserver observer([&](Observable*, TChangeCode code) {
            codes.push_back(code);
            seen = value.GetValue();
            EXPECT_EQ(value.GetMin(), row.min);
            EXPECT_EQ(value.GetMax(), row.max);
        });
        CodeObserver originator;
        value.AddObserver(&observer);
        value.AddObserver(&originator);
        EXPECT_TRUE(value.SetMinMax(row.min, row.max, 2, &originator));
        EXPECT_EQ(value.GetValue(), row.content);
        EXPECT_EQ(seen, row.content);
        EXPECT_EQ(value.GetStep(), 2);
        EXPECT_EQ(codes, std::vector{TChangeCode::Changed});
        EXPECT_TRUE(originator.codes.empty());
    }
}

TEST(ValueNumeric, ARangeThatIsNoneIsRefused) {
    ValueNumericInt integer(5, 0, 10, 1);
    ValueNumericDouble number(5.0, 0.0, 10.0, 1.0);
    CodeObserver observer;
    integer.AddObserver(&observer);
    number.AddObserver(&observer);
    EXPECT_FALSE(integer.SetMinMax(11, 10, 1, nullptr));
    EXPECT_FALSE(integer.SetMinMax(0, 10, -1, nullptr));
    EXPECT_FALSE(integer.SetMin(11, nullptr));
    EXPECT_FALSE(integer.SetMax(-1, nullptr));
    EXPECT_FALSE(integer.SetStep(-1, nullptr));
    EXPECT_FALSE(number.SetMinMax(NOT_A_NUMBER, 10.0, 1.0, nullptr));
    EXPECT_FALSE(number.SetMinMax(0.0, NOT_A_NUMBER, 1.0, nullptr));
    EXPECT_FALSE(number.SetMinMax(0.0, 10.0, NOT_A_NUMBER, nullptr));
    EXPECT_EQ(integer.GetMin(), 0);
    EXPECT_EQ(integer.GetMax(), 10);
    EXPECT_EQ(integer.GetStep(), 1);
    EXPECT_EQ(number.GetMin(), 0.0);
    EXPECT_EQ(number.GetMax(), 10.0);
    EXPECT_TRUE(observer.codes.empty());
}

TEST(ValueNumeric, TheSameRangeAgainNotifiesNobody) {
    ValueNumericInt value(5, 0, 10, 1);
    CodeObserver observer;
    value.AddObserver(&observer);
    EXPECT_TRUE(value.SetMinMax(0, 10, 1, nullptr));
    EXPECT_TRUE(value.SetMin(0, nullptr));
    EXPECT_TRUE(value.SetMax(10, nullptr));
    EXPECT_TRUE(value.SetStep(1, nullptr));
    EXPECT_TRUE(observer.codes.empty());
}

TEST(ValueNumeric, EachBoundCanBeSetByItself) {
    ValueNumericInt value(5, 0, 10, 1);
    CodeObserver observer;
    value.AddObserver(&observer);
    EXPECT_TRUE(value.SetMin(2, nullptr));
    EXPECT_TRUE(value.SetMax(8, nullptr));
    EXPECT_TRUE(value.SetStep(0, nullptr));
    EXPECT_EQ(value.GetMin(), 2);
    EXPECT_EQ(value.GetMax(), 8);
    EXPECT_EQ(value.GetStep(), 0);
    EXPECT_EQ(value.GetValue(), 5);
    EXPECT_EQ(observer.codes.size(), 3U);
}

TEST(ValueNumeric, AContentOutsideTheRangeIsNotAssigned) {
    ValueNumericInt value(5, 0, 10, 1);
    ValueNumericInt source(11, 0, 100, 1);
    source.SetState(TValueState::NotMeasured, nullptr);
    CodeObserver observer;
    value.AddObserver(&observer);
    EXPECT_FALSE(value.Assign(source));
    EXPECT_EQ(value.GetValue(), 5);
    EXPECT_EQ(value.GetState(), TValueState::Valid);
    EXPECT_TRUE(observer.codes.empty());
}

TEST(ValueNumeric, AssignLeavesTheRange) {
    ValueNumericInt value(5, 0, 10, 1);
    EXPECT_TRUE(value.Assign(ValueNumericInt(7, -100, 100, 3)));
    EXPECT_EQ(value.GetValue(), 7);
    EXPECT_EQ(value.GetMin(), 0);
    EXPECT_EQ(value.GetMax(), 10);
    EXPECT_EQ(value.GetStep(), 1);
}

} // namespace
