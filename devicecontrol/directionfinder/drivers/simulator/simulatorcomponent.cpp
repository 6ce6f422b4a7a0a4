#include "simulator/simulatordriver.h"
#include "zancommon/drivercomponent.h"

ZAN_DEFINE_DRIVER(Simulator::SimulatorDriver)
