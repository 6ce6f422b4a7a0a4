#include "zancommon/antennadata.h"

AntennaData::~AntennaData() = default;
