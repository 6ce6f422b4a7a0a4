#pragma once

#include "valueframework/valueptr.h"
#include "valueframework/valuetypes.h"
#include "zancommon_export.h"

#include <QString>

struct Bearing;

namespace KvZANCommon {

/// Rejects bearings while the platform that carries the antenna is tilted beyond its pitch or roll limit, and
/// says so in the value tree.
///
/// The inputs and the status values are bound by path. The first binding that succeeds holds: a path that
/// names no value, or one of another type, leaves the member unbound, and a call for a bound member does
/// nothing. A member whose value the tree has destroyed is unbound again. The values belong to the tree;
/// copies of the filter are bound to the same ones. Angles and thresholds are `ValueNumericDouble`, the flag
/// is a `ValueBool`, the text a `ValueString`.
///
/// All operations belong to the thread of the value tree.
class ZANCOMMON_EXPORT PitchRollFilter {
public:
    /// Angles and their thresholds are compared as they stand: any unit that both share will do.
    void SetPitchValuePath(const QString& path);
    void SetRollValuePath(const QString& path);
    void SetPitchThresholdValuePath(const QString& path);
    void SetRollThresholdValuePath(const QString& path);
    /// The flag that becomes false when bearings are rejected.
    void SetZANDataValidValuePath(const QString& path);
    /// The text that says why bearings are rejected.
    void SetZANDataStateInfoValuePath(const QString& path);

    /// Whether pitch or roll has reached its threshold. Signs do not count, neither that of the angle nor
    /// that of the threshold. A limit is not exceeded while its angle or its threshold is unbound or not a
    /// number.
    [[nodiscard]] bool IsFilterConditionMet() const;

    /// Sets the quality of `count` bearings to 0, the data-valid value to false, and the state information to
    /// the reason. It does not ask `IsFilterConditionMet`: the caller does.
    /// \param bearings may be null when `count` is 0.
    void Apply(unsigned count, Bearing* bearings) const;
    /// The same for one result; nothing at all when the result holds no azimuth.
    void Apply(BearingResult& result) const;

private:
    [[nodiscard]] bool PitchThresholdExceeded() const;
    [[nodiscard]] bool RollThresholdExceeded() const;
    void ReportRejection() const;

    ZANPlatform::ValuePtr<ValueNumericDouble> m_pPitch;
    ZANPlatform::ValuePtr<ValueNumericDouble> m_pRoll;
    ZANPlatform::ValuePtr<ValueNumericDouble> m_pPitchThreshold;
    ZANPlatform::ValuePtr<ValueNumericDouble> m_pRollThreshold;
    ZANPlatform::ValuePtr<ValueBool> m_pDataValid;
    ZANPlatform::ValuePtr<ValueString> m_pDataStateInfo;
};

} // namespace KvZANCommon
