#pragma once

#include "zancommon_export.h"

#include "zancommon/bearing.h"
#include "zancommon/driverrecords.h"
#include "zancommon/recordedbearing.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace KvZANCommon {

/// Gathers rows of bearings that were measured at the same moment, in the same mode, on the same frequency,
/// from the same platform, into one block in the units of the driver interface. The emitters of a super
/// resolution are a block, too, and so is a single row of a fixed frequency.
///
/// \code
/// if (!block.Add(row)) {
///     block.Deliver(callback);
///     block.Add(row);
/// }
/// \endcode
class ZANCOMMON_EXPORT RowBlock {
public:
    /// The longest block of a scan.
    static constexpr std::size_t MAX_BEARINGS = 60000;

    /// Adds a row; false when it does not belong to the block, or the block is full. An empty block takes any
    /// row.
    bool Add(const RecordedBearing& row);
    [[nodiscard]] bool IsEmpty() const { return !m_last; }
    void Clear();
    /// Gives the block, which is not empty, to a driver's callback of either kind, and empties it: as what it
    /// was measured as, or else as a scan, range 0 from channel 0 on.
    template <class Callback>
    void Deliver(Callback& callback) {
        StatusStruct status = GetStatus();
        if (m_first.emitter) {
            SuperResolutionStruct result{m_first.timeMs, m_first.frequency, m_bearings};
            callback.fillFFMSRBuffer(result, status);
        } else if (m_first.mode == EMODE_FFM) {
            callback.fillFFMBuffer(GetResult(), status, false);
        } else {
            unsigned long long time = m_first.timeMs;
            callback.fillScanBuffer(0, time, 0, static_cast<unsigned>(m_bearings.size()), m_bearings.data(),
                                    status);
        }
        Clear();
    }

    /// The first bearing of the block as the result of a fixed frequency.
    [[nodiscard]] FFMData GetResult() const;
    /// What the rows of the block have in common.
    [[nodiscard]] StatusStruct GetStatus() const;

private:
    RecordedBearing m_first;
    std::optional<RecordedBearing> m_last;
    std::vector<Bearing> m_bearings;
};

} // namespace KvZANCommon
