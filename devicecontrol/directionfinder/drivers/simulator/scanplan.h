#pragma once

#include "simulator/devicesettings.h"
#include "simulator/receivepath.h"

#include <chrono>
#include <vector>

namespace Simulator {

/// How the device goes through the ranges that it is given: in hops of as many channels as fit into the
/// realtime bandwidth at once.
class ScanPlan {
public:
    struct Hop {
        std::size_t range = 0; ///< place in the list of ranges
        unsigned long firstChannel = 0;
        unsigned count = 0;          ///< channels
        double firstFrequency = 0.0; ///< Hz
        double step = 0.0;           ///< Hz
        ReceivePath path;
        double resolution = 0.0; ///< Hz
        double averageCount = 1.0;
        std::chrono::microseconds duration{};

        /// Hz, to which the receiver is tuned meanwhile.
        [[nodiscard]] double GetMiddle() const { return firstFrequency + step * (count - 1) / 2.0; }
        [[nodiscard]] double GetFrequency(unsigned channel) const { return firstFrequency + step * channel; }
    };

    /// How long one measurement takes, seconds: as the settings say, else what the resolution needs.
    static double GetMeasurementTime(const KvZANCommon::DFSettingsStruct& settings, double resolution);
    /// How many measurements an average time holds, 1 or more. Seconds.
    static double CountMeasurements(double averageTime, double measurementTime);
    static double CountChannels(const KvZANCommon::FreqRangeDefinition& range);
    /// The number of a range's first channel, behind a range whose last channel was followed by another one.
    /// \param nextChannel of the range before, 0: there is none
    static unsigned long GetFirstChannel(const KvZANCommon::FreqRangeDefinition& range,
                                         unsigned long nextChannel);

    ScanPlan() = default;
    /// Channels that are skipped, or that no antenna serves, are left out.
    ScanPlan(const Device& device, const DeviceSettings& settings, EMode mode);

    [[nodiscard]] const std::vector<Hop>& GetHops() const { return m_hops; }
    [[nodiscard]] std::chrono::microseconds GetSweepTime() const;
    /// The hop that holds a channel; the first one when none does.
    [[nodiscard]] std::size_t FindHop(unsigned long channel) const;

private:
    void AddRange(const Device& device, const DeviceSettings& settings, EMode mode, std::size_t range,
                  unsigned long firstChannel);

    std::vector<Hop> m_hops;
};

} // namespace Simulator
