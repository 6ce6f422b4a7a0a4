#pragma once

#include "valueframework/valueptr.h"
#include "valueframework/valuetypes.h"
#include "zancommon_export.h"

#include <QString>

struct Bearing;

namespace KvZANCommon {

/// Marks the rejected bearings of a block as unusable while the connection runs.
///
/// The connection speed is found by its path, as in `PitchRollFilter`: the first value that is found is kept
/// until the tree, which owns it, destroys it. All operations belong to the thread of the value tree.
class ZANCOMMON_EXPORT ConnectionSpeedFilter {
public:
    /// The connection runs while this integer value is 1 or more.
    void SetConnectionSpeedValuePath(const QString& path);

    /// Marks those of `count` bearings whose quality is 0 as unusable (marker -4000). Does nothing while the
    /// connection does not run or its speed is not known.
    /// \param bearings may be null when `count` is 0.
    void Apply(unsigned count, Bearing* bearings) const;

private:
    ZANPlatform::ValuePtr<ValueInt> m_pConnectionSpeed;
};

} // namespace KvZANCommon
