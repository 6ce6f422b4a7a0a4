#pragma once

#include "valueframework/valuebase.h"

#include <QString>

#include <utility>
#include <vector>

/// One item of a selection: a name for people, a number that goes with it (such as a bandwidth in Hz), and
/// the key that programs use.
class SelectionItem {
public:
    SelectionItem(QString name, double value, long key)
        : m_name(std::move(name))
        , m_value(value)
        , m_key(key) {}

    [[nodiscard]] const QString& GetName() const { return m_name; }
    [[nodiscard]] double GetValue() const { return m_value; }
    [[nodiscard]] long GetKey() const { return m_key; }

    bool operator==(const SelectionItem&) const = default;

private:
    QString m_name;
    double m_value;
    long m_key;
};

class ValueSelection;

/// Describes one item of a selection in a static table, as `SelectionItem` does.
struct ZANPLATFORM_EXPORT SelItemDesc {
    SelItemDesc(QString itemName, double itemValue, long itemKey)
        : name(std::move(itemName))
        , value(itemValue)
        , key(itemKey) {}

    /// Appends copies of `count` items to a selection; its observers are notified once. Null arguments, and a
    /// count below 1, add nothing.
    static void AddItems(const SelItemDesc* items, int count, ValueSelection* target);

    QString name;
    double value;
    long key;
};

/// A value that holds one of a list of named items. While it has items, one of them is current: the first one
/// that was added, until another one is chosen.
class ZANPLATFORM_EXPORT ValueSelection final : public ValueBase {
public:
    ValueSelection() = default;

    /// Appends an item, which is always a change. Several items may have the same name or key.
    void AddItem(SelectionItem item, IObserver* originator = nullptr);
    /// Removes all items. Nobody is notified when there are none.
    void Clear(IObserver* originator = nullptr);
    /// The items in their order; valid until the selection is changed.
    [[nodiscard]] const std::vector<SelectionItem>& GetItems() const { return m_items; }

    /// The key of the current item; 0 without items.
    [[nodiscard]] long GetCurrentKey() const;
    /// The position of the current item, from 0; -1 without items.
    [[nodiscard]] long GetCurrentIndex() const { return m_current; }
    /// Makes the first item with this key the current one. False when no item has it.
    bool SetCurrentKey(long key, IObserver* originator = nullptr);
    /// Makes the item at a position, counted from 0, the current one. False when there is no such position.
    bool SetCurrentIndex(long index, IObserver* originator = nullptr);

    [[nodiscard]] ValueType GetType() const override { return ValueType::Selection; }
    /// The name of the current item; empty without items.
    [[nodiscard]] QString GetStringValue() const override;
    /// Makes the first item with this name the current one. False when no item has it.
    bool SetStringValue(const QString& name, IObserver* originator = nullptr) override;
    /// Takes over items, current item and state.
    bool Assign(const ValueBase& other) override;
    /// Whether the items and the current item are the same.
    [[nodiscard]] bool Compare(const ValueBase* other) const override;
    [[nodiscard]] std::unique_ptr<ValueBase> Clone() const override;

private:
    ValueSelection(const ValueSelection&) = default;

    std::vector<SelectionItem> m_items;
    long m_current = -1;
};
