#include "replay/replaydriver.h"
#include "zancommon/drivercomponent.h"

ZAN_DEFINE_DRIVER(Replay::ReplayDriver)
