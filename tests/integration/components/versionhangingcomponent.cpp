#include "tolmappstartup/idllinstance.h"

#include <unistd.h>

extern "C" Q_DECL_EXPORT quint32 ZanComponentInterfaceVersion() {
    for (;;) {
        pause();
    }
}
extern "C" Q_DECL_EXPORT IDllInstance* ZanCreateComponent() {
    return nullptr;
}
