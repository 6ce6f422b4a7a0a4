#include "zancommon/frequencyadjuster.h"

namespace {

/// Whether a mode is about one frequency.
bool ServesFrequencies(EOperationMode mode) {
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

/// The frequency whose band lies in a range; of a band that is wider, one end is that of the range.
double PushBandInto(const FrequencyRange& range, double frequency, double bandwidth) {
    const double half = bandwidth / 2.0;
    if (frequency - half < range.low) {
        return range.low + half;
    }
    return frequency + half > range.high ? range.high - half : frequency;
}

} // namespace

FrequencyAdjustment FrequencyAdjuster::Adjust(EOperationMode mode, double frequency,
                                              std::optional<double> bandwidth) const {
    using EMissing = FrequencyAdjustment::EMissing;
    FrequencyAdjustment adjustment;
    adjustment.asked = frequency;
    adjustment.limits = {m_device.GetMinFreq(mode), m_device.GetMaxFreq(mode)};
    adjustment.frequency = adjustment.limits.Clip(frequency);
    adjustment.intoLimits = adjustment.frequency - frequency;
    const bool hasBand = mode == OPMODE_WIDEBAND_FFM;
    if (hasBand) {
        adjustment.bandwidth = bandwidth ? *bandwidth
                                         : m_device.GetDefaultRealtimeBandwidth(mode, adjustment.frequency,
                                                                                adjustment.frequency);
    }
    if (!ServesFrequencies(mode)) {
        adjustment.missing = EMissing::MODE;
        return adjustment;
    }
    adjustment.antenna = m_device.GetAntennaForFrequency(adjustment.frequency, false);
    if (!adjustment.antenna) {
        adjustment.missing = EMissing::ANTENNA;
    } else if (hasBand) {
        const FrequencyRange range = RangeOf(*adjustment.antenna);
        const double inRange = PushBandInto(range, adjustment.frequency, adjustment.bandwidth);
        adjustment.intoRange = inRange - adjustment.frequency;
        adjustment.frequency = inRange;
        adjustment.missing = adjustment.bandwidth > range.GetWidth() ? EMissing::WIDTH : EMissing::NOTHING;
    }
    return adjustment;
}

RangeAdjustment FrequencyAdjuster::Adjust(EOperationMode mode, const FrequencyRange& asked,
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
    const AntennaData* next = below; // to which the range is moved
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
