#include "valueframework/valuebase.h"

#include "support/eventloop.h"
#include "support/observers.h"
#include "support/printing.h"
#include "support/treevalues.h"
#include "support/valuesamples.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

using Codes = std::vector<TChangeCode>;
constexpr TChangeCode CHANGED = TChangeCode::Changed;
constexpr TChangeCode REPLACED = TChangeCode::ListReplaced;

class ValueBaseTest : public testing::Test {
protected:
    ValueBaseTest() { value.AddObserver(&observer); }

    CodeObserver observer;
    CodeObserver other;
    ValueInt value;
};

// --- name and state ---

TEST_F(ValueBaseTest, AChangeOfStateNotifiesTheObserversButNotTheOriginator) {
    value.AddObserver(&other);
    EXPECT_EQ(value.GetState(), TValueState::Valid);
    value.SetState(TValueState::NotMeasured, &other);
    EXPECT_EQ(value.GetState(), TValueState::NotMeasured);
    EXPECT_EQ(observer.codes, Codes{CHANGED});
    EXPECT_TRUE(other.codes.empty());
    value.SetState(TValueState::NotMeasured, nullptr);
    EXPECT_EQ(observer.codes.size(), 1U) << "the same state again";
}

TEST_F(ValueBaseTest, AChangeOfNameNotifiesTheObserversButNotTheOriginator) {
    value.AddObserver(&other);
    EXPECT_TRUE(value.SetName(u"name"_s, &other));
    EXPECT_EQ(observer.codes, Codes{CHANGED});
    EXPECT_TRUE(other.codes.empty());
}

TEST_F(ValueBaseTest, TheStateDoesNotChangeTheContent) {
    value.SetValue(5, nullptr);
    value.SetState(TValueState::NotMeasured, nullptr);
    EXPECT_EQ(value.GetValue(), 5);
    value.SetValue(6, nullptr);
    EXPECT_EQ(value.GetState(), TValueState::NotMeasured);
}

// --- transactions ---

TEST_F(ValueBaseTest, ATransactionNotifiesOnceAtItsEndWithItsCode) {
    value.StartTransaction(nullptr);
    EXPECT_TRUE(value.IsTransactionActive());
    value.SetValue(1, nullptr);
    value.SetState(TValueState::NotMeasured, nullptr);
    value.SetValue(2, nullptr);
    EXPECT_TRUE(observer.codes.empty());
    EXPECT_EQ(value.GetValue(), 2) << "the content is set at once";
    EXPECT_TRUE(value.EndTransaction(REPLACED, nullptr));
    EXPECT_FALSE(value.IsTransactionActive());
    EXPECT_EQ(observer.codes, Codes{REPLACED});
}

TEST_F(ValueBaseTest, TheOutermostEndOfNestedTransactionsNotifies) {
    value.StartTransaction(nullptr);
    value.StartTransaction(nullptr);
    value.SetValue(1, nullptr);
    EXPECT_TRUE(value.EndTransaction(REPLACED, nullptr));
    EXPECT_TRUE(value.IsTransactionActive());
    EXPECT_TRUE(observer.codes.empty());
    EXPECT_TRUE(value.EndTransaction(CHANGED, nullptr));
    EXPECT_EQ(observer.codes, Codes{CHANGED});
}

TEST_F(ValueBaseTest, TheOriginatorOfTheEndIsNotNotified) {
    value.AddObserver(&other);
    value.StartTransaction(&other);
    value.SetValue(1, &other);
    value.EndTransaction(CHANGED, &other);
    EXPECT_EQ(observer.codes, Codes{CHANGED});
    EXPECT_TRUE(other.codes.empty());
}

TEST_F(ValueBaseTest, AnEndWithoutAStartNotifiesNobody) {
    EXPECT_FALSE(value.EndTransaction(CHANGED, nullptr));
    EXPECT_FALSE(value.IsTransactionActive());
    EXPECT_TRUE(observer.codes.empty());
    value.SetValue(1, nullptr);
    EXPECT_EQ(observer.codes, Codes{CHANGED}) << "later changes are notified as ever";
}

TEST_F(ValueBaseTest, HasChangedNotifiesWithItsCodeAndInsideATransactionTheEndNotifies) {
    value.AddObserver(&other);
    value.HasChanged(REPLACED, &other);
    EXPECT_EQ(observer.codes, Codes{REPLACED});
    EXPECT_TRUE(other.codes.empty());
    value.StartTransaction(nullptr);
    value.HasChanged(REPLACED, nullptr);
    EXPECT_EQ(observer.codes, Codes{REPLACED});
    value.EndTransaction(CHANGED, nullptr);
    EXPECT_EQ(observer.codes, (Codes{REPLACED, CHANGED}));
}

TEST_F(ValueBaseTest, AScopedTransactionNotifiesWithItsCodesInTheirOrderAtItsEnd) {
    value.AddObserver(&other);
    {
        const ValueTransaction transaction = value.CreateTransaction({REPLACED, CHANGED}, &other);
        EXPECT_TRUE(value.IsTransactionActive());
        value.SetValue(1, nullptr);
        EXPECT_TRUE(observer.codes.empty());
    }
    EXPECT_FALSE(value.IsTransactionActive());
    EXPECT_EQ(observer.codes, (Codes{REPLACED, CHANGED}));
    EXPECT_TRUE(other.codes.empty());
}

TEST_F(ValueBaseTest, AScopedTransactionWithoutCodesIsSilent) {
    {
        const ValueTransaction transaction = value.CreateTransaction({}, nullptr);
        value.SetValue(1, nullptr);
    }
    EXPECT_FALSE(value.IsTransactionActive());
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(ValueBaseTest, ScopedTransactionsNest) {
    {
        const ValueTransaction outer = value.CreateTransaction({CHANGED}, nullptr);
        {
            const ValueTransaction inner = value.CreateTransaction({REPLACED}, nullptr);
            value.SetValue(1, nullptr);
        }
        EXPECT_TRUE(observer.codes.empty());
    }
    EXPECT_EQ(observer.codes, Codes{CHANGED});
}

TEST_F(ValueBaseTest, AMovedScopedTransactionEndsOnce) {
    {
        std::optional<ValueTransaction> last;
        {
            ValueTransaction first = value.CreateTransaction({CHANGED}, nullptr);
            last.emplace(std::move(first));
        }
        EXPECT_TRUE(value.IsTransactionActive());
        EXPECT_TRUE(observer.codes.empty());
    }
    EXPECT_FALSE(value.IsTransactionActive());
    EXPECT_EQ(observer.codes, Codes{CHANGED});
}

TEST_F(ValueBaseTest, AScopedTransactionThatWasEndedByHandDoesNotEndTwice) {
    {
        const ValueTransaction transaction = value.CreateTransaction({CHANGED}, nullptr);
        EXPECT_TRUE(value.EndTransaction(REPLACED, nullptr));
    }
    EXPECT_EQ(observer.codes, Codes{REPLACED});
    value.SetValue(1, nullptr);
    EXPECT_EQ(observer.codes, (Codes{REPLACED, CHANGED})) << "later changes are notified as ever";
}

TEST_F(ValueBaseTest, AScopedTransactionOutlivesItsValue) {
    auto mortal = std::make_unique<ValueInt>();
    mortal->AddObserver(&other);
    const ValueTransaction transaction = mortal->CreateTransaction({CHANGED}, nullptr);
    mortal.reset();
    EXPECT_TRUE(other.codes.empty());
}

TEST_F(ValueBaseTest, AnObserverMayDestroyTheValueBetweenTheCodesOfATransaction) {
    auto mortal = std::make_unique<ValueInt>();
    FunctionObserver destroyer([&](Observable*, TChangeCode) { mortal.reset(); });
    mortal->AddObserver(&destroyer);
    mortal->AddObserver(&other);
    { const ValueTransaction transaction = mortal->CreateTransaction({REPLACED, CHANGED}, nullptr); }
    EXPECT_EQ(mortal, nullptr);
    EXPECT_TRUE(other.codes.empty());
}

TEST_F(ValueBaseTest, ATransactionHoldsBackNoRemoval) {
    Tree& tree = *Tree::Instance();
    auto inserted = std::make_unique<ValueInt>();
    inserted->SetName(u"v"_s, nullptr);
    ValueBase* inTree = tree.InsertValue(u"/A"_s, std::move(inserted));
    inTree->AddObserver(&other);
    const ValueTransaction transaction = inTree->CreateTransaction({CHANGED}, nullptr);
    tree.Clear();
    EXPECT_EQ(other.codes, Codes{TChangeCode::GoingAway});
}

TEST_F(ValueBaseTest, ATransactionOfOneValueHoldsBackNoOther) {
    ValueInt second;
    second.AddObserver(&other);
    const ValueTransaction transaction = value.CreateTransaction({CHANGED}, nullptr);
    second.SetValue(1, nullptr);
    EXPECT_EQ(other.codes, Codes{CHANGED});
}

// --- time-driven delivery ---

constexpr unsigned SHORT_MS = 10;
constexpr unsigned NEVER_MS = 100'000'000;

/// Waits until another value's timer, started now and longer than SHORT_MS, has delivered.
[[nodiscard]] bool LetTimePass() {
    ValueInt clock;
    CodeObserver tick;
    clock.AddObserver(&tick);
    clock.SetUpdateTimerTime(5 * SHORT_MS);
    clock.SetValue(1, nullptr);
    return SpinUntil([&] { return !tick.codes.empty(); });
}

TEST_F(ValueBaseTest, WithAnUpdateTimeChangesAreDeliveredOnceByTheEventLoop) {
    value.SetUpdateTimerTime(SHORT_MS);
    value.SetValue(1, nullptr);
    value.SetValue(2, nullptr);
    value.SetState(TValueState::NotMeasured, nullptr);
    EXPECT_TRUE(observer.codes.empty());
    EXPECT_EQ(value.GetValue(), 2) << "the content is set at once";
    EXPECT_TRUE(SpinUntil([&] { return !observer.codes.empty(); }));
    EXPECT_TRUE(LetTimePass());
    EXPECT_EQ(observer.codes, Codes{CHANGED});
    value.SetValue(3, nullptr);
    EXPECT_EQ(observer.codes.size(), 1U);
    EXPECT_TRUE(SpinUntil([&] { return observer.codes.size() == 2; }));
}

TEST_F(ValueBaseTest, WaitingCodesAreDeliveredOnceEachInTheOrderOfTheirFirstComing) {
    value.SetUpdateTimerTime(SHORT_MS);
    value.HasChanged(REPLACED, nullptr);
    value.SetValue(1, nullptr);
    value.HasChanged(REPLACED, nullptr);
    value.SetValue(2, nullptr);
    EXPECT_TRUE(SpinUntil([&] { return observer.codes.size() >= 2; }));
    EXPECT_EQ(observer.codes, (Codes{REPLACED, CHANGED}));
}

TEST_F(ValueBaseTest, TheOnlyOriginatorOfWhatWaitsIsNotNotified) {
    value.AddObserver(&other);
    value.SetUpdateTimerTime(NEVER_MS);
    value.SetValue(1, &other);
    value.SetValue(2, &other);
    value.SetUpdateTimerTime(0);
    EXPECT_EQ(observer.codes, Codes{CHANGED});
    EXPECT_TRUE(other.codes.empty());
}

TEST_F(ValueBaseTest, SeveralOriginatorsOfWhatWaitsAreAllNotified) {
    struct Row {
        IObserver* first;
        IObserver* second;
    };
    value.AddObserver(&other);
    for (const Row row : {Row{&other, &observer}, Row{&other, nullptr}, Row{nullptr, &other}}) {
        observer.codes.clear();
        other.codes.clear();
        value.SetUpdateTimerTime(NEVER_MS);
        value.SetValue(value.GetValue() + 1, row.first);
        value.SetValue(value.GetValue() + 1, row.second);
        value.SetUpdateTimerTime(0);
        EXPECT_EQ(observer.codes, Codes{CHANGED});
        EXPECT_EQ(other.codes, Codes{CHANGED});
    }
}

TEST_F(ValueBaseTest, BecomingZeroDeliversAtOnceAndChangesAreAgainDeliveredAtOnce) {
    value.SetUpdateTimerTime(NEVER_MS);
    value.SetValue(1, nullptr);
    EXPECT_TRUE(observer.codes.empty());
    value.SetUpdateTimerTime(0);
    EXPECT_EQ(observer.codes, Codes{CHANGED});
    value.SetValue(2, nullptr);
    EXPECT_EQ(observer.codes.size(), 2U);
    EXPECT_TRUE(LetTimePass());
    EXPECT_EQ(observer.codes.size(), 2U);
}

TEST_F(ValueBaseTest, WithNothingWaitingAnotherUpdateTimeNotifiesNobody) {
    value.SetUpdateTimerTime(NEVER_MS);
    value.SetUpdateTimerTime(0);
    const int identifier = value.OverrideTimer(SHORT_MS);
    value.KillOverrideTimer(identifier);
    EXPECT_TRUE(LetTimePass());
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(ValueBaseTest, AnOverrideIsInForceUntilItIsTakenBack) {
    value.SetUpdateTimerTime(NEVER_MS);
    const int identifier = value.OverrideTimer(SHORT_MS);
    value.SetValue(1, nullptr);
    EXPECT_TRUE(SpinUntil([&] { return !observer.codes.empty(); }));
    value.KillOverrideTimer(identifier);
    value.SetValue(2, nullptr);
    EXPECT_TRUE(LetTimePass());
    EXPECT_EQ(observer.codes, Codes{CHANGED});
    EXPECT_NE(value.OverrideTimer(NEVER_MS), identifier);
}

TEST_F(ValueBaseTest, AnOverrideMayBeLongerThanTheUpdateTime) {
    value.SetUpdateTimerTime(SHORT_MS);
    const int identifier = value.OverrideTimer(NEVER_MS);
    value.SetValue(1, nullptr);
    EXPECT_TRUE(LetTimePass());
    EXPECT_TRUE(observer.codes.empty());
    value.KillOverrideTimer(identifier);
    EXPECT_TRUE(SpinUntil([&] { return !observer.codes.empty(); }));
}

TEST_F(ValueBaseTest, TheShortestOverrideCounts) {
    value.OverrideTimer(NEVER_MS);
    const int shortest = value.OverrideTimer(SHORT_MS);
    value.OverrideTimer(NEVER_MS);
    value.SetValue(1, nullptr);
    EXPECT_TRUE(SpinUntil([&] { return !observer.codes.empty(); }));
    value.KillOverrideTimer(shortest);
    value.SetValue(2, nullptr);
    EXPECT_TRUE(LetTimePass());
    EXPECT_EQ(observer.codes, Codes{CHANGED});
}

TEST_F(ValueBaseTest, AShorterTimeCountsForWhatWaitsAlready) {
    value.SetUpdateTimerTime(NEVER_MS);
    value.SetValue(1, nullptr);
    value.OverrideTimer(SHORT_MS);
    EXPECT_TRUE(observer.codes.empty());
    EXPECT_TRUE(SpinUntil([&] { return !observer.codes.empty(); }));
}

TEST_F(ValueBaseTest, AnOverrideOfZeroDeliversAtOnce) {
    value.SetUpdateTimerTime(NEVER_MS);
    value.SetValue(1, nullptr);
    const int identifier = value.OverrideTimer(0);
    EXPECT_EQ(observer.codes.size(), 1U);
    value.SetValue(2, nullptr);
    EXPECT_EQ(observer.codes.size(), 2U);
    value.KillOverrideTimer(identifier);
    value.SetValue(3, nullptr);
    EXPECT_EQ(observer.codes.size(), 2U);
}

TEST_F(ValueBaseTest, TakingBackAnUnknownOverrideChangesNothing) {
    value.KillOverrideTimer(0);
    value.KillOverrideTimer(-1);
    value.SetValue(1, nullptr);
    EXPECT_EQ(observer.codes.size(), 1U);
    const int identifier = value.OverrideTimer(NEVER_MS);
    value.KillOverrideTimer(identifier + 1);
    value.SetValue(2, nullptr);
    EXPECT_EQ(observer.codes.size(), 1U);
}

TEST_F(ValueBaseTest, SettingTheTimeOverAndOverDoesNotPutOffTheDelivery) {
    constexpr unsigned TIME_MS = 300;
    value.SetUpdateTimerTime(TIME_MS);
    value.SetValue(1, nullptr);
    EXPECT_TRUE(SpinUntil([&] {
        value.SetUpdateTimerTime(TIME_MS);
        value.KillOverrideTimer(value.OverrideTimer(TIME_MS));
        value.SetValue(value.GetValue() + 1, nullptr);
        return !observer.codes.empty();
    }));
}

TEST_F(ValueBaseTest, TheLongestTimeIsNoShortOne) {
    value.SetUpdateTimerTime(std::numeric_limits<unsigned>::max());
    value.SetValue(1, nullptr);
    EXPECT_TRUE(LetTimePass());
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(ValueBaseTest, ATimedChangeInsideUpdateIsDeliveredByTheNextTimer) {
    FunctionObserver setter([&](Observable*, TChangeCode) {
        if (value.GetValue() < 3) {
            value.SetValue(value.GetValue() + 1, nullptr);
        }
    });
    value.AddObserver(&setter);
    value.SetUpdateTimerTime(1);
    value.SetValue(1, nullptr);
    EXPECT_TRUE(SpinUntil([&] { return observer.codes.size() == 3; }));
    EXPECT_EQ(value.GetValue(), 3);
}

TEST_F(ValueBaseTest, WhatWaitsIsNotDeliveredInsideATransactionButAfterIt) {
    for (const Codes& codes : {Codes{}, Codes{CHANGED}, Codes{REPLACED}}) {
        observer.codes.clear();
        value.SetUpdateTimerTime(SHORT_MS);
        value.SetValue(value.GetValue() + 1, nullptr);
        {
            std::optional<ValueTransaction> transaction;
            if (codes.empty()) {
                transaction.emplace(value.CreateTransaction({}, nullptr));
            } else {
                transaction.emplace(value.CreateTransaction({codes[0]}, nullptr));
            }
            EXPECT_TRUE(LetTimePass());
            EXPECT_TRUE(observer.codes.empty());
        }
        const Codes expected = codes == Codes{REPLACED} ? Codes{CHANGED, REPLACED} : Codes{CHANGED};
        EXPECT_TRUE(SpinUntil([&] { return observer.codes.size() >= expected.size(); }));
        EXPECT_EQ(observer.codes, expected);
    }
}

TEST_F(ValueBaseTest, BecomingZeroInsideATransactionDeliversAtItsEnd) {
    value.SetUpdateTimerTime(NEVER_MS);
    value.SetValue(1, nullptr);
    value.StartTransaction(nullptr);
    value.SetUpdateTimerTime(0);
    EXPECT_TRUE(observer.codes.empty());
    value.EndTransaction(REPLACED, nullptr);
    EXPECT_EQ(observer.codes, (Codes{CHANGED, REPLACED}));
}

TEST_F(ValueBaseTest, AValueMayBeDestroyedWhileChangesWait) {
    auto mortal = std::make_unique<ValueInt>();
    mortal->AddObserver(&other);
    mortal->SetUpdateTimerTime(1);
    mortal->SetValue(1, nullptr);
    mortal.reset();
    EXPECT_TRUE(LetTimePass());
    EXPECT_TRUE(other.codes.empty());
}

TEST_F(ValueBaseTest, AnObserverMayDestroyTheValueInATimedDelivery) {
    auto mortal = std::make_unique<ValueInt>();
    FunctionObserver destroyer([&](Observable*, TChangeCode) { mortal.reset(); });
    mortal->AddObserver(&destroyer);
    mortal->AddObserver(&other);
    mortal->SetUpdateTimerTime(1);
    mortal->SetValue(1, nullptr);
    mortal->HasChanged(REPLACED, nullptr);
    EXPECT_TRUE(SpinUntil([&] { return !mortal; }));
    EXPECT_TRUE(other.codes.empty());
}

TEST_F(ValueBaseTest, AnOriginatorMayBeDestroyedWhileItsChangeWaits) {
    {
        CodeObserver originator;
        value.AddObserver(&originator);
        value.SetUpdateTimerTime(NEVER_MS);
        value.SetValue(1, &originator);
    }
    value.SetUpdateTimerTime(0);
    EXPECT_EQ(observer.codes, Codes{CHANGED});
}

TEST_F(ValueBaseTest, ANewObserverAtTheAddressOfAnOriginatorThatIsGoneIsNotified) {
    std::optional<CodeObserver> sameAddress(std::in_place);
    value.AddObserver(&*sameAddress);
    value.SetUpdateTimerTime(NEVER_MS);
    value.SetValue(1, &*sameAddress);
    sameAddress.emplace();
    value.AddObserver(&*sameAddress);
    value.SetUpdateTimerTime(0);
    EXPECT_EQ(sameAddress->codes, Codes{CHANGED});
    EXPECT_EQ(observer.codes, Codes{CHANGED});
}

TEST_F(ValueBaseTest, ANewObserverAtTheAddressOfAnOriginatorIsNotifiedOfTheEndOfItsTransaction) {
    std::optional<CodeObserver> sameAddress(std::in_place);
    {
        const ValueTransaction transaction = value.CreateTransaction({CHANGED, REPLACED}, &*sameAddress);
        sameAddress.emplace();
        value.AddObserver(&*sameAddress);
    }
    EXPECT_EQ(sameAddress->codes, (Codes{CHANGED, REPLACED}));
}

TEST_F(ValueBaseTest, ACopyOfAnOriginatorIsAnotherObserver) {
    std::optional<CodeObserver> originator(std::in_place);
    value.SetUpdateTimerTime(NEVER_MS);
    value.SetValue(1, &*originator);
    CodeObserver copy(*originator);
    value.AddObserver(&copy);
    value.AddObserver(&*originator);
    value.SetUpdateTimerTime(0);
    EXPECT_EQ(copy.codes, Codes{CHANGED});
    EXPECT_TRUE(originator->codes.empty());
}

TEST_F(ValueBaseTest, RemovalIsNotifiedAtOnceWhateverWaits) {
    Tree& tree = *Tree::Instance();
    auto inserted = std::make_unique<ValueInt>();
    inserted->SetName(u"v"_s, nullptr);
    inserted->SetUpdateTimerTime(NEVER_MS);
    ValueBase* inTree = tree.InsertValue(u"/A"_s, std::move(inserted));
    inTree->AddObserver(&other);
    inTree->HasChanged(CHANGED, nullptr);
    tree.Clear();
    EXPECT_EQ(other.codes, Codes{TChangeCode::GoingAway});
}

// --- command lines ---

const QString VALUE_PATH = u"/A/v"_s;

class ValueBaseCommandStringTest : public testing::Test {
protected:
    ~ValueBaseCommandStringTest() override { Tree::Instance()->Clear(); }
};

TEST_F(ValueBaseCommandStringTest, HoldsTimeOrSequencePathAndText) {
    const ValueBase* value = InsertInTree<ValueInt>(VALUE_PATH, -5);
    EXPECT_EQ(value->GetCommandStringForRecording(1234), u"1234\t/A/v\t-5"_s);
    EXPECT_EQ(value->GetCommandStringForTransmission(4294967295U), u"4294967295\t/A/v\t-5"_s);
}

TEST_F(ValueBaseCommandStringTest, ControlCharactersAreEscaped) {
    const ValueBase* value = InsertInTree<ValueString>(u"/A/a\tb"_s, u"a\tb\nc\r\\d;"_s);
    EXPECT_EQ(value->GetCommandStringForRecording(0), u"0\t/A/a\\tb\ta\\tb\\nc\\u000d\\\\d\\u003b"_s);
}

TEST_F(ValueBaseCommandStringTest, EveryTypeRoundTrips) {
    for (const ValueSample& sample : ValueSamples()) {
        SCOPED_TRACE(sample.typeName);
        ValueBase* value = InsertInTree(VALUE_PATH, sample.make());
        const QString recorded = value->GetCommandStringForRecording(1);
        const QString transmitted = value->GetCommandStringForTransmission(2);
        for (const QString& command : {recorded, transmitted}) {
            EXPECT_TRUE(value->Assign(*sample.makeOther()));
            EXPECT_TRUE(value->SetCommandString(command, nullptr));
            EXPECT_TRUE(value->Compare(sample.make().get()));
        }
        Tree::Instance()->Clear();
    }
}

TEST_F(ValueBaseCommandStringTest, HostileTextsRoundTrip) {
    auto* value = InsertInTree<ValueString>(u"/A %1\t/\\n\u00e4"_s);
    QString all;
    for (char16_t c = 0; c < 0x300; ++c) {
        all += QChar(c);
    }
    for (const QString& text : {u""_s, u" "_s, u"\\"_s, u"\\t"_s, u"\\u0041"_s, u"%1 %2"_s, u"a\0b"_s,
                                u"\U0001F4E1"_s, all, QString(1'000'000, u'\t')}) {
        value->SetValue(text, nullptr);
        const QString command = value->GetCommandStringForRecording(0);
        EXPECT_FALSE(command.contains(u'\n'));
        EXPECT_EQ(command.count(u'\t'), 2);
        value->SetValue(u"other"_s, nullptr);
        EXPECT_TRUE(value->SetCommandString(command, nullptr));
        EXPECT_EQ(value->GetValue(), text);
    }
}

TEST_F(ValueBaseCommandStringTest, MalformedLinesAreRefused) {
    auto* value = InsertInTree<ValueNumericInt>(VALUE_PATH, 5, 0, 10, 1);
    CodeObserver observer;
    value->AddObserver(&observer);
    const std::vector<QString> refused = {
        u""_s,
        u" "_s,
        u"6"_s,
        u"\t"_s,
        u"\t\t"_s,
        u"0\t/A/v"_s,
        u"0\t/A/v\t"_s,
        u"0\t/A/v\t6\t"_s,
        u"0\t/A/v\t6\n"_s + u"\t"_s,
        u"\t/A/v\t6"_s,
        u"x\t/A/v\t6"_s,
        u"-1\t/A/v\t6"_s,
        u"4294967296\t/A/v\t6"_s,
        u"1.5\t/A/v\t6"_s,
        u"1\0\t/A/v\t6"_s,
        u"0\t/A/w\t6"_s,
        u"0\t\t6"_s,
        u"0\tv\t6"_s,
        u"0\t/A/v \t6"_s,
        u"0\t/A/v\\\t6"_s,
        u"0\t/A/v\\q\t6"_s,
        u"0\t/A/v\t6x"_s,
        u"0\t/A/v\t6\\"_s,
        u"0\t/A/v\t\\x36"_s,
        u"0\t/A/v\t\\u36"_s,
        u"0\t/A/v\t\\u+036"_s,
        u"0\t/A/v\t\\u0x36"_s,
        u"0\t/A/v\t\\u 036"_s,
        u"0\t/A/v\t6\\u0000"_s,
        u"0\t/A/v\t11"_s, // outside the range
        u"0\t/A/v\t"_s + QString(1'000'000, u'6'),
        QString(1'000'000, u'\t'),
    };
    for (const QString& command : refused) {
        EXPECT_FALSE(value->SetCommandString(command, nullptr)) << command.left(40).toStdString();
        EXPECT_EQ(value->GetValue(), 5);
    }
    EXPECT_TRUE(observer.codes.empty());
    EXPECT_TRUE(value->SetCommandString(u"0\t/A/v\t\\u0036"_s, nullptr));
    EXPECT_EQ(value->GetValue(), 6);
}

TEST_F(ValueBaseCommandStringTest, TheOriginatorIsNotNotified) {
    ValueBase* value = InsertInTree<ValueInt>(VALUE_PATH);
    CodeObserver observer;
    CodeObserver originator;
    value->AddObserver(&observer);
    value->AddObserver(&originator);
    EXPECT_TRUE(value->SetCommandString(u"0\t/A/v\t6"_s, &originator));
    EXPECT_EQ(observer.codes.size(), 1U);
    EXPECT_TRUE(originator.codes.empty());
}

TEST(ValueOriginator, WithoutOneEveryObserverIsNotified) {
    ValueSelection selection;
    ValueNumericInt number;
    ValueBearingList list;
    CodeObserver observer;
    for (Observable* value : std::initializer_list<Observable*>{&selection, &number, &list}) {
        value->AddObserver(&observer);
    }
    number.SetValue(1);
    number.SetMinMax(0, 10, 1);
    number.SetState(TValueState::NotMeasured);
    number.SetStringValue(u"2"_s);
    static_cast<ValueBase&>(number).SetStringValue(u"3"_s);
    list.PushBack({});
    list.Clear();
    selection.AddItem({u"a"_s, 0.0, 1});
    selection.AddItem({u"b"_s, 0.0, 2});
    selection.SetCurrentKey(2);
    number.HasChanged(TChangeCode::Changed);
    EXPECT_EQ(observer.codes.size(), 11U);
}

} // namespace
