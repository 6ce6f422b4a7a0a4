#include "zancommon/overheadpassparams.h"

namespace KvZANCommon {

OverheadPassParams::~OverheadPassParams() = default;

void OverheadPassParams::SetThreshold(int threshold, IObserver* originator) {
    if (m_threshold != threshold) {
        m_threshold = threshold;
        NotifyObservers(TChangeCode::Changed, originator);
    }
}

void OverheadPassParams::SetValid(bool isValid, IObserver* originator) {
    if (m_isValid != isValid) {
        m_isValid = isValid;
        NotifyObservers(TChangeCode::Changed, originator);
    }
}

} // namespace KvZANCommon
