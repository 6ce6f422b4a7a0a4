#include "tolmappstartup/idllinstance.h"

#include <stdexcept>

extern "C" Q_DECL_EXPORT quint32 ZanComponentInterfaceVersion() {
    throw std::runtime_error("which version");
}
extern "C" Q_DECL_EXPORT IDllInstance* ZanCreateComponent() {
    return nullptr;
}
