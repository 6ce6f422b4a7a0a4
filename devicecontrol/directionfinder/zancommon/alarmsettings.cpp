#include "zancommon/alarmsettings.h"

AlarmSettings::~AlarmSettings() = default;
