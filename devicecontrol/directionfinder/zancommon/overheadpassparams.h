#pragma once

#include "kwbase/observable.h"
#include "zancommon_export.h"

namespace KvZANCommon {

/// The parameters of the overhead-pass filter: the elevation from which bearings are rejected, and whether
/// the filter is on.
///
/// Each setter that changes something notifies the observers, except the originator, with
/// `TChangeCode::Changed`. They may destroy the parameters meanwhile. A copy takes over the content and, as
/// with every `Observable`, the observers; an assignment notifies nobody.
class ZANCOMMON_EXPORT OverheadPassParams : public Observable {
public:
    static constexpr int DEFAULT_THRESHOLD = 600; ///< tenths of a degree
    static constexpr bool DEFAULT_VALID = false;

    OverheadPassParams() = default;
    OverheadPassParams(const OverheadPassParams&) = default;
    OverheadPassParams& operator=(const OverheadPassParams&) = default;
    ~OverheadPassParams() override;

    /// Elevation in tenths of a degree; any integer is accepted.
    [[nodiscard]] int GetThreshold() const { return m_threshold; }
    void SetThreshold(int threshold, IObserver* originator = nullptr);

    /// Whether the filter is switched on.
    [[nodiscard]] bool IsValid() const { return m_isValid; }
    void SetValid(bool isValid, IObserver* originator = nullptr);

private:
    int m_threshold = DEFAULT_THRESHOLD;
    bool m_isValid = DEFAULT_VALID;
};

} // namespace KvZANCommon
