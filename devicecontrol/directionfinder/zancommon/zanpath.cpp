#include "zancommon/zanpath.h"

#include "valueframework/valuedescriptor.h"

namespace ZANPath {

QString Server(const ValueDescriptor& descriptor) {
    return SERVER.toString() + descriptor.PathName();
}

QString Server(QStringView name) {
    return SERVER_CHILD.toString() + name.toString();
}

QString Device(const ValueDescriptor& descriptor) {
    return DEVICE_NODE.toString() + descriptor.PathName();
}

QString Control(QStringView name) {
    return CONTROL.toString() + name.toString();
}

} // namespace ZANPath
