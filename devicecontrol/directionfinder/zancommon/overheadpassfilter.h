#pragma once

#include "zancommon_export.h"

class BearingResult;

namespace KvZANCommon {

class OverheadPassParams;

/// Rejects bearing results that were measured while the emitter was high above the antenna. Belongs to the
/// thread of the parameters.
class ZANCOMMON_EXPORT OverheadPassFilter {
public:
    /// \param params is not owned and must outlive the filter; changes take effect at once.
    explicit OverheadPassFilter(OverheadPassParams& params);

    /// Sets the quality to -200 when the filter is switched on, the result holds azimuth and elevation, and
    /// the elevation is the threshold or more. Otherwise the result is not changed.
    void Apply(BearingResult& result) const;

private:
    const OverheadPassParams& m_params;
};

} // namespace KvZANCommon
