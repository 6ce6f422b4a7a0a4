#include "zancommon/pitchrollfilter.h"

#include "valueframework/tree.h"
#include "zancommon/bearing.h"

#include <QObject>

#include <cmath>

namespace KvZANCommon {

namespace {

template <class T>
void Bind(ObservablePtr<T>& value, const QString& path) {
    if (!value) {
        value = Tree::Instance()->Find<T>(path);
    }
}

bool ThresholdExceeded(const ObservablePtr<ValueNumericDouble>& angle,
                       const ObservablePtr<ValueNumericDouble>& threshold) {
    return angle && threshold && std::abs(angle->GetValue()) >= std::abs(threshold->GetValue());
}

} // namespace

void PitchRollFilter::SetPitchValuePath(const QString& path) {
    Bind(m_pPitch, path);
}

void PitchRollFilter::SetRollValuePath(const QString& path) {
    Bind(m_pRoll, path);
}

void PitchRollFilter::SetPitchThresholdValuePath(const QString& path) {
    Bind(m_pPitchThreshold, path);
}

void PitchRollFilter::SetRollThresholdValuePath(const QString& path) {
    Bind(m_pRollThreshold, path);
}

void PitchRollFilter::SetZANDataValidValuePath(const QString& path) {
    Bind(m_pDataValid, path);
}

void PitchRollFilter::SetZANDataStateInfoValuePath(const QString& path) {
    Bind(m_pDataStateInfo, path);
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
    // Without unrolling the loop's own branch, not the store, sets the pace.
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
