#include "tolmappstartup/idllinstance.h"

extern "C" Q_DECL_EXPORT quint32 ZanComponentInterfaceVersion() {
    return IDllInstance::INTERFACE_VERSION;
}
extern "C" Q_DECL_EXPORT IDllInstance* ZanCreateComponent() {
    return nullptr;
}
