#pragma once

/// \file

#include "valueframework/itreeitem.h"

#include <QString>

#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

/// What a value holds.
enum class ValueType : int { Bool, Int, Double, String, TimeStamp, Selection, Bearing, List };

/// Whether the content of a value is a measurement or setting that can be relied on.
enum class TValueState : int {
    Valid = 0,       ///< the content holds
    NotMeasured = 1, ///< nothing has been measured; the content is old or a default
};

class ValueTransaction;

/// The common base of all values of the tree.
///
/// Every setter takes the observer that caused the change as its last argument (null: nobody); the originator
/// is not notified of its own change. Setting the content that the value has already notifies nobody (but see
/// `ValueBearing`, where each bearing counts as a change). Unless a code is given, observers are notified
/// with `TChangeCode::Changed`; they may destroy the value meanwhile. Everything belongs to the application's
/// main thread.
class ZANPLATFORM_EXPORT ValueBase : public ITreeItem {
public:
    ValueBase();
    ~ValueBase() override;
    ValueBase& operator=(const ValueBase&) = delete;

    /// Gives the value its name; in the tree, also its new path. False, with the name as it was, when the new
    /// one is empty, holds a slash, or is taken, and when the value is being removed.
    bool SetName(const QString& name, IObserver* originator = nullptr);

    [[nodiscard]] TValueState GetState() const { return m_state; }
    void SetState(TValueState state, IObserver* originator = nullptr);

    [[nodiscard]] virtual ValueType GetType() const = 0;
    [[nodiscard]] QString GetTypeName() const override;
    /// The content as text, in a form that `SetStringValue` reads.
    [[nodiscard]] virtual QString GetStringValue() const = 0;
    /// Sets the content from text. False, with the value unchanged, when the text is not a content of the
    /// type, or one that the value does not accept (a number outside its range).
    virtual bool SetStringValue(const QString& text, IObserver* originator = nullptr) = 0;
    /// Takes over content and state of a value of the same type, but not its name and range; observers are
    /// notified once. False, with nothing changed, when the type is another one or the content is not
    /// accepted.
    virtual bool Assign(const ValueBase& other) = 0;
    /// Whether the other value has the same type and content. False for null.
    [[nodiscard]] virtual bool Compare(const ValueBase* other) const = 0;
    /// A copy with the same name, content, state and limits, outside the tree and without observers.
    [[nodiscard]] virtual std::unique_ptr<ValueBase> Clone() const = 0;

    /// Begins a group of changes: observers are not notified before the matching `EndTransaction`. Groups
    /// nest; the outermost end notifies, with its own code. The argument has no effect.
    void StartTransaction(IObserver* originator = nullptr);
    /// Ends a group and notifies the observers once, with this code, whether or not something was changed.
    /// False when no group is open.
    bool EndTransaction(TChangeCode code, IObserver* originator = nullptr);
    [[nodiscard]] bool IsTransactionActive() const { return m_transactions > 0; }
    /// Begins a group that ends when the returned object is destroyed. The observers are then notified once
    /// per code, in this order; without codes not at all.
    [[nodiscard]] ValueTransaction CreateTransaction(std::initializer_list<TChangeCode> codes,
                                                     IObserver* originator = nullptr);
    /// Notifies the observers of a change that was made without a setter. Inside a transaction they are
    /// notified at its end.
    void HasChanged(TChangeCode code, IObserver* originator = nullptr);

    /// Delivers changes at most once in this many milliseconds, through the event loop; 0 (the default): at
    /// once. What is waiting when it becomes 0 is delivered at once. Changes of one code are delivered as
    /// one; when they have several originators, these are notified, too.
    void SetUpdateTimerTime(unsigned milliseconds);
    /// Replaces the delivery time (milliseconds) by a shorter or longer one until `KillOverrideTimer` is
    /// called; of several the shortest one counts. Returns its identifier, from 1 on.
    int OverrideTimer(unsigned milliseconds);
    /// An identifier that is not in force has no effect.
    void KillOverrideTimer(int identifier);

    /// The item that is notified (`OnItemDeleted`) when the tree destroys this value; null for none. Not
    /// owned; an item that is destroyed is forgotten.
    void SetDeleteObserver(ITreeItem* item);
    [[nodiscard]] ITreeItem* GetDeleteObserver() const;
    /// For an observer that was notified with `TChangeCode::GoingAway`: 1 when the value is being removed,
    /// else 0. The argument has no effect.
    [[nodiscard]] int QueryRemoval(IObserver* observer) const;

    /// The content as one command line of a recording: time (milliseconds since a moment that the caller has
    /// chosen), path and text with tabs between them, path and text escaped as by `AppendEscaped`.
    [[nodiscard]] QString GetCommandStringForRecording(unsigned timeMs) const;
    /// The same for another process, with a sequence number in place of the time.
    [[nodiscard]] QString GetCommandStringForTransmission(unsigned sequence) const;
    /// Carries out a command line of either kind, whatever its time. False, with the value unchanged, when it
    /// is malformed, names another path, or has a text that the value does not accept.
    bool SetCommandString(const QString& command, IObserver* originator = nullptr);

protected:
    ValueBase(const ValueBase& other);

    /// Takes over a state without notifying anybody. Returns whether it was another one.
    bool TakeState(const ValueBase& other) { return std::exchange(m_state, other.m_state) != other.m_state; }
    /// Notifies the observers that the content has changed; an observer may destroy this value meanwhile.
    void Changed(IObserver* originator) {
        if (m_transactions == 0) {
            if (!m_pTiming) {
                NotifyObservers(TChangeCode::Changed, originator);
            } else {
                Deliver(TChangeCode::Changed, originator);
            }
        }
    }

private:
    friend class ValueTransaction;

    struct Timing;
    void AnnounceRemoval() override;
    ZANPLATFORM_NO_EXPORT void EndTransaction(const std::vector<TChangeCode>& codes,
                                              const ObserverPtr& originator);
    void Deliver(TChangeCode code, IObserver* originator);
    ZANPLATFORM_NO_EXPORT void DeliverWaiting();
    ZANPLATFORM_NO_EXPORT void Schedule();
    ZANPLATFORM_NO_EXPORT Timing& GetTiming();

    TValueState m_state = TValueState::Valid;
    int m_transactions = 0;
    std::unique_ptr<Timing> m_pTiming; // null while changes are delivered at once
    ZANPlatform::ObservablePtr<ITreeItem> m_pDeleteObserver;
};

/// A group of changes of one value; the observers are notified when it is destroyed. It may outlive the value
/// and the originator. An object that was moved from ends nothing.
class ZANPLATFORM_EXPORT ValueTransaction {
public:
    ValueTransaction(ValueBase& value, std::initializer_list<TChangeCode> codes,
                     IObserver* originator = nullptr);
    ValueTransaction(ValueTransaction&& other) noexcept;
    ValueTransaction(const ValueTransaction&) = delete;
    ValueTransaction& operator=(const ValueTransaction&) = delete;
    ValueTransaction& operator=(ValueTransaction&&) = delete;
    ~ValueTransaction();

private:
    ZANPlatform::ObservablePtr<ValueBase> m_pValue;
    std::vector<TChangeCode> m_codes;
    ObserverPtr m_pOriginator;
};
