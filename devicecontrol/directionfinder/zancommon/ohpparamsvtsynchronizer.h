#pragma once

#include "kwbase/observable.h"
#include "valueframework/valueptr.h"
#include "valueframework/valuetypes.h"
#include "zancommon/overheadpassparams.h"
#include "zancommon_export.h"

#include <QString>

namespace KvZANCommon {

/// Keeps a set of overhead-pass parameters and two values of the tree equal: "OverheadPass/Threshold" and
/// "OverheadPass/Valid" below a base path.
///
/// Values that exist already are copied into the parameters; missing ones are created from the parameters. A
/// new threshold value accepts 0 to 900 (tenths of a degree). When the value cannot take the threshold of the
/// parameters, it takes the nearest one that it can; the parameters keep theirs, and the difference is
/// traced.
///
/// A value that cannot be created because something else has its name is left out. A value that is removed
/// from the tree is no longer synchronised, even if another one is inserted at its path later. The other
/// value stays synchronised.
///
/// Both are kept equal for as long as the synchroniser exists. The parameters are not owned and should
/// outlive it; once they are destroyed, the synchroniser does nothing more. All operations belong to the
/// thread of the value tree.
class ZANCOMMON_EXPORT OHPParamsVtSynchronizer : public IObserver {
public:
    /// \param basePath empty means "/ZANServer"
    OHPParamsVtSynchronizer(OverheadPassParams& params, QString basePath);
    OHPParamsVtSynchronizer(const OHPParamsVtSynchronizer&) = delete;
    OHPParamsVtSynchronizer& operator=(const OHPParamsVtSynchronizer&) = delete;
    ~OHPParamsVtSynchronizer() override;

    /// Called when the parameters or one of the values have changed.
    void Update(Observable* subject, TChangeCode code) override;

private:
    ZANCOMMON_NO_EXPORT void BindThreshold(const QString& path);
    ZANCOMMON_NO_EXPORT void BindValid(const QString& path);
    ZANCOMMON_NO_EXPORT void ReadFromTree(const Observable* value);
    ZANCOMMON_NO_EXPORT void WriteThreshold();
    ZANCOMMON_NO_EXPORT void WriteToTree();

    ZANPlatform::ObservablePtr<OverheadPassParams> m_pParams;
    ZANPlatform::ValuePtr<ValueNumericInt> m_pThreshold;
    ZANPlatform::ValuePtr<ValueBool> m_pValid;
};

} // namespace KvZANCommon
