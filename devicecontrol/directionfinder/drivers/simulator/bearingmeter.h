#pragma once

#include "simulator/randomnumbers.h"
#include "simulator/reception.h"
#include "zancommon/bearing.h"
#include "zancommon/driverrecords.h"

#include <limits>
#include <span>
#include <vector>

namespace Simulator {

/// Makes bearings of what arrives at the antenna.
class BearingMeter {
public:
    /// How it measures.
    struct Setup {
        double resolution = 1000.0; ///< Hz, the width of a channel
        double noise = 0.0;         ///< mW in a channel
        EZANMethod method = METHOD_COR;
        double averageCount = 1.0;  ///< measurements that a bearing is the mean of
        double azimuthOffset = 0.0; ///< degrees that are added to an azimuth from true north
        double lowestLevel = -std::numeric_limits<double>::infinity(); ///< dBm; what is below is not heard
        KvZANCommon::FilterSettingsStruct filter;                      ///< on azimuths from true north
    };

    explicit BearingMeter(RandomNumbers& random)
        : m_random(random) {}

    /// One bearing a channel. What is not heard, and what the filter rejects, has the quality 0. Of several
    /// emitters in a channel, one bearing between them: the one that is far stronger wins.
    /// \param firstFrequency of the first channel, Hz; the others follow with the step
    void Measure(std::span<const Reception::Signal> signals, double firstFrequency, double step,
                 const Setup& setup, std::span<Bearing> bearings);
    /// One bearing an emitter that is heard in one channel, the strongest first, `most` of them.
    std::vector<Bearing> Resolve(std::span<const Reception::Signal> signals, double frequency,
                                 const Setup& setup, std::size_t most);

    /// The power in mW that a signal has in a channel.
    static double GetPower(const Reception::Signal& signal, double frequency, double resolution);

private:
    /// What is in a channel.
    struct Cell {
        double power = 0.0;
        double east = 0.0; // directions, weighted by power
        double north = 0.0;
        double strongest = 0.0;
        double elevation = 0.0; // of the strongest
    };

    void Add(const Reception::Signal& signal, double firstFrequency, double step, double resolution);
    Bearing MakeNoise(double noiseLevel);
    Bearing MakeBearing(const Cell& cell, const Setup& setup);

    RandomNumbers& m_random;
    std::vector<Cell> m_cells;
};

} // namespace Simulator
