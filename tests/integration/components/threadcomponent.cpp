#include "tolmappstartup/idllinstance.h"

#include <chrono>
#include <thread>

namespace {

struct Worker {
    Worker() {
        std::thread([] {
            for (;;) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }).detach();
    }
};

const Worker worker;

} // namespace

extern "C" Q_DECL_EXPORT quint32 ZanComponentInterfaceVersion() {
    return IDllInstance::INTERFACE_VERSION;
}
extern "C" Q_DECL_EXPORT IDllInstance* ZanCreateComponent() {
    return nullptr;
}
