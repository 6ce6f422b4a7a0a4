#include "tolmappstartup/idllinstance.h"

#include <unistd.h>

namespace {

struct Copy {
    Copy() { fork(); }
};

const Copy copy;

class ForkingComponent : public IDllInstance {};

} // namespace

ZAN_DEFINE_COMPONENT(ForkingComponent)
