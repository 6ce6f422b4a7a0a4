#pragma once

#include "kwbase/observable.h"
#include "valueframework/valuebase.h"

#include <optional>

namespace ZANServer {

/// Puts a measurement into its value. Without one, or when the value does not take it (a number outside its
/// range), the value goes back to 0 and says that it holds none: what was measured before must not pass as
/// current.
template <class T, class V>
void Publish(V& value, const std::optional<T>& measurement, IObserver* originator = nullptr) {
    const bool isMeasured = measurement && value.SetValue(*measurement, originator);
    if (!isMeasured) {
        value.SetValue(T{}, originator);
    }
    value.SetState(isMeasured ? TValueState::Valid : TValueState::NotMeasured, originator);
}

} // namespace ZANServer
