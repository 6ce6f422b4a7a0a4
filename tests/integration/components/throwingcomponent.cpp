#include "tolmappstartup/idllinstance.h"

#include <stdexcept>

namespace {

class ThrowingComponent : public IDllInstance {
public:
    ThrowingComponent() { throw std::runtime_error("no receiver"); }
};

} // namespace

ZAN_DEFINE_COMPONENT(ThrowingComponent)
