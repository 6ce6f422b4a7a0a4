#pragma once

#include "zancommon/frequencyadjustment.h"
#include "zancommon/frequencyrange.h"
#include "zancommon/rangeadjustment.h"
#include "zancommon/zancharacteristics.h"

#include <optional>

/// Moves a frequency or range to one that the device can serve, and says why: does the work of
/// `ZANCharacteristics::AdjustFrequency` and `ZANCharacteristics::AdjustFrequencyRange`.
///
/// Inline, so that the compiler sees the operations of the characteristics that it calls, which saves a fifth
/// of the time.
class FrequencyAdjuster {
public:
    /// \param device is used through its virtual operations; must outlive this object
    explicit FrequencyAdjuster(ZANCharacteristics& device)
        : m_device(device) {}

    /// See `ZANCharacteristics::AdjustFrequency`.
    [[nodiscard]] FrequencyAdjustment Adjust(EOperationMode mode, double frequency,
                                             std::optional<double> bandwidth) const;
    /// See `ZANCharacteristics::AdjustFrequencyRange`.
    [[nodiscard]] RangeAdjustment Adjust(EOperationMode mode, const FrequencyRange& asked,
                                         double realtimeBandwidth,
                                         ZANCharacteristics::EAdjustMode adjustMode) const;

private:
    /// Whether a mode serves single frequencies.
    [[nodiscard]] static bool ServesFrequencies(EOperationMode mode);
    /// Moves a frequency so that its band lies in a range. When the band is wider than the range, one end of
    /// the band is moved to the end of the range.
    [[nodiscard]] static double PushBandInto(const FrequencyRange& range, double frequency, double bandwidth);

    ZANCharacteristics& m_device;
};

inline bool FrequencyAdjuster::ServesFrequencies(EOperationMode mode) {
    switch (mode) {
    case OPMODE_0:
    case OPMODE_FFM:
    case OPMODE_WIDEBAND_FFM:
    case OPMODE_SCAN:
    case OPMODE_SEARCH:
    case OPMODE_TDMA:
    case OPMODE_9:
        return true;
    default:
        return false;
    }
}

inline double FrequencyAdjuster::PushBandInto(const FrequencyRange& range, double frequency,
                                              double bandwidth) {
    const double half = bandwidth / 2.0;
    if (frequency - half < range.low) {
        return range.low + half;
    }
    return frequency + half > range.high ? range.high - half : frequency;
}

// Always inlined: `ToNextValidFrequency`, which uses two of the members, takes a quarter more time otherwise.
[[gnu::always_inline]] inline FrequencyAdjustment
FrequencyAdjuster::Adjust(EOperationMode mode, double frequency, std::optional<double> bandwidth) const {
    using EMissing = FrequencyAdjustment::EMissing;
    const FrequencyRange limits{m_device.GetMinFreq(mode), m_device.GetMaxFreq(mode)};
    const double inLimits = limits.Clip(frequency);
    const bool hasBand = mode == OPMODE_WIDEBAND_FFM;
    double band = 0.0;
    if (hasBand) {
        band = bandwidth ? *bandwidth : m_device.GetDefaultRealtimeBandwidth(mode, inLimits, inLimits);
    }
    double moved = inLimits;
    const AntennaData* antenna = nullptr;
    EMissing missing = EMissing::MODE;
    if (ServesFrequencies(mode)) {
        antenna = m_device.GetAntennaForFrequency(inLimits, false);
        missing = antenna ? EMissing::NOTHING : EMissing::ANTENNA;
        if (antenna && hasBand) {
            const FrequencyRange range = RangeOf(*antenna);
            moved = PushBandInto(range, inLimits, band);
            missing = band > range.GetWidth() ? EMissing::WIDTH : EMissing::NOTHING;
        }
    }
    return {.asked = frequency,
            .limits = limits,
            .bandwidth = band,
            .intoLimits = inLimits - frequency,
            .intoRange = moved - inLimits,
            .frequency = moved,
            .antenna = antenna,
            .missing = missing};
}

inline RangeAdjustment FrequencyAdjuster::Adjust(EOperationMode mode, const FrequencyRange& asked,
                                                 double realtimeBandwidth,
                                                 ZANCharacteristics::EAdjustMode adjustMode) const {
    using EMissing = RangeAdjustment::EMissing;
    RangeAdjustment adjustment;
    adjustment.asked = asked;
    adjustment.limits = {m_device.GetMinFreq(mode), m_device.GetMaxFreq(mode)};
    adjustment.intoLimits = asked.GetShiftInto(adjustment.limits);
    const FrequencyRange inLimits = asked.MovedBy(adjustment.intoLimits);

    const AntennaData* const below = m_device.GetAntennaForFrequency(inLimits.low, false);
    const AntennaData* const above = m_device.GetAntennaForFrequency(inLimits.high, false);
    const AntennaData* next = below; // the antenna to which the range is moved
    if (below && above && below != above) {
        const double border = adjustMode == ZANCharacteristics::ADJUST_UP ? above->minRange : below->maxRange;
        adjustment.border = {border, below, above};
        if (adjustMode == ZANCharacteristics::ADJUST_DOWN) {
            adjustment.offBorder = border - inLimits.high;
        } else if (adjustMode == ZANCharacteristics::ADJUST_UP) {
            adjustment.offBorder = border - inLimits.low;
            next = above;
        }
    }
    adjustment.antennaOfStart = below;
    const FrequencyRange range = inLimits.MovedBy(adjustment.offBorder);
    adjustment.range = range;

    if (!m_device.GetBestSampleModeDescription(mode, range.low, range.high, realtimeBandwidth)) {
        adjustment.missing = m_device.m_antennas.GetAntennaForFreqRange(range.low, range.high)
                                 ? EMissing::SAMPLE_MODE
                                 : EMissing::ANTENNA;
        return adjustment;
    }
    adjustment.antenna = next && RangeOf(*next).Contains(range)
                             ? next
                             : m_device.m_antennas.GetAntennaForFreqRange(range.low, range.high);
    return adjustment;
}
