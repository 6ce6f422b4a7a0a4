#pragma once

#include "zancommon_export.h"

namespace KvZANCommon {

/// The DF settings that a user chooses once: bandwidth, mode and update interval as the keys of entries in
/// the selections of the application, and the level threshold. A plain record: nothing is checked. Keys above
/// the highest `long` become negative numbers.
class ZANCOMMON_EXPORT DFSettingsParams {
public:
    /// The keys at first.
    static constexpr unsigned long DEFAULT_DF_BANDWIDTH_KEY = 7;
    static constexpr unsigned long DEFAULT_DF_MODE_KEY = 0;
    static constexpr unsigned long DEFAULT_UPDATE_INTERVAL_KEY = 4;

    [[nodiscard]] long GetDFBandwidthKey() const { return static_cast<long>(m_dfBandwidthKey); }
    void SetDFBandwidthKey(unsigned long key) { m_dfBandwidthKey = key; }

    [[nodiscard]] long GetDFModeKey() const { return static_cast<long>(m_dfModeKey); }
    void SetDFModeKey(unsigned long key) { m_dfModeKey = key; }

    [[nodiscard]] long GetUpdateIntervalKey() const { return static_cast<long>(m_updateIntervalKey); }
    void SetUpdateIntervalKey(unsigned long key) { m_updateIntervalKey = key; }

    /// dB; 0 at first.
    [[nodiscard]] double GetLevelThreshold() const { return m_levelThreshold; }
    void SetLevelThreshold(double threshold) { m_levelThreshold = threshold; }

private:
    unsigned long m_dfBandwidthKey = DEFAULT_DF_BANDWIDTH_KEY;
    unsigned long m_dfModeKey = DEFAULT_DF_MODE_KEY;
    unsigned long m_updateIntervalKey = DEFAULT_UPDATE_INTERVAL_KEY;
    double m_levelThreshold = 0.0;
};

} // namespace KvZANCommon
