#include "tolmappstartup/idllinstance.h"

#include <unistd.h>

namespace {

struct Settings {
    Settings() {
        for (;;) {
            pause();
        }
    }
};

const Settings settings;

class HangingComponent : public IDllInstance {};

} // namespace

ZAN_DEFINE_COMPONENT(HangingComponent)
