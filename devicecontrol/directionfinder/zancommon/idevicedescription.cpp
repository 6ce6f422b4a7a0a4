#include "zancommon/idevicedescription.h"

namespace KvZANCommon {

IDeviceDescription::~IDeviceDescription() = default;

} // namespace KvZANCommon
