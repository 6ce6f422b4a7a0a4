#include "zancommon/overheadpassfilter.h"

#include "valueframework/bearingresult.h"
#include "zancommon/overheadpassparams.h"

namespace KvZANCommon {

namespace {

constexpr qint16 OVERHEAD_PASS_QUALITY = -200;

} // namespace

OverheadPassFilter::OverheadPassFilter(OverheadPassParams& params)
    : m_params(params) {}

void OverheadPassFilter::Apply(BearingResult& result) const {
    if (m_params.IsValid() && result.IsValueValid(BearingResult::AZIMUTH) &&
        result.IsValueValid(BearingResult::ELEVATION) && result.GetElevation() >= m_params.GetThreshold()) {
        result.SetQuality(OVERHEAD_PASS_QUALITY);
    }
}

} // namespace KvZANCommon
