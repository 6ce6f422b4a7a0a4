#include "tolmappstartup/idllinstance.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace {

std::atomic<int> rounds = 0;

struct Worker {
    Worker() {
        std::thread([] {
            for (;;) {
                ++rounds;
                std::this_thread::sleep_for(std::chrono::milliseconds(1)); // it shall not take a processor
            }
        }).detach();
    }
};

const Worker worker;

} // namespace

/// How often the thread has gone round.
extern "C" Q_DECL_EXPORT int GetRounds() {
    return rounds;
}
extern "C" Q_DECL_EXPORT quint32 ZanComponentInterfaceVersion() {
    return IDllInstance::INTERFACE_VERSION;
}
extern "C" Q_DECL_EXPORT IDllInstance* ZanCreateComponent() {
    return nullptr;
}
