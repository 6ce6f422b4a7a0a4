#pragma once

#include "zanserver_export.h"

#include <QString>

#include <chrono>

namespace ZANServer {

/// The kinds of calls to a driver that differ in how long they may take.
enum class DriverCall {
    Create,      ///< the driver's constructor
    Initialize,  ///< opens the device
    SetMode,     ///< begins or ends to measure
    Setting,     ///< every other setting and command
    Query,       ///< everything that is asked
    Reset,       ///< restarts the device
    Calibrate,   ///< one converter
    BuiltInTest, ///< the short or the full one
    Destroy      ///< the driver's destructor
};

/// The time within which a call has to return. A driver that takes longer is given up.
ZANSERVER_EXPORT std::chrono::milliseconds GetTimeout(DriverCall call);
/// The call in words, as in "Initialize has not returned".
ZANSERVER_EXPORT QString GetName(DriverCall call);

} // namespace ZANServer
