#include "simulator/scanplan.h"

#include <algorithm>
#include <cmath>

namespace Simulator {

using KvZANCommon::DFSettingsStruct;
using KvZANCommon::FreqRangeDefinition;

namespace {

constexpr double ROUNDING = 1e-6;       // of one of those that are counted
constexpr double SETTLING_TIME = 0.001; // s, of the receiver at a new frequency

/// Seconds: what the range says, else what the device is set to.
double GetAverageTime(const FreqRangeDefinition& range, const DeviceSettings& settings) {
    if (range.GetAverageTime() > 0) {
        return static_cast<double>(range.GetAverageTime()) / 1000.0;
    }
    const double ofRange = range.GetDFSettings().averageTime;
    return ofRange >= 0.0 ? ofRange : settings.averageTime;
}

} // namespace

double ScanPlan::GetMeasurementTime(const DFSettingsStruct& settings, double resolution) {
    return settings.measurementTime > 0.0 ? settings.measurementTime : 2.0 / resolution;
}

double ScanPlan::CountMeasurements(double averageTime, double measurementTime) {
    return std::max(1.0, std::floor(averageTime / measurementTime + ROUNDING));
}

double ScanPlan::CountChannels(const FreqRangeDefinition& range) {
    return std::floor((range.GetStopFreq() - range.GetStartFreq()) / range.GetStepFreq() + ROUNDING) + 1.0;
}

unsigned long ScanPlan::GetFirstChannel(const FreqRangeDefinition& range, unsigned long nextChannel) {
    const bool isNumbered = range.GetLastChannel() > 0;
    return isNumbered ? range.GetFirstChannel() : nextChannel;
}

ScanPlan::ScanPlan(const Device& device, const DeviceSettings& settings, EMode mode) {
    unsigned long nextChannel = 0;
    for (std::size_t i = 0; i < settings.ranges.size(); ++i) {
        const FreqRangeDefinition& range = settings.ranges[i];
        const unsigned long first = GetFirstChannel(range, nextChannel);
        AddRange(device, settings, mode, i, first);
        nextChannel = first + static_cast<unsigned long>(CountChannels(range));
    }
}

void ScanPlan::AddRange(const Device& device, const DeviceSettings& settings, EMode mode, std::size_t range,
                        unsigned long firstChannel) {
    const FreqRangeDefinition& definition = settings.ranges[range];
    const DFSettingsStruct& df = definition.GetDFSettings();
    const auto count = static_cast<unsigned>(CountChannels(definition));
    bool isOpen = false; // the last hop takes more channels
    for (unsigned i = 0; i < count; ++i) {
        const double frequency = definition.GetStartFreq() + i * definition.GetStepFreq();
        const unsigned long channel = firstChannel + i;
        const bool isSkipped = channel < settings.skipped.size() && settings.skipped[channel];
        const auto path = isSkipped ? std::nullopt : ReceivePath::Find(device, settings, mode, frequency, df);
        if (!path) {
            isOpen = false;
            continue;
        }
        if (isOpen) {
            Hop& hop = m_hops.back();
            const double width = hop.step * hop.count + hop.resolution;
            if (hop.path.antenna == path->antenna && hop.path.sampleMode == path->sampleMode &&
                width <= path->sampleMode->realtimeBandwidth) {
                ++hop.count;
                continue;
            }
        }
        const double wanted =
            df.resolutionBandwidth > 0.0 ? df.resolutionBandwidth : definition.GetStepFreq();
        const double resolution = path->GetResolutionBandwidth(wanted);
        const double measurementTime = GetMeasurementTime(df, resolution);
        const double averageTime = GetAverageTime(definition, settings);
        const auto averaging = static_cast<double>(settings.scanAveraging);
        const double averageCount = CountMeasurements(averageTime, measurementTime) * averaging;
        const double duration = SETTLING_TIME + std::max(measurementTime, averageTime) * averaging;
        m_hops.push_back({range, channel, 1, frequency, definition.GetStepFreq(), *path, resolution,
                          averageCount, std::chrono::microseconds(std::llround(duration * 1e6))});
        isOpen = true;
    }
}

std::chrono::microseconds ScanPlan::GetSweepTime() const {
    std::chrono::microseconds time{};
    for (const Hop& hop : m_hops) {
        time += hop.duration;
    }
    return time;
}

std::size_t ScanPlan::FindHop(unsigned long channel) const {
    const auto found = std::ranges::find_if(m_hops, [channel](const Hop& hop) {
        return channel >= hop.firstChannel && channel < hop.firstChannel + hop.count;
    });
    return found == m_hops.end() ? 0 : static_cast<std::size_t>(found - m_hops.begin());
}

} // namespace Simulator
