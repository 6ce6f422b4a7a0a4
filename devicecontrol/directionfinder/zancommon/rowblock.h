#pragma once

#include "zancommon_export.h"

#include "zancommon/bearing.h"
#include "zancommon/driverrecords.h"
#include "zancommon/recordedbearing.h"

#include <cstddef>
#include <vector>

namespace KvZANCommon {

/// Gathers rows of bearings that were measured at the same moment, on the same frequency, from the same
/// platform, into one block in the units of the driver interface.
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
    [[nodiscard]] bool IsEmpty() const { return m_bearings.empty(); }
    void Clear() { m_bearings.clear(); }
    /// Gives the block to a driver's callback of either kind as a scan, range 0 from channel 0 on, and
    /// empties it.
    template <class Callback>
    void Deliver(Callback& callback) {
        unsigned long long time = m_first.timeMs;
        StatusStruct status = GetStatus();
        callback.fillScanBuffer(0, time, 0, static_cast<unsigned>(m_bearings.size()), m_bearings.data(),
                                status);
        m_bearings.clear();
    }

private:
    [[nodiscard]] StatusStruct GetStatus() const;

    RecordedBearing m_first;
    std::vector<Bearing> m_bearings;
};

} // namespace KvZANCommon
