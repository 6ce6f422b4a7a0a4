#include "tolmappstartup/idllinstance.h"

#include <cstdlib>

namespace {

struct Settings {
    Settings() { std::abort(); }
};

const Settings settings;

class AbortingComponent : public IDllInstance {};

} // namespace

ZAN_DEFINE_COMPONENT(AbortingComponent)
