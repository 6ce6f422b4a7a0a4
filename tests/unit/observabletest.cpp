#include "kwbase/observable.h"

#include "support/observers.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

using ZANPlatform::ObservablePtr;

namespace {

using Log = std::vector<std::string>;

class Subject : public Observable {
public:
    void Tell(IObserver* originator = nullptr) { NotifyObservers(TChangeCode::Changed, originator); }
};

/// A subject with the observers a, b and c, and the log that they share.
class ObservableTest : public testing::Test {
protected:
    ObservableTest() {
        subject.AddObserver(&a);
        subject.AddObserver(&b);
        subject.AddObserver(&c);
    }

    /// Tells the observers and returns who was called.
    Log Told(IObserver* originator = nullptr) {
        log.clear();
        subject.Tell(originator);
        return log;
    }

    Log log;
    NamedObserver a{"a", log};
    NamedObserver b{"b", log};
    NamedObserver c{"c", log};
    Subject subject;
};

TEST_F(ObservableTest, ObserversAreToldInTheOrderOfAdding) {
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, SubjectAndCodeReachTheObserver) {
    const Observable* seenSubject = nullptr;
    TChangeCode seenCode{};
    FunctionObserver observer([&](Observable* told, TChangeCode code) {
        seenSubject = told;
        seenCode = code;
    });
    Subject other;
    other.AddObserver(&observer);
    other.Tell();
    EXPECT_EQ(seenSubject, &other);
    EXPECT_EQ(seenCode, TChangeCode::Changed);
}

TEST_F(ObservableTest, ASubjectWithoutObserversTellsNobody) {
    subject.DeleteObservers();
    EXPECT_EQ(Told(), Log{});
}

TEST_F(ObservableTest, AnObserverIsAddedOnce) {
    EXPECT_FALSE(subject.AddObserver(&b));
    EXPECT_EQ(subject.GetObserverCount(), 3U);
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, NullIsNoObserver) {
    EXPECT_FALSE(subject.AddObserver(nullptr));
    EXPECT_FALSE(subject.DeleteObserver(nullptr));
    EXPECT_FALSE(subject.MakeFirstObserver(nullptr));
    EXPECT_EQ(subject.GetObserverCount(), 3U);
}

TEST_F(ObservableTest, ADeletedObserverIsNotTold) {
    EXPECT_TRUE(subject.DeleteObserver(&b));
    EXPECT_EQ(Told(), (Log{"a", "c"}));
}

TEST_F(ObservableTest, DeletingAStrangerIsRefused) {
    Subject other;
    EXPECT_FALSE(other.DeleteObserver(&a));
    EXPECT_FALSE(other.MakeFirstObserver(&a));
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, ADeletedObserverCanBeAddedAgainAtTheEnd) {
    subject.DeleteObserver(&a);
    EXPECT_TRUE(subject.AddObserver(&a));
    EXPECT_EQ(Told(), (Log{"b", "c", "a"}));
}

TEST_F(ObservableTest, DeleteObserversRemovesAllOfThem) {
    subject.DeleteObservers();
    EXPECT_EQ(subject.GetObserverCount(), 0U);
    EXPECT_EQ(Told(), Log{});
    EXPECT_TRUE(subject.AddObserver(&c));
}

TEST_F(ObservableTest, TheFirstObserverIsToldFirstAndTheOthersKeepTheirOrder) {
    EXPECT_TRUE(subject.MakeFirstObserver(&c));
    EXPECT_EQ(Told(), (Log{"c", "a", "b"}));
    EXPECT_TRUE(subject.MakeFirstObserver(&c));
    EXPECT_EQ(Told(), (Log{"c", "a", "b"}));
}

TEST_F(ObservableTest, TheOriginatorIsNeverTold) {
    EXPECT_EQ(Told(&b), (Log{"a", "c"}));
    EXPECT_EQ(Told(&a), (Log{"b", "c"}));
}

TEST_F(ObservableTest, AnOriginatorThatIsNoObserverKeepsNobodyFromBeingTold) {
    const NamedObserver stranger("stranger", log);
    EXPECT_EQ(Told(const_cast<NamedObserver*>(&stranger)), (Log{"a", "b", "c"}));
}

// --- changes of the list while a notification runs ---

TEST_F(ObservableTest, AnObserverAddedDuringANotificationIsToldFromTheNextOneOn) {
    NamedObserver late("late", log);
    a.onUpdate = [&] { subject.AddObserver(&late); };
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
    EXPECT_EQ(Told(), (Log{"a", "b", "c", "late"}));
}

TEST_F(ObservableTest, ManyObserversAddedDuringANotificationAreToldFromTheNextOneOn) {
    std::vector<std::unique_ptr<NamedObserver>> many;
    c.onUpdate = [&] {
        for (int i = 0; i < 1000; ++i) {
            subject.AddObserver(many.emplace_back(std::make_unique<NamedObserver>("late", log)).get());
        }
        c.onUpdate = {};
    };
    EXPECT_EQ(Told().size(), 3U);
    EXPECT_EQ(Told().size(), 1003U);
}

TEST_F(ObservableTest, AnObserverMayRemoveItselfAndTheNextOneIsStillTold) {
    b.onUpdate = [&] { subject.DeleteObserver(&b); };
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
    EXPECT_EQ(Told(), (Log{"a", "c"}));
}

TEST_F(ObservableTest, AnObserverMayRemoveOneThatIsStillToBeTold) {
    a.onUpdate = [&] { subject.DeleteObserver(&c); };
    EXPECT_EQ(Told(), (Log{"a", "b"}));
    EXPECT_EQ(subject.GetObserverCount(), 2U);
}

TEST_F(ObservableTest, AnObserverMayRemoveOneThatHasBeenTold) {
    b.onUpdate = [&] { subject.DeleteObserver(&a); };
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
    EXPECT_EQ(Told(), (Log{"b", "c"}));
}

TEST_F(ObservableTest, AnObserverMayRemoveAllOfThem) {
    a.onUpdate = [&] { subject.DeleteObservers(); };
    EXPECT_EQ(Told(), (Log{"a"}));
    EXPECT_EQ(subject.GetObserverCount(), 0U);
    EXPECT_EQ(Told(), Log{});
}

TEST_F(ObservableTest, AnObserverMayDeleteItself) {
    auto* mortal = new NamedObserver("mortal", log);
    subject.AddObserver(mortal);
    subject.MakeFirstObserver(mortal);
    mortal->onUpdate = [&] { delete mortal; };
    EXPECT_EQ(Told(), (Log{"mortal", "a", "b", "c"}));
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, AnObserverMayDetachAndThenDeleteItself) {
    auto* mortal = new NamedObserver("mortal", log);
    subject.AddObserver(mortal);
    subject.MakeFirstObserver(mortal);
    mortal->onUpdate = [&] {
        subject.DeleteObserver(mortal);
        delete mortal;
    };
    EXPECT_EQ(Told(), (Log{"mortal", "a", "b", "c"}));
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, AnObserverMayDestroyOneThatIsStillToBeTold) {
    auto victim = std::make_unique<NamedObserver>("victim", log);
    subject.AddObserver(victim.get());
    b.onUpdate = [&] { victim.reset(); };
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, AnObserverRemovedAndAddedAgainIsNotToldInTheRunningNotification) {
    a.onUpdate = [&] {
        subject.DeleteObserver(&b);
        subject.AddObserver(&b);
    };
    EXPECT_EQ(Told(), (Log{"a", "c"}));
    a.onUpdate = {};
    EXPECT_EQ(Told(), (Log{"a", "c", "b"}));
}

TEST_F(ObservableTest, AnObserverThatRemovesAndAddsItselfIsNotToldTwice) {
    a.onUpdate = [&] {
        subject.DeleteObserver(&a);
        subject.AddObserver(&a);
    };
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
    EXPECT_EQ(Told(), (Log{"b", "c", "a"}));
}

TEST_F(ObservableTest, ObserversThatComeAndGoInNotificationsLeaveNothingBehind) {
    // Were their places kept, each notification would take longer than the one before, and all of them
    // minutes.
    int count = 0;
    FunctionObserver restless;
    restless.onUpdate = [&](Observable*, TChangeCode) {
        ++count;
        subject.DeleteObserver(&restless);
        subject.AddObserver(&restless);
    };
    subject.DeleteObservers();
    subject.AddObserver(&restless);
    constexpr int TIMES = 500'000;
    for (int i = 0; i < TIMES; ++i) {
        subject.Tell();
    }
    EXPECT_EQ(count, TIMES);
    EXPECT_EQ(subject.GetObserverCount(), 1U);
}

// --- nested notifications ---

TEST_F(ObservableTest, AChangeMadeInsideUpdateIsToldToAllBeforeTheOuterOneGoesOn) {
    b.onUpdate = [&] {
        b.onUpdate = {};
        subject.Tell();
    };
    EXPECT_EQ(Told(), (Log{"a", "b", "a", "b", "c", "c"}));
}

TEST_F(ObservableTest, AnOriginatorInsideUpdateIsNotToldOfItsOwnChange) {
    b.onUpdate = [&] {
        b.onUpdate = {};
        subject.Tell(&b);
    };
    EXPECT_EQ(Told(), (Log{"a", "b", "a", "c", "c"}));
}

TEST_F(ObservableTest, AnObserverAddedDuringTheOuterNotificationIsToldOfTheInnerOne) {
    NamedObserver late("late", log);
    a.onUpdate = [&] {
        a.onUpdate = {};
        subject.AddObserver(&late);
        subject.Tell();
    };
    EXPECT_EQ(Told(), (Log{"a", "a", "b", "c", "late", "b", "c"}));
}

TEST_F(ObservableTest, AnObserverRemovedInAnInnerNotificationIsNotToldInTheOuterOne) {
    int depth = 0;
    a.onUpdate = [&] {
        if (++depth == 1) {
            subject.Tell();
        } else {
            subject.DeleteObserver(&b);
        }
    };
    EXPECT_EQ(Told(), (Log{"a", "a", "c", "c"}));
    EXPECT_EQ(subject.GetObserverCount(), 2U);
}

TEST_F(ObservableTest, AHundredNestedNotificationsEndInOrder) {
    int depth = 0;
    a.onUpdate = [&] {
        if (++depth < 100) {
            subject.Tell();
        }
    };
    const Log told = Told();
    EXPECT_EQ(told.size(), 300U);
    EXPECT_EQ(told[99], "a");
    EXPECT_EQ(told[100], "b");
    EXPECT_EQ(told.back(), "c");
}

// --- MakeFirstObserver while a notification runs ---

TEST_F(ObservableTest, AnObserverMadeFirstDuringANotificationIsToldOnceInItAndFirstInTheNext) {
    a.onUpdate = [&] { EXPECT_TRUE(subject.MakeFirstObserver(&c)); };
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
    EXPECT_EQ(Told(), (Log{"c", "a", "b"}));
}

TEST_F(ObservableTest, AnObserverMadeFirstInAnInnerNotificationIsFirstWhenTheOuterOneHasEnded) {
    int depth = 0;
    b.onUpdate = [&] {
        if (++depth == 1) {
            subject.Tell();
        } else if (depth == 2) {
            subject.MakeFirstObserver(&c);
        }
    };
    EXPECT_EQ(Told(), (Log{"a", "b", "a", "b", "c", "c"}));
    EXPECT_EQ(Told(), (Log{"c", "a", "b"}));
}

TEST_F(ObservableTest, TheLastOneMadeFirstDuringANotificationIsFirst) {
    a.onUpdate = [&] {
        subject.MakeFirstObserver(&b);
        subject.MakeFirstObserver(&c);
        a.onUpdate = {};
    };
    Told();
    EXPECT_EQ(Told(), (Log{"c", "b", "a"}));
}

TEST_F(ObservableTest, AnObserverMadeFirstAndThenRemovedInANotificationIsGone) {
    a.onUpdate = [&] {
        subject.MakeFirstObserver(&c);
        subject.DeleteObserver(&c);
    };
    EXPECT_EQ(Told(), (Log{"a", "b"}));
    a.onUpdate = {};
    EXPECT_EQ(Told(), (Log{"a", "b"}));
}

TEST_F(ObservableTest, AnObserverMadeFirstRemovedAndAddedAgainInANotificationIsLast) {
    a.onUpdate = [&] {
        subject.MakeFirstObserver(&b);
        subject.DeleteObserver(&b);
        subject.AddObserver(&b);
        a.onUpdate = {};
    };
    Told();
    EXPECT_EQ(Told(), (Log{"a", "c", "b"}));
}

TEST_F(ObservableTest, RemovingAllInANotificationForgetsWhoWasToBecomeFirst) {
    a.onUpdate = [&] {
        subject.MakeFirstObserver(&c);
        subject.DeleteObservers();
    };
    EXPECT_EQ(Told(), (Log{"a"}));
    EXPECT_EQ(Told(), Log{});
    EXPECT_EQ(subject.GetObserverCount(), 0U);
}

// --- lifetimes ---

TEST_F(ObservableTest, ADestroyedObserverIsNotTold) {
    {
        NamedObserver mortal("mortal", log);
        subject.AddObserver(&mortal);
        EXPECT_EQ(subject.GetObserverCount(), 4U);
    }
    EXPECT_EQ(subject.GetObserverCount(), 3U);
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, ADestroyedObserverDetachesFromAllItsSubjects) {
    std::vector<Subject> subjects(10);
    {
        NamedObserver mortal("mortal", log);
        for (Subject& each : subjects) {
            each.AddObserver(&mortal);
        }
    }
    for (Subject& each : subjects) {
        EXPECT_EQ(each.GetObserverCount(), 0U);
        each.Tell();
    }
    EXPECT_EQ(log, Log{});
}

TEST_F(ObservableTest, AnObserverOutlivesItsSubjects) {
    NamedObserver survivor("survivor", log);
    {
        Subject mortal;
        mortal.AddObserver(&survivor);
    }
    // Its list of subjects holds no dangling entry: it can observe another one and be destroyed.
    EXPECT_TRUE(subject.AddObserver(&survivor));
    EXPECT_EQ(Told(), (Log{"a", "b", "c", "survivor"}));
}

TEST_F(ObservableTest, TheSubjectMayBeDestroyedInsideUpdate) {
    auto mortal = std::make_unique<Subject>();
    mortal->AddObserver(&a);
    mortal->AddObserver(&b);
    a.onUpdate = [&] { mortal.reset(); };
    mortal->Tell();
    EXPECT_EQ(log, (Log{"a"}));
}

TEST_F(ObservableTest, TheSubjectMayBeDestroyedInsideANestedNotification) {
    auto mortal = std::make_unique<Subject>();
    mortal->AddObserver(&a);
    mortal->AddObserver(&b);
    int depth = 0;
    a.onUpdate = [&] {
        if (++depth < 3) {
            mortal->Tell();
        } else {
            mortal.reset();
        }
    };
    mortal->Tell();
    EXPECT_EQ(log, (Log{"a", "a", "a"}));
}

TEST_F(ObservableTest, SubjectAndObserverMayBothBeDestroyedInsideUpdate) {
    auto mortalSubject = std::make_unique<Subject>();
    auto mortalObserver = std::make_unique<NamedObserver>("mortal", log);
    mortalSubject->AddObserver(mortalObserver.get());
    mortalSubject->AddObserver(&b);
    mortalObserver->onUpdate = [&] {
        mortalSubject->MakeFirstObserver(&b);
        mortalSubject.reset();
        mortalObserver.reset();
    };
    mortalSubject->Tell();
    EXPECT_EQ(log, (Log{"mortal"}));
}

TEST_F(ObservableTest, AnObserverThatThrowsLeavesTheListUsable) {
    a.onUpdate = [&] {
        subject.DeleteObserver(&b);
        throw 1;
    };
    EXPECT_THROW(subject.Tell(), int);
    a.onUpdate = {};
    EXPECT_EQ(Told(), (Log{"a", "c"}));
    EXPECT_TRUE(subject.MakeFirstObserver(&c));
    EXPECT_EQ(Told(), (Log{"c", "a"}));
}

// --- copies ---

TEST_F(ObservableTest, ACopyIsObservedByTheSameObservers) {
    Subject copy = subject;
    copy.Tell();
    EXPECT_EQ(log, (Log{"a", "b", "c"}));
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
    copy.DeleteObserver(&a);
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, AssignmentReplacesTheObservers) {
    Subject other;
    NamedObserver before("before", log);
    other.AddObserver(&before);
    other = subject;
    other.Tell();
    EXPECT_EQ(log, (Log{"a", "b", "c"}));
    EXPECT_EQ(other.GetObserverCount(), 3U);
}

TEST_F(ObservableTest, AssignmentToItselfChangesNothing) {
    const Subject& same = subject;
    subject = same;
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, ACopyMadeDuringANotificationHasTheObserversThatRemain) {
    std::unique_ptr<Subject> copy;
    b.onUpdate = [&] {
        subject.DeleteObserver(&a);
        copy = std::make_unique<Subject>(subject);
        b.onUpdate = {};
    };
    Told();
    log.clear();
    copy->Tell();
    EXPECT_EQ(log, (Log{"b", "c"}));
}

TEST_F(ObservableTest, AssignmentDuringANotificationTellsTheNewObserversFromTheNextOneOn) {
    NamedObserver d("d", log);
    NamedObserver e("e", log);
    Subject source;
    source.AddObserver(&d);
    source.AddObserver(&e);
    a.onUpdate = [&] {
        subject.MakeFirstObserver(&c);
        subject = source;
    };
    EXPECT_EQ(Told(), (Log{"a"}));
    EXPECT_EQ(Told(), (Log{"d", "e"}));
}

TEST_F(ObservableTest, ACopyOfAnObserverObservesNothing) {
    {
        NamedObserver copy = a;
        EXPECT_EQ(subject.GetObserverCount(), 3U);
        EXPECT_FALSE(subject.DeleteObserver(&copy));
    }
    EXPECT_EQ(Told(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, AnObserverThatIsAssignedToKeepsItsSubjects) {
    CodeObserver target;
    CodeObserver source;
    Subject other;
    other.AddObserver(&target);
    target = source;
    other.Tell();
    EXPECT_EQ(target.codes.size(), 1U);
    EXPECT_TRUE(source.codes.empty());
}

// --- ObservablePtr ---

TEST(ObservablePtr, BecomesNullWhenTheObjectIsDestroyed) {
    auto object = std::make_unique<Subject>();
    const ObservablePtr<Subject> pointer(object.get());
    const ObservablePtr<Subject> copy = pointer;
    EXPECT_TRUE(pointer);
    EXPECT_EQ(pointer.get(), object.get());
    EXPECT_EQ(&*pointer, object.get());
    EXPECT_EQ(pointer.operator->(), object.get());
    object.reset();
    EXPECT_FALSE(pointer);
    EXPECT_EQ(pointer.get(), nullptr);
    EXPECT_EQ(copy.get(), nullptr);
}

TEST(ObservablePtr, StartsNull) {
    const ObservablePtr<Subject> byDefault;
    const ObservablePtr<Subject> fromNull(nullptr);
    EXPECT_FALSE(byDefault);
    EXPECT_FALSE(fromNull);
}

TEST(ObservablePtr, ACopyOfTheObjectHasALifeOfItsOwn) {
    auto object = std::make_unique<Subject>();
    const ObservablePtr<Subject> pointer(object.get());
    Subject copy = *object;
    const ObservablePtr<Subject> toCopy(&copy);
    object.reset();
    EXPECT_FALSE(pointer);
    EXPECT_EQ(toCopy.get(), &copy);
}

TEST(ObservablePtr, CanBeAimedAtAnotherObject) {
    auto first = std::make_unique<Subject>();
    Subject second;
    ObservablePtr<Subject> pointer(first.get());
    pointer = &second;
    first.reset();
    EXPECT_EQ(pointer.get(), &second);
    pointer = nullptr;
    EXPECT_FALSE(pointer);
}

} // namespace
