#include "stream/streamdriver.h"
#include "zancommon/drivercomponent.h"

ZAN_DEFINE_DRIVER(Stream::StreamDriver)
