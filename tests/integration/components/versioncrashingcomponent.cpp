#include "tolmappstartup/idllinstance.h"

#include <csignal>

extern "C" Q_DECL_EXPORT quint32 ZanComponentInterfaceVersion() {
    std::raise(SIGSEGV);
    return IDllInstance::INTERFACE_VERSION;
}
extern "C" Q_DECL_EXPORT IDllInstance* ZanCreateComponent() {
    return nullptr;
}
