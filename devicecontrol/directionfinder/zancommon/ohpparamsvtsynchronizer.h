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
/// What stands in the tree already goes into the parameters; what is missing is made from the parameters. A
/// new threshold value accepts 0 to 900 (tenths of a degree). Where the value cannot take the threshold of
/// the parameters it takes the nearest one that it can, the parameters keep theirs, and a trace line says so.
///
/// A value that cannot be made, because something else has its name, is left out; so is a value from the time
/// on when it is removed from the tree, also when another one is inserted at its path later. The other value
/// stays synchronised.
///
/// Lives as long as both shall be equal. The parameters are not owned and should outlive it; once they are
/// gone the synchroniser does nothing more. All operations belong to the thread of the value tree.
class ZANCOMMON_EXPORT OHPParamsVtSynchronizer : public IObserver {
public:
    /// \param basePath empty stands for "/ZANServer"
    OHPParamsVtSynchronizer(OverheadPassParams& params, QString basePath);
    OHPParamsVtSynchronizer(const OHPParamsVtSynchronizer&) = delete;
    OHPParamsVtSynchronizer& operator=(const OHPParamsVtSynchronizer&) = delete;
    ~OHPParamsVtSynchronizer() override;

    /// Called by the parameters and the values.
    void Update(Observable* subject, TChangeCode code) override;

private:
    void BindThreshold(const QString& path);
    void BindValid(const QString& path);
    void ReadFromTree(const Observable* value);
    void WriteThreshold();
    void WriteToTree();

    ZANPlatform::ObservablePtr<OverheadPassParams> m_pParams;
    ZANPlatform::ValuePtr<ValueNumericInt> m_pThreshold;
    ZANPlatform::ValuePtr<ValueBool> m_pValid;
};

} // namespace KvZANCommon
