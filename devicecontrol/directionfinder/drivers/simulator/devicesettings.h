#pragma once

#include "simulator/scenario.h"
#include "zancommon/driverrecords.h"
#include "zancommon/freqrangedefinition.h"

#include <optional>
#include <vector>

namespace Simulator {

/// All that the application can set at the device. Converters, antennas and compasses have their place in the
/// scenario as their handle.
struct DeviceSettings {
    double frequency = 0.0; ///< Hz
    KvZANCommon::DFSettingsStruct df;
    KvZANCommon::DEMSettingsStruct dem;
    KvZANCommon::FilterSettingsStruct filter;
    KvZANCommon::GainControlStruct gain{QStringLiteral("auto"), -1, -1.0};
    double averageTime = 0.1; ///< seconds
    quint64 averageResets = 0;
    std::vector<KvZANCommon::AntennaSetupStruct> antennas;
    std::vector<KvZANCommon::ConverterSetupStruct> converters;
    std::vector<double> compassOffsets; ///< degrees that are added to what the compass shows

    std::vector<KvZANCommon::FreqRangeDefinition> ranges;
    std::vector<bool> skipped;       ///< by channel number
    quint64 rangeChanges = 0;        ///< how often ranges or channels were changed
    bool areRangesGiven = false;     ///< by the application, which counts its channels by them
    bool areDfSettingsGiven = false; ///< the same for the width of a channel
    long scanAveraging = 1;
    int holdTime = 1000;             ///< milliseconds, see `SimulatorDriver::SetHoldTime`
    int signalTime = 0;              ///< milliseconds
    int pauseTime = 500;             ///< milliseconds
    bool isSearchHeld = false;       ///< by the operator
    quint64 searchContinues = 0;     ///< how often the search was sent on
    unsigned long searchChannel = 0; ///< where it was sent the last time
    bool isEmitterCountAutomatic = true;
    long emitterCount = 1;

    int volume = 50; ///< percent
    bool isTimeFromGps = true;
    bool isTestRepeated = false;
};

/// What the device of a scenario is set to when it is switched on.
DeviceSettings MakeInitialSettings(const Scenario& scenario);

/// A range as the application would give it.
KvZANCommon::FreqRangeDefinition MakeRange(const ScanRange& range, int index);

} // namespace Simulator
