#pragma once

#include "tolmappstartup/idllinstance.h"

/// The interface of a component that counts its instances.
class Q_DECL_EXPORT CountingComponent : public IDllInstance {
public:
    [[nodiscard]] virtual int GetCount() const = 0;
};
