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
    void Notify(IObserver* originator = nullptr) { NotifyObservers(TChangeCode::Changed, originator); }
};

/// A subject with the observers a, b and c, and the log that they share.
class ObservableTest : public testing::Test {
protected:
    ObservableTest() {
        subject.AddObserver(&a);
        subject.AddObserver(&b);
        subject.AddObserver(&c);
    }

    /// Notifies the observers and returns the names of those that were called.
    Log Notified(IObserver* originator = nullptr) {
        log.clear();
        subject.Notify(originator);
        return log;
    }

    Log log;
    NamedObserver a{"a", log};
    NamedObserver b{"b", log};
    NamedObserver c{"c", log};
    Subject subject;
};

TEST_F(ObservableTest, ObserversAreNotifiedInTheOrderOfAdding) {
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, SubjectAndCodeReachTheObserver) {
    const Observable* seenSubject = nullptr;
    TChangeCode seenCode{};
    FunctionObserver observer([&](Observable* changed, TChangeCode code) {
        seenSubject = changed;
        seenCode = code;
    });
    Subject other;
    other.AddObserver(&observer);
    other.Notify();
    EXPECT_EQ(seenSubject, &other);
    EXPECT_EQ(seenCode, TChangeCode::Changed);
}

TEST_F(ObservableTest, ASubjectWithoutObserversNotifiesNobody) {
    subject.DeleteObservers();
    EXPECT_EQ(Notified(), Log{});
}

TEST_F(ObservableTest, AnObserverIsAddedOnce) {
    EXPECT_FALSE(subject.AddObserver(&b));
    EXPECT_EQ(subject.GetObserverCount(), 3U);
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, NullIsNoObserver) {
    EXPECT_FALSE(subject.AddObserver(nullptr));
    EXPECT_FALSE(subject.DeleteObserver(nullptr));
    EXPECT_FALSE(subject.MakeFirstObserver(nullptr));
    EXPECT_EQ(subject.GetObserverCount(), 3U);
}

TEST_F(ObservableTest, ADeletedObserverIsNotNotified) {
    EXPECT_TRUE(subject.DeleteObserver(&b));
    EXPECT_EQ(Notified(), (Log{"a", "c"}));
}

TEST_F(ObservableTest, DeletingAStrangerIsRefused) {
    Subject other;
    EXPECT_FALSE(other.DeleteObserver(&a));
    EXPECT_FALSE(other.MakeFirstObserver(&a));
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, ADeletedObserverCanBeAddedAgainAtTheEnd) {
    subject.DeleteObserver(&a);
    EXPECT_TRUE(subject.AddObserver(&a));
    EXPECT_EQ(Notified(), (Log{"b", "c", "a"}));
}

TEST_F(ObservableTest, DeleteObserversRemovesAllOfThem) {
    subject.DeleteObservers();
    EXPECT_EQ(subject.GetObserverCount(), 0U);
    EXPECT_EQ(Notified(), Log{});
    EXPECT_TRUE(subject.AddObserver(&c));
}

TEST_F(ObservableTest, TheFirstObserverIsNotifiedFirstAndTheOthersKeepTheirOrder) {
    EXPECT_TRUE(subject.MakeFirstObserver(&c));
    EXPECT_EQ(Notified(), (Log{"c", "a", "b"}));
    EXPECT_TRUE(subject.MakeFirstObserver(&c));
    EXPECT_EQ(Notified(), (Log{"c", "a", "b"}));
}

TEST_F(ObservableTest, TheOriginatorIsNeverNotified) {
    EXPECT_EQ(Notified(&b), (Log{"a", "c"}));
    EXPECT_EQ(Notified(&a), (Log{"b", "c"}));
}

TEST_F(ObservableTest, AnOriginatorThatIsNoObserverKeepsNobodyFromBeingNotified) {
    const NamedObserver stranger("stranger", log);
    EXPECT_EQ(Notified(const_cast<NamedObserver*>(&stranger)), (Log{"a", "b", "c"}));
}

// --- changes of the list while a notification runs ---

TEST_F(ObservableTest, AnObserverAddedDuringANotificationIsNotifiedFromTheNextOneOn) {
    NamedObserver late("late", log);
    a.onUpdate = [&] { subject.AddObserver(&late); };
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
    EXPECT_EQ(Notified(), (Log{"a", "b", "c", "late"}));
}

TEST_F(ObservableTest, ManyObserversAddedDuringANotificationAreNotifiedFromTheNextOneOn) {
    std::vector<std::unique_ptr<NamedObserver>> many;
    c.onUpdate = [&] {
        for (int i = 0; i < 1000; ++i) {
            subject.AddObserver(many.emplace_back(std::make_unique<NamedObserver>("late", log)).get());
        }
        c.onUpdate = {};
    };
    EXPECT_EQ(Notified().size(), 3U);
    EXPECT_EQ(Notified().size(), 1003U);
}

TEST_F(ObservableTest, AnObserverMayRemoveItselfAndTheNextOneIsStillNotified) {
    b.onUpdate = [&] { subject.DeleteObserver(&b); };
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
    EXPECT_EQ(Notified(), (Log{"a", "c"}));
}

TEST_F(ObservableTest, AnObserverMayRemoveOneThatIsStillToBeNotified) {
    a.onUpdate = [&] { subject.DeleteObserver(&c); };
    EXPECT_EQ(Notified(), (Log{"a", "b"}));
    EXPECT_EQ(subject.GetObserverCount(), 2U);
}

TEST_F(ObservableTest, AnObserverMayRemoveOneThatHasBeenNotified) {
    b.onUpdate = [&] { subject.DeleteObserver(&a); };
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
    EXPECT_EQ(Notified(), (Log{"b", "c"}));
}

TEST_F(ObservableTest, AnObserverMayRemoveAllOfThem) {
    a.onUpdate = [&] { subject.DeleteObservers(); };
    EXPECT_EQ(Notified(), (Log{"a"}));
    EXPECT_EQ(subject.GetObserverCount(), 0U);
    EXPECT_EQ(Notified(), Log{});
}

TEST_F(ObservableTest, AnObserverMayDeleteItself) {
    auto* mortal = new NamedObserver("mortal", log);
    subject.AddObserver(mortal);
    subject.MakeFirstObserver(mortal);
    mortal->onUpdate = [&] { delete mortal; };
    EXPECT_EQ(Notified(), (Log{"mortal", "a", "b", "c"}));
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, AnObserverMayDetachAndThenDeleteItself) {
    auto* mortal = new NamedObserver("mortal", log);
    subject.AddObserver(mortal);
    subject.MakeFirstObserver(mortal);
    mortal->onUpdate = [&] {
        subject.DeleteObserver(mortal);
        delete mortal;
    };
    EXPECT_EQ(Notified(), (Log{"mortal", "a", "b", "c"}));
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, AnObserverMayDestroyOneThatIsStillToBeNotified) {
    auto victim = std::make_unique<NamedObserver>("victim", log);
    subject.AddObserver(victim.get());
    b.onUpdate = [&] { victim.reset(); };
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, AnObserverRemovedAndAddedAgainIsNotNotifiedInTheRunningNotification) {
    a.onUpdate = [&] {
        subject.DeleteObserver(&b);
        subject.AddObserver(&b);
    };
    EXPECT_EQ(Notified(), (Log{"a", "c"}));
    a.onUpdate = {};
    EXPECT_EQ(Notified(), (Log{"a", "c", "b"}));
}

TEST_F(ObservableTest, AnObserverThatRemovesAndAddsItselfIsNotNotifiedTwice) {
    a.onUpdate = [&] {
        subject.DeleteObserver(&a);
        subject.AddObserver(&a);
    };
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
    EXPECT_EQ(Notified(), (Log{"b", "c", "a"}));
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
        subject.Notify();
    }
    EXPECT_EQ(count, TIMES);
    EXPECT_EQ(subject.GetObserverCount(), 1U);
}

// --- nested notifications ---

TEST_F(ObservableTest, AChangeMadeInsideUpdateReachesAllBeforeTheOuterOneGoesOn) {
    b.onUpdate = [&] {
        b.onUpdate = {};
        subject.Notify();
    };
    EXPECT_EQ(Notified(), (Log{"a", "b", "a", "b", "c", "c"}));
}

TEST_F(ObservableTest, AnOriginatorInsideUpdateIsNotNotifiedOfItsOwnChange) {
    b.onUpdate = [&] {
        b.onUpdate = {};
        subject.Notify(&b);
    };
    EXPECT_EQ(Notified(), (Log{"a", "b", "a", "c", "c"}));
}

TEST_F(ObservableTest, AnObserverAddedDuringTheOuterNotificationIsNotifiedOfTheInnerOne) {
    NamedObserver late("late", log);
    a.onUpdate = [&] {
        a.onUpdate = {};
        subject.AddObserver(&late);
        subject.Notify();
    };
    EXPECT_EQ(Notified(), (Log{"a", "a", "b", "c", "late", "b", "c"}));
}

TEST_F(ObservableTest, AnObserverRemovedInAnInnerNotificationIsNotNotifiedInTheOuterOne) {
    int depth = 0;
    a.onUpdate = [&] {
        if (++depth == 1) {
            subject.Notify();
        } else {
            subject.DeleteObserver(&b);
        }
    };
    EXPECT_EQ(Notified(), (Log{"a", "a", "c", "c"}));
    EXPECT_EQ(subject.GetObserverCount(), 2U);
}

TEST_F(ObservableTest, AHundredNestedNotificationsEndInOrder) {
    int depth = 0;
    a.onUpdate = [&] {
        if (++depth < 100) {
            subject.Notify();
        }
    };
    const Log called = Notified();
    EXPECT_EQ(called.size(), 300U);
    EXPECT_EQ(called[99], "a");
    EXPECT_EQ(called[100], "b");
    EXPECT_EQ(called.back(), "c");
}

// --- MakeFirstObserver while a notification runs ---

TEST_F(ObservableTest, AnObserverMadeFirstDuringANotificationIsNotifiedOnceInItAndFirstInTheNext) {
    a.onUpdate = [&] { EXPECT_TRUE(subject.MakeFirstObserver(&c)); };
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
    EXPECT_EQ(Notified(), (Log{"c", "a", "b"}));
}

TEST_F(ObservableTest, AnObserverMadeFirstInAnInnerNotificationIsFirstWhenTheOuterOneHasEnded) {
    int depth = 0;
    b.onUpdate = [&] {
        if (++depth == 1) {
            subject.Notify();
        } else if (depth == 2) {
            subject.MakeFirstObserver(&c);
        }
    };
    EXPECT_EQ(Notified(), (Log{"a", "b", "a", "b", "c", "c"}));
    EXPECT_EQ(Notified(), (Log{"c", "a", "b"}));
}

TEST_F(ObservableTest, TheLastOneMadeFirstDuringANotificationIsFirst) {
    a.onUpdate = [&] {
        subject.MakeFirstObserver(&b);
        subject.MakeFirstObserver(&c);
        a.onUpdate = {};
    };
    Notified();
    EXPECT_EQ(Notified(), (Log{"c", "b", "a"}));
}

TEST_F(ObservableTest, AnObserverMadeFirstAndThenRemovedInANotificationIsGone) {
    a.onUpdate = [&] {
        subject.MakeFirstObserver(&c);
        subject.DeleteObserver(&c);
    };
    EXPECT_EQ(Notified(), (Log{"a", "b"}));
    a.onUpdate = {};
    EXPECT_EQ(Notified(), (Log{"a", "b"}));
}

TEST_F(ObservableTest, AnObserverMadeFirstRemovedAndAddedAgainInANotificationIsLast) {
    a.onUpdate = [&] {
        subject.MakeFirstObserver(&b);
        subject.DeleteObserver(&b);
        subject.AddObserver(&b);
        a.onUpdate = {};
    };
    Notified();
    EXPECT_EQ(Notified(), (Log{"a", "c", "b"}));
}

TEST_F(ObservableTest, RemovingAllInANotificationForgetsWhoWasToBecomeFirst) {
    a.onUpdate = [&] {
        subject.MakeFirstObserver(&c);
        subject.DeleteObservers();
    };
    EXPECT_EQ(Notified(), (Log{"a"}));
    EXPECT_EQ(Notified(), Log{});
    EXPECT_EQ(subject.GetObserverCount(), 0U);
}

// --- lifetimes ---

TEST_F(ObservableTest, ADestroyedObserverIsNotNotified) {
    {
        NamedObserver mortal("mortal", log);
        subject.AddObserver(&mortal);
        EXPECT_EQ(subject.GetObserverCount(), 4U);
    }
    EXPECT_EQ(subject.GetObserverCount(), 3U);
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
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
        each.Notify();
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
    EXPECT_EQ(Notified(), (Log{"a", "b", "c", "survivor"}));
}

TEST_F(ObservableTest, TheSubjectMayBeDestroyedInsideUpdate) {
    auto mortal = std::make_unique<Subject>();
    mortal->AddObserver(&a);
    mortal->AddObserver(&b);
    a.onUpdate = [&] { mortal.reset(); };
    mortal->Notify();
    EXPECT_EQ(log, (Log{"a"}));
}

TEST_F(ObservableTest, TheSubjectMayBeDestroyedInsideANestedNotification) {
    auto mortal = std::make_unique<Subject>();
    mortal->AddObserver(&a);
    mortal->AddObserver(&b);
    int depth = 0;
    a.onUpdate = [&] {
        if (++depth < 3) {
            mortal->Notify();
        } else {
            mortal.reset();
        }
    };
    mortal->Notify();
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
    mortalSubject->Notify();
    EXPECT_EQ(log, (Log{"mortal"}));
}

TEST_F(ObservableTest, AnObserverThatThrowsLeavesTheListUsable) {
    a.onUpdate = [&] {
        subject.DeleteObserver(&b);
        throw 1;
    };
    EXPECT_THROW(subject.Notify(), int);
    a.onUpdate = {};
    EXPECT_EQ(Notified(), (Log{"a", "c"}));
    EXPECT_TRUE(subject.MakeFirstObserver(&c));
    EXPECT_EQ(Notified(), (Log{"c", "a"}));
}

// --- copies ---

TEST_F(ObservableTest, ACopyIsObservedByTheSameObservers) {
    Subject copy = subject;
    copy.Notify();
    EXPECT_EQ(log, (Log{"a", "b", "c"}));
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
    copy.DeleteObserver(&a);
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, AssignmentReplacesTheObservers) {
    Subject other;
    NamedObserver before("before", log);
    other.AddObserver(&before);
    other = subject;
    other.Notify();
    EXPECT_EQ(log, (Log{"a", "b", "c"}));
    EXPECT_EQ(other.GetObserverCount(), 3U);
}

TEST_F(ObservableTest, AssignmentToItselfChangesNothing) {
    const Subject& same = subject;
    subject = same;
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, ACopyMadeDuringANotificationHasTheObserversThatRemain) {
    std::unique_ptr<Subject> copy;
    b.onUpdate = [&] {
        subject.DeleteObserver(&a);
        copy = std::make_unique<Subject>(subject);
        b.onUpdate = {};
    };
    Notified();
    log.clear();
    copy->Notify();
    EXPECT_EQ(log, (Log{"b", "c"}));
}

TEST_F(ObservableTest, AssignmentDuringANotificationNotifiesTheNewObserversFromTheNextOneOn) {
    NamedObserver d("d", log);
    NamedObserver e("e", log);
    Subject source;
    source.AddObserver(&d);
    source.AddObserver(&e);
    a.onUpdate = [&] {
        subject.MakeFirstObserver(&c);
        subject = source;
    };
    EXPECT_EQ(Notified(), (Log{"a"}));
    EXPECT_EQ(Notified(), (Log{"d", "e"}));
}

TEST_F(ObservableTest, ACopyOfAnObserverObservesNothing) {
    {
        NamedObserver copy = a;
        EXPECT_EQ(subject.GetObserverCount(), 3U);
        EXPECT_FALSE(subject.DeleteObserver(&copy));
    }
    EXPECT_EQ(Notified(), (Log{"a", "b", "c"}));
}

TEST_F(ObservableTest, AnObserverThatIsAssignedToKeepsItsSubjects) {
    CodeObserver target;
    CodeObserver source;
    Subject other;
    other.AddObserver(&target);
    target = source;
    other.Notify();
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
