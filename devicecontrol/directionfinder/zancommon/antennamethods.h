#pragma once

#include "zancommon/antennadatalist.h"
#include "zancommon/zandomain.h"

#include <list>

/// DF methods and polarisations: what the antenna library knows of a model, and what antennas report.
/// Frequencies are in Hz.
class AntennaMethods {
public:
    /// Mask of EZANMethodDetailed from the antenna library. For a model that is not in the library at this
    /// frequency: 10 when its name contains "SR", else 2.
    static long GetDetailed(const AntennaData& antenna, double frequency);
    /// Methods that the enabled antennas have at a frequency, each once, in the order in which they first
    /// appear.
    static std::list<EZANMethod> GetAvailable(const AntennaDataList& antennas, double frequency);
    /// Polarisations that the enabled switchable antennas have at a frequency, each once, in list order.
    /// \param secondFrequency above 0: the antennas must reach this frequency as well
    static std::list<EZANPolarisation> GetPolarisations(const AntennaDataList& antennas, double frequency,
                                                        double secondFrequency);
};
