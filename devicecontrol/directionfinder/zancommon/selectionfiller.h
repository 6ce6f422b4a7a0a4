#pragma once

#include "valueframework/valuetypes.h"
#include "zancommon/zandomain.h"

#include <list>
#include <set>

/// Replaces the items of selections; their observers are notified once, except the given one.
class SelectionFiller {
public:
    /// An item for each method: its name, 0.0, and as key its position from 0.
    static void FillWithMethods(ValueSelection& selection, const std::list<EZANMethod>& methods,
                                IObserver* observer);
    /// An item for each polarisation: its name, 0.0, and as key its position from 0.
    static void FillWithPolarisations(ValueSelection& selection, const std::list<EZANPolarisation>& modes,
                                      IObserver* observer);
    /// An item for each bandwidth (Hz): its text, the bandwidth, and as key its position from 0. Does nothing
    /// for null, and when there are no bandwidths.
    static void FillWithBandwidths(ValueSelection* selection, const std::set<double>& bandwidths,
                                   IObserver* observer);
    /// An item for each attenuation, with number and key in dB: two for a `count` of 0 or 2, else all four.
    /// Does nothing for null.
    static void FillWithAttenuations(ValueSelection* selection, int count, IObserver* observer);
};
