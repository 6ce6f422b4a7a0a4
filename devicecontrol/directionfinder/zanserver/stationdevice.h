#pragma once

#include "zanserver_export.h"

#include "valueframework/valuetypes.h"
#include "zancommon/commandprotocol.h"
#include "zanserver/commandlogvalues.h"
#include "zanserver/devicecontrol.h"
#include "zanserver/driverchoice.h"
#include "zanserver/driverlibrary.h"
#include "zanserver/driverlink.h"
#include "zanserver/station.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>

namespace ZANServer {

class DeliveryCheck;

/// The live device of a station: its driver, what that delivers, its control, and the log of its commands.
///
/// Bearings go to the station, bursts of them at once to its output, and what the operator wishes goes to the
/// device (`DeviceControl`). The tree tells the state of the link (`g_vdDevState`, a `DriverLink::State`, and
/// why in `g_vdDevStateInfo`). While the device is lost, nothing that it has measured is current. A recording
/// is a device, too: it takes no wishes, and ends when it has been read. Main thread.
class ZANSERVER_EXPORT StationDevice final : public QObject {
    Q_OBJECT

public:
    /// \param station after `StartOutput`; must outlive this
    /// \param driver  whose component it is; not null
    StationDevice(Station& station, const DriverChoice& choice, DriverComponentPtr driver);
    StationDevice(const StationDevice&) = delete;
    StationDevice& operator=(const StationDevice&) = delete;
    ~StationDevice() override;

    /// A test command that the driver gets each time that its device has been opened, before anything else.
    void SetFirstCommand(const QString& command) { m_firstCommand = command; }
    /// Processes no block that was measured so long or longer after the first one, and tells when there is
    /// one.
    void MeasureFor(std::chrono::milliseconds duration) { m_duration = duration; }
    /// Opens the device.
    void Open() { m_link.Open(); }
    /// Ends the measurement; what has been delivered until then is processed.
    void Close();

    [[nodiscard]] DriverLink& GetLink() { return m_link; }
    /// Why the log of the commands cannot be written; empty when it can.
    [[nodiscard]] const QString& GetLogProblem() const { return m_logProblem; }

Q_SIGNALS:
    /// A block is about to be processed.
    void BlockReceived(const BearingBlock& block);
    /// The time of `MeasureFor` is over. Once.
    void DurationIsOver();
    /// The log of the commands cannot be written. Once.
    void LogFailed(const QString& reason);
    /// The driver has refused something, or the station what the driver has delivered; why.
    void Refused(const QString& reason);

private:
    ZANSERVER_NO_EXPORT void TakeBlock(BearingBlock& block);
    [[nodiscard]] ZANSERVER_NO_EXPORT bool IsWithinDuration(quint64 time);
    /// NaN: not known.
    [[nodiscard]] ZANSERVER_NO_EXPORT bool IsCurrent() const;
    ZANSERVER_NO_EXPORT void OnConnected();
    ZANSERVER_NO_EXPORT void GiveFirstCommand();
    ZANSERVER_NO_EXPORT void LogCommand(const QString& command);
    ZANSERVER_NO_EXPORT void ReportLogProblem();
    ZANSERVER_NO_EXPORT void PublishState();

    Station& m_station;
    CommandProtocol m_commandLog;
    QString m_logProblem;
    QString m_firstCommand;
    std::optional<std::chrono::milliseconds> m_duration;
    std::optional<quint64> m_end; // of the duration, in the time of the bearings
    bool m_isOver = false;
    std::optional<DFDataOutput::Burst> m_burst;
    ValueInt* m_pState;
    ValueString* m_pStateInfo;
    CommandLogValues m_commandLogValues;
    const std::unique_ptr<DeliveryCheck> m_check;
    DriverLink m_link;
    std::optional<DeviceControl> m_control; // not of a recording; the first to go
};

} // namespace ZANServer
