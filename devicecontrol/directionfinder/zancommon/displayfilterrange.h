#pragma once

#include "valueframework/valuetypes.h"
#include "zancommon_export.h"

#include <QString>

#include <utility>
#include <vector>

/// What a device accepts in a frequency range: the azimuth sectors from which it takes bearings.
struct DeviceFilterRange {
    double lowerFrequency = 0.0; ///< Hz
    double upperFrequency = 0.0; ///< Hz
    /// From and to in degrees, clockwise from north; from above to: the sector goes through north.
    std::vector<std::pair<double, double>> acceptedSectors;
};

/// Tells a display which azimuth sectors a device filters away, so that they can be shaded.
///
/// The sectors stand in a list value of the tree, each with the frequency limits (Hz) that it applies to and
/// its lower and upper azimuth (degrees, 0 to 359.99). An update is `Reset`, `AddDeviceFilterRange` for each
/// range, and `Publish`, which tells the observers of the list once. The list is owned by the tree; when it
/// is gone the operations do nothing. Copies fill the same list. Belongs to the thread of the value tree.
class ZANCOMMON_EXPORT DisplayFilterRange {
public:
    /// Takes the list at basePath + "/" + name, or makes it there. Without it (a value of another type has
    /// the name) an assertion is reported, and the operations do nothing.
    DisplayFilterRange(const QString& name, const QString& basePath);
    DisplayFilterRange(const DisplayFilterRange&) = default;
    DisplayFilterRange& operator=(const DisplayFilterRange&) = default;
    virtual ~DisplayFilterRange();

    /// Begins a new set of sectors; one that is open is published first.
    void Reset();
    /// Adds the sectors of a range that none of its accepted ones covers; without accepted ones that is the
    /// whole circle. Sectors that are no numbers accept nothing, and ends off the circle (below 0 or above
    /// 359.99) bound nothing. Outside of a set the observers are told of each sector.
    void AddDeviceFilterRange(DeviceFilterRange range);
    /// Ends the set and tells the observers. Without a set that is only traced.
    void Publish();

private:
    ZANPlatform::ObservablePtr<ValueQuadFloatList> m_pFilterRangesForDisplay;
};
