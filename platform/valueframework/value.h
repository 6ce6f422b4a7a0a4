#pragma once

#include "valueframework/streamformat.h"
#include "valueframework/valuebase.h"

#include <limits>
#include <utility>

/// A value with a content of type T. `Format` defines how the content is written as text and when it has
/// changed.
template <class T, class Format, class Stream = StreamFormat<T, Format>>
class Value : public ValueBase {
public:
    Value() = default;
    explicit Value(T content)
        : m_content(std::move(content)) {}

    /// Valid until the content is set again or the value is gone.
    [[nodiscard]] const T& GetValue() const { return m_content; }
    /// Sets the content and notifies the observers when it has changed. False, with nothing changed, when the
    /// value does not accept the content (see `ValueNumeric`).
    bool SetValue(const T& content, IObserver* originator = nullptr) {
        if (!Accepts(content)) {
            return false;
        }
        if (Format::IsChange(m_content, content)) {
            m_content = content;
            Changed(originator);
        }
        return true;
    }

    [[nodiscard]] ValueType GetType() const override { return Format::TYPE; }
    [[nodiscard]] QString GetStringValue() const override { return Format::ToString(m_content); }
    bool SetStringValue(const QString& text, IObserver* originator = nullptr) override {
        T content{};
        return Format::FromString(text, content) && SetValue(content, originator);
    }
    bool Assign(const ValueBase& other) override {
        const auto* source = dynamic_cast<const Value*>(&other);
        if (!source || !Accepts(source->m_content)) {
            return false;
        }
        const bool isChange = Format::IsChange(m_content, source->m_content);
        m_content = source->m_content;
        if (TakeState(other) || isChange) {
            Changed(nullptr);
        }
        return true;
    }
    [[nodiscard]] bool Compare(const ValueBase* other) const override {
        const auto* value = dynamic_cast<const Value*>(other);
        return value && value->m_content == m_content;
    }
    [[nodiscard]] std::unique_ptr<ValueBase> Clone() const override {
        return std::unique_ptr<ValueBase>(new Value(*this));
    }

protected:
    Value(const Value&) = default;
    /// Whether a content may be set.
    [[nodiscard]] virtual bool Accepts(const T& /*content*/) const { return true; }

private:
    T m_content{};
};

/// A number with a range, bounds included, and a step for displays in which it is changed by hand. Without
/// `SetMinMax` the range is that of the type.
///
/// A content outside the range is refused, never clipped: the value stays as it was and the setter returns
/// false. NaN is outside every range. Only `SetMinMax` moves the content.
template <class T, class Format, class Stream = StreamFormat<T, Format>>
class ValueNumeric final : public Value<T, Format, Stream> {
public:
    using Base = Value<T, Format, Stream>;

    ValueNumeric() = default;
    /// Nothing is checked: the caller sees to it that the content is from `min` to `max` and the step is not
    /// negative.
    ValueNumeric(T content, T min, T max, T step)
        : Base(content)
        , m_min(min)
        , m_max(max)
        , m_step(step) {}

    [[nodiscard]] T GetMin() const { return m_min; }
    [[nodiscard]] T GetMax() const { return m_max; }
    [[nodiscard]] T GetStep() const { return m_step; }
    /// These three call `SetMinMax` and leave the other two as they are.
    bool SetMin(T min, IObserver* originator = nullptr) { return SetMinMax(min, m_max, m_step, originator); }
    bool SetMax(T max, IObserver* originator = nullptr) { return SetMinMax(m_min, max, m_step, originator); }
    bool SetStep(T step, IObserver* originator = nullptr) {
        return SetMinMax(m_min, m_max, step, originator);
    }
    /// Sets the range. A content outside it moves to the nearer bound. Observers are notified once. False,
    /// with nothing changed, when the minimum is above the maximum, the step is negative, or one of them is
    /// not a number.
    bool SetMinMax(T min, T max, T step, IObserver* originator = nullptr) {
        if (!(min <= max) || !(step >= T{})) {
            return false;
        }
        if (min != m_min || max != m_max || step != m_step) {
            m_min = min;
            m_max = max;
            m_step = step;
            const T content = this->GetValue();
            const T nearest = content < min ? min : (content > max ? max : content);
            if (nearest != content) {
                this->SetValue(nearest, originator);
            } else {
                this->Changed(originator);
            }
        }
        return true;
    }

    [[nodiscard]] std::unique_ptr<ValueBase> Clone() const override {
        return std::unique_ptr<ValueBase>(new ValueNumeric(*this));
    }

private:
    ValueNumeric(const ValueNumeric&) = default;
    [[nodiscard]] bool Accepts(const T& content) const override {
        return content >= m_min && content <= m_max;
    }

    T m_min = std::numeric_limits<T>::lowest();
    T m_max = std::numeric_limits<T>::max();
    T m_step = T{1};
};
