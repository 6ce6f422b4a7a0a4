#pragma once

#include "kwbase/changecode.h"
#include "zanplatform_export.h"

#include <QSet>

#include <cstddef>
#include <memory>
#include <vector>

class Observable;

namespace ZANPlatform {
template <class T>
class ObservablePtr;
} // namespace ZANPlatform

/// Receives the changes of the subjects that it has been added to.
///
/// An observer that is destroyed detaches itself from all its subjects; a subject that is destroyed forgets
/// its observers. Neither side is left with a dangling pointer, and neither owns the other. A copy of an
/// observer observes nothing.
class ZANPLATFORM_EXPORT IObserver {
public:
    IObserver() = default;
    IObserver(const IObserver&) {}
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is taken over
    IObserver& operator=(const IObserver&) { return *this; }
    virtual ~IObserver();

    /// Called on the thread that made the change. It may add or remove any observer (itself included), change
    /// the subject again, remove the subject from the tree, and delete this observer.
    virtual void Update(Observable* subject, TChangeCode code) = 0;

private:
    friend class Observable;
    friend class ObserverPtr;

    QSet<Observable*> m_subjects;
    std::shared_ptr<const void> m_life; // created when the first ObserverPtr needs it
};

/// A pointer to an observer that becomes null when the observer is destroyed, even when another observer is
/// created at the same address. Does not own. For code that keeps an originator after the call that passed
/// it. Belongs to the thread of the observer.
class ZANPLATFORM_EXPORT ObserverPtr {
public:
    ObserverPtr() = default;
    // NOLINTNEXTLINE(google-explicit-constructor): converts from a plain pointer
    ObserverPtr(IObserver* observer);

    /// Null for a pointer to nothing, and once the observer is gone.
    [[nodiscard]] IObserver* get() const { return m_life.expired() ? nullptr : m_pObserver; }

private:
    IObserver* m_pObserver = nullptr;
    std::weak_ptr<const void> m_life;
};

/// Keeps an ordered list of observers and notifies them of changes.
///
/// Observers are notified in the order in which they were added. One that is added during a notification is
/// not called in it; one that is removed during a notification is no longer called. All operations belong to
/// one thread, the application's main thread.
class ZANPLATFORM_EXPORT Observable {
public:
    Observable() = default;
    /// A copy is observed by the observers of its source. An assignment replaces the observers by those of
    /// the source. Nobody is notified.
    Observable(const Observable& other);
    Observable& operator=(const Observable& other);
    virtual ~Observable();

    /// Appends an observer. False for null and for an observer that is already in the list.
    bool AddObserver(IObserver* observer);
    /// False for null and when the observer does not observe this subject.
    bool DeleteObserver(IObserver* observer);
    void DeleteObservers();
    /// Makes an observer of this subject the first to be notified, from the next notification on (those in
    /// progress end first). False for null and when it does not observe this subject.
    bool MakeFirstObserver(IObserver* observer);
    [[nodiscard]] std::size_t GetObserverCount() const;

protected:
    /// Calls `Update` of every observer but the originator (null: of every observer). An observer may destroy
    /// this object during the call: do not use the object afterwards.
    void NotifyObservers(TChangeCode code, IObserver* originator = nullptr);

private:
    friend class IObserver;
    template <class T>
    friend class ZANPlatform::ObservablePtr;

    struct Pass;
    void NotifyAll(TChangeCode code, IObserver* originator);
    ZANPLATFORM_NO_EXPORT void EndPass(const Pass& pass);
    ZANPLATFORM_NO_EXPORT void Forget(IObserver* observer);
    ZANPLATFORM_NO_EXPORT void MoveToFront(IObserver* observer);
    [[nodiscard]] std::shared_ptr<Observable*> Self() const;

    std::vector<IObserver*> m_observers; // null where one was removed during a notification
    Pass* m_pPass = nullptr;             // the innermost notification in progress
    mutable std::shared_ptr<Observable*> m_pSelf;
};

inline void Observable::NotifyObservers(TChangeCode code, IObserver* originator) {
    if (!m_observers.empty()) {
        NotifyAll(code, originator);
    }
}

namespace ZANPlatform {

/// A pointer to an observable object that becomes null when the object is destroyed.
///
/// Does not own. For code that keeps a pointer to a tree value without observing it. Belongs to the thread of
/// the object.
template <class T>
class ObservablePtr {
public:
    ObservablePtr() = default;
    // NOLINTNEXTLINE(google-explicit-constructor): converts from a plain pointer
    ObservablePtr(T* object)
        : m_pObject(object)
        , m_pSelf(object ? static_cast<const Observable*>(object)->Self() : nullptr) {}

    /// Null for a pointer to nothing, and once the object is gone. Do not dereference a null pointer.
    [[nodiscard]] T* get() const { return m_pSelf && *m_pSelf ? m_pObject : nullptr; }
    T* operator->() const { return get(); }
    T& operator*() const { return *get(); }
    explicit operator bool() const { return get() != nullptr; }

private:
    T* m_pObject = nullptr;
    std::shared_ptr<Observable*> m_pSelf;
};

} // namespace ZANPlatform
