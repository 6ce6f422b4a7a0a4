#include "tolmappstartup/idllinstance.h"

#include <cstdlib>

extern "C" Q_DECL_EXPORT quint32 ZanComponentInterfaceVersion() {
    std::exit(0); // NOLINT(concurrency-mt-unsafe)
}
extern "C" Q_DECL_EXPORT IDllInstance* ZanCreateComponent() {
    return nullptr;
}
