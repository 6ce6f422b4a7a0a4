#pragma once

#include "kwbase/observable.h"
#include "zancommon/overheadpassparams.h"
#include "zancommon_export.h"

namespace KvZANCommon {

/// Keeps two sets of overhead-pass parameters equal, whichever of them is changed.
///
/// Lives as long as the two shall be equal; on destruction it leaves both. The sets are not owned and should
/// outlive it. Once one of them is gone the synchroniser does nothing more. Belongs to the thread of the
/// sets.
class ZANCOMMON_EXPORT OHPParamsSynchronizer : public IObserver {
public:
    /// Copies the first set into the second one, whose observers are told.
    OHPParamsSynchronizer(OverheadPassParams& first, OverheadPassParams& second);
    OHPParamsSynchronizer(const OHPParamsSynchronizer&) = delete;
    OHPParamsSynchronizer& operator=(const OHPParamsSynchronizer&) = delete;
    ~OHPParamsSynchronizer() override;

    /// Called by the sets.
    void Update(Observable* subject, TChangeCode code) override;

private:
    ZANPlatform::ObservablePtr<OverheadPassParams> m_pFirst;
    ZANPlatform::ObservablePtr<OverheadPassParams> m_pSecond;
};

} // namespace KvZANCommon
