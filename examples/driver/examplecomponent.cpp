// The component of the driver: what a station loads.

#include "exampledriver.h"

#include <zancommon/drivercomponent.h>

ZAN_DEFINE_DRIVER(ExampleDriver)
