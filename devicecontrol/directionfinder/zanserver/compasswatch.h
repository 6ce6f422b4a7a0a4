#pragma once

#include "zancommon/idriver.h"
#include "zanserver/controlclock.h"
#include "zanserver/currentreading.h"
#include "zanserver/devicereading.h"
#include "zanserver/drivererrands.h"

#include <QTimer>

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

namespace ZANServer {

/// Degrees that a compass of the device shows; nothing when the driver does not say.
std::optional<double> ReadCompass(KvZANCommon::IDriver& driver, unsigned long compass);

/// Keeps the readings of a device's compasses in the antenna nodes current: a driver tells them only when it
/// is asked.
///
/// Each compass is asked for, one after the other, and again `INTERVAL` after the last answer, or a third of
/// the age limit when that is shorter. No more than one question is under way: while the driver is busy, none
/// piles up. A reading that is older than the age limit is not measured. A compass whose reading throws is
/// not asked for again until the device is connected again. Belongs to the main thread; must outlive the
/// errands.
class CompassWatch final {
public:
    using Milliseconds = std::chrono::milliseconds;
    static constexpr Milliseconds INTERVAL{1000};

    CompassWatch(DriverErrands& errands, ControlClock now, Milliseconds maxAge);
    CompassWatch(const CompassWatch&) = delete;
    CompassWatch& operator=(const CompassWatch&) = delete;
    ~CompassWatch() = default;

    /// The device that is connected has these compasses, with these first readings.
    void Start(const std::vector<DeviceReading::Compass>& compasses);
    /// There is no device, or it is being asked what it is.
    void Stop();
    /// Asks if it is time to, and shows what is current. The event loop does it as well.
    void WatchDue();

private:
    struct Compass {
        unsigned long handle = 0;
        CurrentReading<double> reading;
    };

    void Ask(std::size_t number);
    void Show();
    [[nodiscard]] Milliseconds Now() const;

    DriverErrands& m_errands;
    const ControlClock m_now;
    const Milliseconds m_maxAge;
    const Milliseconds m_interval;
    std::vector<Compass> m_compasses;
    quint64 m_device = 0; ///< counts them
    bool m_isUnderWay = false;
    Milliseconds m_nextRound{};
    QTimer m_timer;
};

} // namespace ZANServer
