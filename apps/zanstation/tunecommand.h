#pragma once

#include "zancommon/zancharacteristics.h"

#include <optional>

/// What `zanstation tune` is asked: a frequency, or a range.
struct TuneRequest {
    EOperationMode mode = OPMODE_FFM;
    std::optional<double> frequency; ///< Hz
    std::optional<double>
        bandwidth;      ///< Hz; realtime bandwidth wanted, which wideband FFM fits into the range
    double start = 0.0; ///< Hz, without a frequency
    double stop = 0.0;  ///< Hz, without a frequency
    ZANCharacteristics::EAdjustMode adjustMode = ZANCharacteristics::ADJUST_DOWN;
    QString adjustName; ///< of the adjust mode
};

/// Moves what was asked for to the nearest valid frequency or range, and prints what was changed and why, the
/// antenna that serves it, its converter, the best sample mode and its resolution bandwidths.
/// Returns the exit code: failed when nothing serves it.
int Tune(ZANCharacteristics& characteristics, const TuneRequest& request);
