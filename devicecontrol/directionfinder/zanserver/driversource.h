#pragma once

#include "zanserver/currentreading.h"
#include "zanserver/driverreceiver.h"
#include "zanserver/stationattitude.h"
#include "zanserver/stationposition.h"

#include <QElapsedTimer>
#include <QTimer>

#include <chrono>
#include <optional>

namespace ZANServer {

/// Position, heading, pitch and roll from the driver: with its blocks of bearings, and positions by
/// themselves. Hands over what is current; what no longer comes is handed over as not measured once it is
/// older than the age limit, whether or not further bearings come.
///
/// Age counts from the arrival, on the monotonic clock. Belongs to the thread of the tree, which needs an
/// event loop.
class DriverSource final {
public:
    /// \param position, attitude must outlive this object
    /// \param maxAge   nothing: all of it stays current until the next block. So it is with a recording,
    /// whose
    ///                 positions belong to its rows, however slowly these are replayed
    DriverSource(StationPosition& position, StationAttitude& attitude,
                 const std::optional<std::chrono::milliseconds>& maxAge);
    DriverSource(const DriverSource&) = delete;
    DriverSource& operator=(const DriverSource&) = delete;
    ~DriverSource() = default;

    /// Takes what comes with a block. Its position, if it has one, replaces the fix before.
    void TakeStatus(const KvZANCommon::StatusStruct& status, quint64 time);
    /// Takes a position that comes by itself. It replaces that of the block before. One whose time (0: none)
    /// stands still is not a new one.
    void TakeFix(const PositionFix& fix);
    /// Takes a position from the recording of a station (`StationPosition::SetRecorded`). From now on the
    /// attitude of the blocks is that of the recording, too.
    void TakeRecorded(const PositionFix& fix);
    /// The device is lost: nothing is measured.
    void Forget();

private:
    using Milliseconds = std::chrono::milliseconds;

    struct Status {
        StationAttitude::Measurement attitude;
        StationPosition::Measurement position;
    };

    void Take(const PositionFix& fix);
    void Show();
    [[nodiscard]] Milliseconds Now() const { return Milliseconds(m_clock.elapsed()); }

    StationPosition& m_position;
    StationAttitude& m_attitude;
    const bool m_ages;
    CurrentReading<Status> m_status;
    CurrentReading<StationPosition::Measurement> m_fix; // without the altitude
    bool m_isFixLast = true;                            // and not a block with a position
    bool m_isRecord = false;                            // of a station
    QElapsedTimer m_clock;
    QTimer m_ageing;
};

} // namespace ZANServer
