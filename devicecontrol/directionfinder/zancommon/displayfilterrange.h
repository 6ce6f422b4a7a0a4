#pragma once

#include "valueframework/valuetypes.h"
#include "zancommon_export.h"

#include <QString>

#include <utility>
#include <vector>

/// The azimuth sectors from which a device accepts bearings in a frequency range.
struct DeviceFilterRange {
    double lowerFrequency = 0.0; ///< Hz
    double upperFrequency = 0.0; ///< Hz
    /// From and to in degrees, clockwise from north; from above to: the sector goes through north.
    std::vector<std::pair<double, double>> acceptedSectors;
};

/// Publishes for displays which azimuth sectors a device filters out, so that they can be shaded.
///
/// The sectors are in a list value of the tree, each with the frequency limits (Hz) that it applies to and
/// its lower and upper azimuth (degrees, 0 to 359.99). An update is `Reset`, `AddDeviceFilterRange` for each
/// range, and `Publish`, which notifies the observers of the list once. The list is owned by the tree; when
/// it is gone the operations do nothing. Copies fill the same list. Belongs to the thread of the value tree.
class ZANCOMMON_EXPORT DisplayFilterRange {
public:
    /// Uses the list at basePath + "/" + name, or creates it there. When that fails (a value of another type
    /// has the name), an assertion is reported, and the operations do nothing.
    DisplayFilterRange(const QString& name, const QString& basePath);
    DisplayFilterRange(const DisplayFilterRange&) = default;
    DisplayFilterRange& operator=(const DisplayFilterRange&) = default;
    virtual ~DisplayFilterRange();

    /// Begins a new set of sectors; an unfinished one is published first.
    void Reset();
    /// Adds the sectors of a range that none of its accepted ones covers; without accepted ones that is the
    /// whole circle. Sectors with NaN accept nothing, and ends outside the circle (below 0 or above 359.99)
    /// are not boundaries. Between `Publish` and `Reset` the observers are notified of each sector.
    void AddDeviceFilterRange(DeviceFilterRange range);
    /// Ends the set and notifies the observers. Without a set this is only traced.
    void Publish();

private:
    ZANPlatform::ObservablePtr<ValueQuadFloatList> m_pFilterRangesForDisplay;
};
