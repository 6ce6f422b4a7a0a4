#pragma once

#include "valueframework/valueptr.h"
#include "valueframework/valuetypes.h"
#include "zancommon_export.h"

#include <QString>

struct Bearing;

namespace KvZANCommon {

/// Rejects bearings while the vehicle or ship that carries the antenna is tilted beyond its pitch or roll
/// limit, and publishes that in the value tree.
///
/// The inputs and the status values are found by their paths (bound). A path without a value, or with one of
/// another type, leaves the member unbound; a call for a bound member does nothing. A member is unbound again
/// when the tree destroys its value. The values belong to the tree; copies of the filter use the same ones.
/// Angles and thresholds are `ValueNumericDouble`, the flag is a `ValueBool`, the text a `ValueString`.
///
/// All operations belong to the thread of the value tree.
class ZANCOMMON_EXPORT PitchRollFilter {
public:
    /// Angles and thresholds are compared without conversion: both must be in the same unit, which may be
    /// any.
    void SetPitchValuePath(const QString& path);
    void SetRollValuePath(const QString& path);
    void SetPitchThresholdValuePath(const QString& path);
    void SetRollThresholdValuePath(const QString& path);
    /// The flag that is set to false when bearings are rejected.
    void SetZANDataValidValuePath(const QString& path);
    /// The text that says why bearings are rejected.
    void SetZANDataStateInfoValuePath(const QString& path);

    /// Whether pitch or roll has reached its threshold. The signs of angle and threshold are ignored. A
    /// threshold is never reached while it or its angle is unbound or NaN.
    [[nodiscard]] bool IsFilterConditionMet() const;

    /// Sets the quality of `count` bearings to 0, the data-valid value to false, and the state information to
    /// the reason. It does not check `IsFilterConditionMet`: the caller does.
    /// \param bearings may be null when `count` is 0.
    void Apply(unsigned count, Bearing* bearings) const;
    /// The same for one result; does nothing when the result holds no azimuth.
    void Apply(BearingResult& result) const;

private:
    [[nodiscard]] ZANCOMMON_NO_EXPORT bool PitchThresholdExceeded() const;
    [[nodiscard]] ZANCOMMON_NO_EXPORT bool RollThresholdExceeded() const;
    ZANCOMMON_NO_EXPORT void ReportRejection() const;

    ZANPlatform::ValuePtr<ValueNumericDouble> m_pPitch;
    ZANPlatform::ValuePtr<ValueNumericDouble> m_pRoll;
    ZANPlatform::ValuePtr<ValueNumericDouble> m_pPitchThreshold;
    ZANPlatform::ValuePtr<ValueNumericDouble> m_pRollThreshold;
    ZANPlatform::ValuePtr<ValueBool> m_pDataValid;
    ZANPlatform::ValuePtr<ValueString> m_pDataStateInfo;
};

} // namespace KvZANCommon
