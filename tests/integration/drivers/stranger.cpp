#include "tolmappstartup/idllinstance.h"

namespace {

/// A component that is no driver.
class Stranger final : public IDllInstance {};

} // namespace

ZAN_DEFINE_COMPONENT(Stranger)
