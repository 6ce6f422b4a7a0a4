#pragma once

#include "zancommon_export.h"

namespace KvZANCommon {

class OverheadPassParams;

/// Keeps overhead-pass parameters in the application's settings. They are in the sub-configuration
/// "OverheadPass" under the keys "Threshold" (integer, tenths of a degree) and "Valid" (boolean). Belongs to
/// the application's main thread.
class ZANCOMMON_EXPORT OHPParamsPersistency {
public:
    /// \param params is not owned and must outlive this object.
    explicit OHPParamsPersistency(OverheadPassParams& params);

    /// Writes the parameters to the settings and saves them.
    void MakePersistent();
    /// Sets the parameters from the settings. A key that is missing or unreadable is written with its default
    /// (600 and false), so that both exist after the first run. A threshold that does not fit an `int` is
    /// traced and counts as the default; the settings are not changed. Observers of the parameters are
    /// notified.
    void Restore();

private:
    OverheadPassParams& m_params;
};

} // namespace KvZANCommon
