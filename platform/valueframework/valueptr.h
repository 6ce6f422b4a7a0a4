#pragma once

#include "kwbase/observable.h"
#include "valueframework/tree.h"

#include <QString>

#include <type_traits>
#include <utility>

namespace ZANPlatform {

/// A pointer to a value (or node) of the tree: it is found by its path, observed if an observer is given, and
/// let go when it goes away. Null before and afterwards, also when the value was destroyed without a notice.
///
/// An observer holds one for each value that drives it, and begins its `Update` with `LetGoIfGoing`:
///
///     m_heading.Find(path, this);
///     // ...
///     void Update(Observable* subject, TChangeCode code) override {
///         if (m_heading.LetGoIfGoing(subject, code)) {
///             return;
///         }
///
/// The observation ends with the `ValuePtr` or with the observer, whichever is destroyed first. A copy points
/// to the same value and observes nothing. A pointer that is moved takes the observation along. An observer
/// holds a value in one `ValuePtr` only: the first one that lets go ends the observation. Does not own.
/// Belongs to the thread of the value tree.
template <class T>
class ValuePtr {
public:
    ValuePtr() = default;
    ValuePtr(const ValuePtr& other)
        : m_value(other.m_value) {}
    ValuePtr& operator=(const ValuePtr& other) {
        if (this != &other) {
            Hold(other.get());
        }
        return *this;
    }
    ValuePtr(ValuePtr&& other) noexcept
        : m_value(std::exchange(other.m_value, {}))
        , m_observer(std::exchange(other.m_observer, {})) {}
    ValuePtr& operator=(ValuePtr&& other) noexcept {
        if (this != &other) {
            LetGo();
            m_value = std::exchange(other.m_value, {});
            m_observer = std::exchange(other.m_observer, {});
        }
        return *this;
    }
    ~ValuePtr() { LetGo(); }

    /// Looks for the value at a path. A value that is held already stays, and its observation does not
    /// change.
    /// \param observer is notified of changes from now on; null: the value is not observed
    /// \return whether a value is held now
    bool Find(const QString& path, IObserver* observer = nullptr) {
        if (!m_value) {
            if constexpr (IS_NODE) {
                Hold(Tree::Instance()->GetNode(path), observer);
            } else {
                Hold(Tree::Instance()->Find<T>(path), observer);
            }
        }
        return bool(m_value);
    }
    /// Lets go of what is held and takes a value that the caller has found or created; null for none.
    void Hold(T* value, IObserver* observer = nullptr) {
        LetGo();
        m_value = value;
        // An observer that was added elsewhere is not removed by this pointer.
        if (value && value->AddObserver(observer)) {
            m_observer = observer;
        }
    }
    /// Ends the observation and becomes null.
    void LetGo() {
        if (m_value) {
            m_value->DeleteObserver(m_observer.get());
        }
        m_value = {};
        m_observer = {};
    }
    /// Lets go when a notice announces that what is held is going away (code 2 for a value, 18 for a node).
    /// \return whether it did
    bool LetGoIfGoing(const Observable* subject, TChangeCode code) {
        const bool isGoing = Is(subject) && code == GOING_AWAY;
        if (isGoing) {
            LetGo();
        }
        return isGoing;
    }

    /// Whether a notice is from what is held.
    [[nodiscard]] bool Is(const Observable* subject) const { return subject && subject == get(); }

    /// Null when none is held. Do not dereference a null pointer.
    [[nodiscard]] T* get() const { return m_value.get(); }
    T* operator->() const { return get(); }
    T& operator*() const { return *get(); }
    explicit operator bool() const { return get() != nullptr; }

private:
    static constexpr bool IS_NODE = std::is_base_of_v<Node, T>;
    static constexpr TChangeCode GOING_AWAY = IS_NODE ? TChangeCode::NodeGoingAway : TChangeCode::GoingAway;

    ObservablePtr<T> m_value;
    ObserverPtr m_observer;
};

} // namespace ZANPlatform
