#pragma once

#include "valueframework/valuetypes.h"
#include "zancommon/zandomain.h"

#include <list>
#include <set>

/// Replaces the items of selections; their observers are notified once, without the one given.
class SelectionFiller {
public:
    /// An item for each method: its name, 0.0, and as key its position from 0.
    static void FillWithMethods(ValueSelection& selection, const std::list<EZANMethod>& methods,
                                IObserver* observer);
    /// An item for each polarisation: its name, 0.0, and as key its position from 0.
    static void FillWithPolarisations(ValueSelection& selection, const std::list<EZANPolarisation>& modes,
                                      IObserver* observer);
    /// An item for each bandwidth (Hz): text for people, the bandwidth, and as key its position from 0. Null
    /// and a selection for which there are no bandwidths stay as they are.
    static void FillWithBandwidths(ValueSelection* selection, const std::set<double>& bandwidths,
                                   IObserver* observer);
    /// An item for each attenuation, number and key being dB: two for 0 and 2 as `count`, else all four. Null
    /// is left alone.
    static void FillWithAttenuations(ValueSelection* selection, int count, IObserver* observer);
};
