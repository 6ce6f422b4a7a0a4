#pragma once

#include "zanserver_export.h"

#include "zancommon/driverrecords.h"
#include "zancommon/idriver.h"
#include "zanserver/drivererrands.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace ZANServer {

/// What a driver says of its device. Everything in it is bounded: what is not usable is left out, with a line
/// in `faults`.
struct ZANSERVER_EXPORT DeviceReading {
    /// The largest numbers of which a driver is asked.
    static constexpr unsigned long MOST_ANTENNAS = 64;
    static constexpr unsigned long MOST_CONVERTERS = 32;
    static constexpr unsigned long MOST_COMPASSES = 16;
    static constexpr int MOST_COMPONENTS = 256;
    static constexpr int MOST_FAULTS = 20;

    struct Antenna {
        KvZANCommon::AntennaPropertyStruct property; ///< the handle is the one that was asked for
        KvZANCommon::AntennaSubRangeStruct subRange;
        std::optional<KvZANCommon::AntennaSetupStruct> setup;
    };
    struct Compass {
        KvZANCommon::CompassPropertyStruct property;
        std::optional<double> value; ///< degrees
    };

    std::optional<QString> type;
    std::optional<QString> options;
    std::vector<Antenna> antennas;
    std::vector<KvZANCommon::ConverterSetupStruct> converters;
    std::vector<Compass> compasses;
    std::optional<std::vector<KvZANCommon::ComponentInfo>> components;
    std::optional<int> maxChannelCount;
    QStringList faults;
};

/// Asks a driver what its device is: one query after the other, each with its own time-out.
/// \param done on the main thread, with what was read; not when `errands` are gone by then
ZANSERVER_EXPORT void ReadDevice(DriverErrands& errands,
                                 const std::function<void(const DeviceReading&)>& done);

} // namespace ZANServer
