#pragma once

#include "valueframework/valuebase.h"

#include <memory>

/// Creates values of the type of a given value.
class ZANPLATFORM_EXPORT ValueFactory {
public:
    /// The one factory of the process; never null, never destroyed before the end of the program.
    static ValueFactory& Instance();

    /// A copy of a value of any type: same name, content, state and limits, outside the tree, not observed.
    [[nodiscard]] std::unique_ptr<ValueBase> CloneValue(const ValueBase& value) const {
        return value.Clone();
    }

private:
    ValueFactory() = default;
};
