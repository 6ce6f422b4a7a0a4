#pragma once

#include "kwbase/observable.h"
#include "zancommon/overheadpassparams.h"
#include "zancommon_export.h"

namespace KvZANCommon {

/// Keeps two sets of overhead-pass parameters equal, whichever of them is changed.
///
/// The sets are kept equal for as long as the synchroniser exists. They are not owned and should outlive it;
/// once one of them is destroyed, the synchroniser does nothing more. Belongs to the thread of the sets.
class ZANCOMMON_EXPORT OHPParamsSynchronizer : public IObserver {
public:
    /// Copies the first set into the second one, whose observers are notified.
    OHPParamsSynchronizer(OverheadPassParams& first, OverheadPassParams& second);
    OHPParamsSynchronizer(const OHPParamsSynchronizer&) = delete;
    OHPParamsSynchronizer& operator=(const OHPParamsSynchronizer&) = delete;
    ~OHPParamsSynchronizer() override;

    /// Called when one of the sets has changed.
    void Update(Observable* subject, TChangeCode code) override;

private:
    ZANPlatform::ObservablePtr<OverheadPassParams> m_pFirst;
    ZANPlatform::ObservablePtr<OverheadPassParams> m_pSecond;
};

} // namespace KvZANCommon
