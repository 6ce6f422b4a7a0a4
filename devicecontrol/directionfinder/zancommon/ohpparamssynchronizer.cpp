#include "zancommon/ohpparamssynchronizer.h"

using ZANPlatform::ObservablePtr;

namespace KvZANCommon {

namespace {

using Params = ObservablePtr<OverheadPassParams>;

// By value: an observer of the target may destroy the synchroniser or one of the sets after the first step.
// Each content is read just before it is copied, so that changes by such an observer are not overwritten.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void Copy(const Params source, const Params target, IObserver* originator) {
    if (source && target) {
        target->SetThreshold(source->GetThreshold(), originator);
    }
    if (source && target) {
        target->SetValid(source->IsValid(), originator);
    }
}

} // namespace

OHPParamsSynchronizer::OHPParamsSynchronizer(OverheadPassParams& first, OverheadPassParams& second)
    : m_pFirst(&first)
    , m_pSecond(&second) {
    Copy(m_pFirst, m_pSecond, this);
    first.AddObserver(this);
    second.AddObserver(this);
}

// The base class removes the synchroniser from the observers of both sets.
OHPParamsSynchronizer::~OHPParamsSynchronizer() = default;

void OHPParamsSynchronizer::Update(Observable* subject, TChangeCode code) {
    if (code != TChangeCode::Changed) {
        return;
    }
    if (subject == m_pFirst.get()) {
        Copy(m_pFirst, m_pSecond, this);
    } else if (subject == m_pSecond.get()) {
        Copy(m_pSecond, m_pFirst, this);
    }
}

} // namespace KvZANCommon
