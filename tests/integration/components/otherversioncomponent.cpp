#include "tolmappstartup/idllinstance.h"

#include <cstdlib>

extern "C" Q_DECL_EXPORT quint32 ZanComponentInterfaceVersion() {
    return IDllInstance::INTERFACE_VERSION + 1;
}
extern "C" Q_DECL_EXPORT IDllInstance* ZanCreateComponent() {
    std::abort();
}
