#include "zancommon/pitchrollfilter.h"

#include "zancommon/bearing.h"

#include <QObject>

#include <cmath>

using ZANPlatform::ValuePtr;

namespace KvZANCommon {

namespace {

bool ThresholdExceeded(const ValuePtr<ValueNumericDouble>& angle,
                       const ValuePtr<ValueNumericDouble>& threshold) {
    return angle && threshold && std::abs(angle->GetValue()) >= std::abs(threshold->GetValue());
}

} // namespace

void PitchRollFilter::SetPitchValuePath(const QString& path) {
    m_pPitch.Find(path);
}

void PitchRollFilter::SetRollValuePath(const QString& path) {
    m_pRoll.Find(path);
}

void PitchRollFilter::SetPitchThresholdValuePath(const QString& path) {
    m_pPitchThreshold.Find(path);
}

void PitchRollFilter::SetRollThresholdValuePath(const QString& path) {
    m_pRollThreshold.Find(path);
}

void PitchRollFilter::SetZANDataValidValuePath(const QString& path) {
    m_pDataValid.Find(path);
}

void PitchRollFilter::SetZANDataStateInfoValuePath(const QString& path) {
    m_pDataStateInfo.Find(path);
}

bool PitchRollFilter::IsFilterConditionMet() const {
    return PitchThresholdExceeded() || RollThresholdExceeded();
}

bool PitchRollFilter::PitchThresholdExceeded() const {
    return ThresholdExceeded(m_pPitch, m_pPitchThreshold);
}

bool PitchRollFilter::RollThresholdExceeded() const {
    return ThresholdExceeded(m_pRoll, m_pRollThreshold);
}

void PitchRollFilter::Apply(unsigned count, Bearing* bearings) const {
    // Without unrolling, the loop's branch limits the speed, not the store.
#pragma GCC unroll 8
    for (unsigned i = 0; i < count; ++i) {
        bearings[i].quality = 0;
    }
    ReportRejection();
}

void PitchRollFilter::Apply(BearingResult& result) const {
    if (result.IsValueValid(BearingResult::AZIMUTH)) {
        result.SetQuality(0);
        ReportRejection();
    }
}

void PitchRollFilter::ReportRejection() const {
    if (m_pDataValid) {
        m_pDataValid->SetValue(false, nullptr);
    }
    if (m_pDataStateInfo) {
        m_pDataStateInfo->SetValue(QObject::tr("Pitch/Roll value exceeds threshold."), nullptr);
    }
}

} // namespace KvZANCommon
