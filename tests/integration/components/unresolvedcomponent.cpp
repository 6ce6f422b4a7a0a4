#include "tolmappstartup/idllinstance.h"

IDllInstance* FunctionThatIsNowhere();

extern "C" Q_DECL_EXPORT quint32 ZanComponentInterfaceVersion() {
    return IDllInstance::INTERFACE_VERSION;
}
extern "C" Q_DECL_EXPORT IDllInstance* ZanCreateComponent() {
    return FunctionThatIsNowhere();
}
