#include "krakensdr/krakensdrdriver.h"
#include "zancommon/drivercomponent.h"

ZAN_DEFINE_DRIVER(KrakenSdr::KrakenSdrDriver)
