#pragma once

#include "kwbase/observable.h"
#include "valueframework/valuebase.h"

#include <optional>

namespace ZANServer {

/// Puts a measurement into its value. Without a measurement, or when the value does not accept it (a number
/// outside its range), the value is set to 0 and marked as not measured, so that an earlier measurement does
/// not pass as current.
template <class T, class V>
void Publish(V& value, const std::optional<T>& measurement, IObserver* originator = nullptr) {
    const bool isMeasured = measurement && value.SetValue(*measurement, originator);
    if (!isMeasured) {
        value.SetValue(T{}, originator);
    }
    value.SetState(isMeasured ? TValueState::Valid : TValueState::NotMeasured, originator);
}

} // namespace ZANServer
