#pragma once

#include "zanserver_export.h"

#include "kwbase/observable.h"
#include "zanserver/devicestatus.h"
#include "zanserver/driverreceiver.h"
#include "zanserver/driverthread.h"

#include <QString>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

namespace ZANServer {

class DeviceCommands;

/// Carries out at the device what an operator wishes: the values below "/ZANServer/Par", the operation mode,
/// the choices in the antenna nodes, and the commands of the device node.
///
/// When a device is connected, it is asked what it is (`DeviceProperties`), and then gets all wishes, one
/// after the other: time from GPS, converters, antennas, attenuation, gain control, frequency, average time,
/// scan averaging, hold times, number of emitters, DF and demodulation settings, scan ranges, volume, and at
/// last the operation mode. From then on it gets each wish that changes.
///
/// - A wish is made valid first, by the characteristics; the value holds what is valid. A wish that the
///   device cannot do, or that its driver refuses, is put back to what the device has: what the driver says
///   it has, otherwise what was carried out last. When neither is known, or the value cannot hold it, the
///   value is marked as not measured until something is carried out. What was asked and what is there is told
///   at "/ZANServer/Res/CtlR" (`WishReport`). The refused wish is not tried again until it changes, or the
///   device is connected again.
/// - Of one operation of the driver at most one call is under way, and none follows sooner than the setting
///   "Control_Interval" (50 ms). What is wished meanwhile waits, and only the last of it is sent.
/// - Frequency, bandwidth, demodulation, mode, ranges, squelch and volume are kept in the settings of the
///   station as they were last carried out, and are what is wished first after a start.
///
/// While it is connected, its compasses are asked for every second, or thrice within the age limit of the
/// settings ("Gpsd/MaxAge") when that is shorter; a reading that is older is not measured.
///
/// Needs the branches of device and server in the tree, and characteristics that are connected with them; all
/// of them must outlive it. Belongs to the main thread.
class ZANSERVER_EXPORT DeviceControl final : public IObserver {
public:
    /// Of one operation, when the settings do not say otherwise.
    static constexpr int DEFAULT_INTERVAL = 50; // ms

    struct Options {
        /// False: what is carried out is not kept (the settings hold errors that the operator is to correct).
        bool keepsWishes = true;
        /// The time by which calls are paced.
        std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
    };

    /// Restores what was carried out last into the tree.
    /// \param thread  must outlive this object
    /// \param station the address by which the settings of the station are found
    DeviceControl(DriverThread& thread, QString station, Options options);
    DeviceControl(DriverThread& thread, QString station)
        : DeviceControl(thread, std::move(station), Options()) {}
    DeviceControl(const DeviceControl&) = delete;
    DeviceControl& operator=(const DeviceControl&) = delete;
    /// What waits is not sent any more; what is under way is not waited for.
    ~DeviceControl() override;

    /// The device has been opened, for the first time or again.
    void OnConnected();
    /// The device is gone: nothing is sent until it is connected again. What it has told is not measured.
    void OnLost();

    /// The frequency (Hz) of a bearing of a block; NaN while that is not known. In a scan it is that of the
    /// channel of the ranges that the device has, in a wideband block that of the channel at this place
    /// around the receive frequency, else the receive frequency. While it is not known which ranges the
    /// device has (they are being set, or were refused in part), a block of several channels has no
    /// frequencies.
    ///
    /// \param bearing the place in the block
    [[nodiscard]] double GetFrequency(const BearingBlock& block, std::size_t bearing) const;

    [[nodiscard]] DeviceStatus& GetStatus();
    [[nodiscard]] DeviceCommands& GetCommands();

    /// Sends what waits and is due. The event loop does it as well.
    void SendDue();

    void Update(Observable* subject, TChangeCode code) override;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace ZANServer
