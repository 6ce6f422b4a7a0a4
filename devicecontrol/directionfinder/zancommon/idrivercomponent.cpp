#include "zancommon/idrivercomponent.h"

namespace KvZANCommon {

IDriverComponent::~IDriverComponent() = default;

} // namespace KvZANCommon
