#include "tolmappstartup/idllinstance.h"

#include <stdexcept>

namespace {

struct Settings {
    Settings() { throw std::runtime_error("no licence"); }
};

const Settings settings;

class StaticThrowingComponent : public IDllInstance {};

} // namespace

ZAN_DEFINE_COMPONENT(StaticThrowingComponent)
