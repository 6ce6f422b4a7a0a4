#pragma once

#include "valueframework/streamformat.h"
#include "valueframework/valuebase.h"

#include <QtGlobal>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

/// An ordered list of elements as one value. As text, the elements follow one another in the form of
/// `StreamFormat`.
template <class T, class Format, class Stream = StreamFormat<T, Format>>
class ValueList final : public ValueBase {
public:
    ValueList() = default;

    /// Appends a copy, which is always a change.
    void PushBack(const T& element, IObserver* originator = nullptr) {
        m_elements.push_back(element);
        Changed(originator);
    }
    /// Removes elements from the front, all of them when there are fewer. Nobody is notified when none is
    /// removed. An iteration begins again.
    void RemoveFirst(std::size_t count, IObserver* originator = nullptr) {
        m_cursor = 0;
        if (const std::size_t removed = std::min(count, m_elements.size()); removed > 0) {
            m_elements.erase(m_elements.begin(),
                             std::next(m_elements.begin(), static_cast<std::ptrdiff_t>(removed)));
            Changed(originator);
        }
    }
    /// Removes all elements. Nobody is notified when there are none.
    void Clear(IObserver* originator = nullptr) {
        m_cursor = 0;
        if (!m_elements.empty()) {
            m_elements.clear();
            Changed(originator);
        }
    }
    [[nodiscard]] bool Empty() const { return m_elements.empty(); }
    [[nodiscard]] std::size_t GetCount() const { return m_elements.size(); }
    /// The elements in their order; valid until the list is changed.
    [[nodiscard]] const std::vector<T>& GetElements() const { return m_elements; }

    /// Begins an iteration: the next call of `Next` returns the first element. There is only one iteration at
    /// a time.
    void ToBegin() { m_cursor = 0; }
    /// The next element of the iteration, valid until the list is changed. A caller that changes the element
    /// calls `HasChanged`. Call it only while `IsLast` is false; a debug build stops otherwise.
    T& Next() {
        Q_ASSERT_X(m_cursor < m_elements.size(), "ValueList::Next", "the walk has passed the last element");
        return m_elements[m_cursor++];
    }
    /// Whether the iteration has passed the last element.
    [[nodiscard]] bool IsLast() const { return m_cursor >= m_elements.size(); }

    [[nodiscard]] ValueType GetType() const override { return ValueType::List; }
    [[nodiscard]] QString GetStringValue() const override {
        QString text;
        for (const T& element : m_elements) {
            Stream::Append(text, element);
        }
        return text;
    }
    bool SetStringValue(const QString& text, IObserver* originator = nullptr) override {
        std::vector<T> elements;
        for (QStringView rest(text); !rest.isEmpty();) {
            if (!Stream::Take(rest, elements.emplace_back())) {
                return false;
            }
        }
        if (Replace(std::move(elements))) {
            Changed(originator);
        }
        return true;
    }
    bool Assign(const ValueBase& other) override {
        const auto* source = dynamic_cast<const ValueList*>(&other);
        if (!source) {
            return false;
        }
        const bool isChange = Replace(source->m_elements);
        if (TakeState(other) || isChange) {
            Changed(nullptr);
        }
        return true;
    }
    [[nodiscard]] bool Compare(const ValueBase* other) const override {
        const auto* list = dynamic_cast<const ValueList*>(other);
        return list && list->m_elements == m_elements;
    }
    [[nodiscard]] std::unique_ptr<ValueBase> Clone() const override {
        return std::unique_ptr<ValueBase>(new ValueList(*this));
    }

private:
    ValueList(const ValueList&) = default;

    /// Replaces the elements without notifying anybody. Returns whether they were different.
    bool Replace(std::vector<T> elements) {
        m_cursor = 0;
        m_elements.swap(elements);
        return elements != m_elements;
    }

    std::vector<T> m_elements;
    std::size_t m_cursor = 0;
};
