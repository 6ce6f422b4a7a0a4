#include "valueframework/valueselection.h"

#include <algorithm>

void SelItemDesc::AddItems(const SelItemDesc* items, int count, ValueSelection* target) {
    if (!items || !target || count <= 0) {
        return;
    }
    const ValueTransaction transaction = target->CreateTransaction({TChangeCode::Changed}, nullptr);
    for (int i = 0; i < count; ++i) {
        target->AddItem({items[i].name, items[i].value, items[i].key}, nullptr);
    }
}

void ValueSelection::AddItem(SelectionItem item, IObserver* originator) {
    m_items.push_back(std::move(item));
    m_current = std::max(m_current, 0L);
    Changed(originator);
}

void ValueSelection::Clear(IObserver* originator) {
    m_current = -1;
    if (!m_items.empty()) {
        m_items.clear();
        Changed(originator);
    }
}

long ValueSelection::GetCurrentKey() const {
    return m_items.empty() ? 0 : m_items[static_cast<std::size_t>(m_current)].GetKey();
}

bool ValueSelection::SetCurrentKey(long key, IObserver* originator) {
    const auto item = std::find_if(m_items.begin(), m_items.end(),
                                   [key](const SelectionItem& each) { return each.GetKey() == key; });
    return item != m_items.end() && SetCurrentIndex(item - m_items.begin(), originator);
}

bool ValueSelection::SetCurrentIndex(long index, IObserver* originator) {
    if (index < 0 || index >= static_cast<long>(m_items.size())) {
        return false;
    }
    if (index != m_current) {
        m_current = index;
        Changed(originator);
    }
    return true;
}

QString ValueSelection::GetStringValue() const {
    return m_items.empty() ? QString() : m_items[static_cast<std::size_t>(m_current)].GetName();
}

bool ValueSelection::SetStringValue(const QString& name, IObserver* originator) {
    const auto item = std::find_if(m_items.begin(), m_items.end(),
                                   [&name](const SelectionItem& each) { return each.GetName() == name; });
    return item != m_items.end() && SetCurrentIndex(item - m_items.begin(), originator);
}

bool ValueSelection::Assign(const ValueBase& other) {
    const auto* source = dynamic_cast<const ValueSelection*>(&other);
    if (!source) {
        return false;
    }
    const bool isChange = !Compare(source);
    m_items = source->m_items;
    m_current = source->m_current;
    if (TakeState(other) || isChange) {
        Changed(nullptr);
    }
    return true;
}

bool ValueSelection::Compare(const ValueBase* other) const {
    const auto* selection = dynamic_cast<const ValueSelection*>(other);
    return selection && selection->m_current == m_current && selection->m_items == m_items;
}

std::unique_ptr<ValueBase> ValueSelection::Clone() const {
    return std::unique_ptr<ValueBase>(new ValueSelection(*this));
}
