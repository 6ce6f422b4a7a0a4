#pragma once

#include "zancommon/frequencyadjustment.h"
#include "zancommon/frequencyrange.h"
#include "zancommon/rangeadjustment.h"
#include "zancommon/zancharacteristics.h"

#include <optional>

/// Moves what is asked for to what the device can serve, and says why: the work behind
/// `ZANCharacteristics::AdjustFrequency` and `ZANCharacteristics::AdjustFrequencyRange`.
class FrequencyAdjuster {
public:
    /// \param device is asked through its virtual operations; outlives this object
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
    ZANCharacteristics& m_device;
};
