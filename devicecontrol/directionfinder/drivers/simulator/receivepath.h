#pragma once

#include "simulator/devicesettings.h"
#include "simulator/scenario.h"
#include "zancommon/zancharacteristics.h"

#include <list>
#include <optional>
#include <utility>

namespace Simulator {

/// Antenna, converter and sample mode with which the device receives a frequency, chosen from the catalogue.
struct ReceivePath {
    using SampleMode = ZANCharacteristics::SampleModeDescription;

    std::size_t antenna = 0; ///< place in the list of antennas
    std::size_t converter = 0;
    qint32 methods = METHODDETAILED_NONE; ///< mask of EZANMethodDetailed
    const SampleMode* sampleMode = nullptr;

    /// The first antenna whose range holds the frequency and whose converter is on serves it. Of the sample
    /// modes that device, options, converter and mode allow, the one that the DF settings ask for is taken,
    /// else the widest of the highest priority. Empty: nothing serves the frequency in this mode.
    static std::optional<ReceivePath> Find(const Device& device, const DeviceSettings& settings, EMode mode,
                                           double frequency, const KvZANCommon::DFSettingsStruct& wanted);
    /// Whether an antenna of the device, as it is switched on, serves a frequency in any mode.
    static bool FindAntenna(const Device& device, double frequency);

    /// The lowest and the highest frequency of a model.
    static std::pair<double, double> GetAntennaRange(const QString& name);
    static std::list<KvZANCommon::AntennaSubRangeStruct> GetSubRanges(const QString& name);

    /// The resolution bandwidth in Hz that the sample mode has for a wanted one: the widest that is no wider,
    /// else the narrowest.
    [[nodiscard]] double GetResolutionBandwidth(double wanted) const;
    /// The method that the settings ask for, or the antenna's best one when they ask for none.
    [[nodiscard]] EZANMethod GetMethod(const KvZANCommon::DFSettingsStruct& wanted) const;
    /// Whether the antenna has a method here.
    [[nodiscard]] bool HasMethod(EZANMethod method) const;
};

} // namespace Simulator
