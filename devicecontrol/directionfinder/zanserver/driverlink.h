#pragma once

#include "zanserver_export.h"

#include "zanserver/driverreceiver.h"
#include "zanserver/driverthread.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <memory>

namespace ZANServer {

/// The link to a driver's device: opens it, and when it is lost, opens it again and again.
///
/// A device is lost when the driver closes the link or reports a fatal error. The next attempt follows after
/// a second, and each further one after twice as long, up to `LONGEST_DELAY`; that begins anew when the
/// device has been there for that long. A device is there again with the first bearings or the first position
/// that it delivers: many a server accepts each connection, and closes it at once. A recording is not opened
/// again: when the driver closes the link, it has ended. Belongs to the main thread, on which all signals are
/// emitted.
class ZANSERVER_EXPORT DriverLink final : public QObject {
    Q_OBJECT

public:
    enum class State {
        Closed,     ///< not opened, closed by `Close`, or a recording that has ended
        Connecting, ///< `Initialize` is being called
        Connected,  ///< the device is open: settings and modes can be called
        Lost,       ///< waits for the next attempt, if there is one
        GivenUp     ///< a call has not returned, or will never; nothing more will happen
    };
    Q_ENUM(State)

    enum class Kind { Device, Recording };

    static constexpr std::chrono::milliseconds FIRST_DELAY{1000};
    static constexpr std::chrono::milliseconds LONGEST_DELAY{30000};

    /// \param factory        makes the driver (`DriverThread`)
    /// \param address        of the device, in the driver's notation
    /// \param stationAddress that the driver is told when it asks for the address of the device
    /// \param firstDelay     after a loss; all delays are in proportion to it
    DriverLink(DriverThread::Factory factory, QString address, const QString& stationAddress,
               Kind kind = Kind::Device, std::chrono::milliseconds firstDelay = FIRST_DELAY,
               DriverThread::Timeout timeout = GetTimeout);
    DriverLink(const DriverLink&) = delete;
    DriverLink& operator=(const DriverLink&) = delete;
    /// Closes the link (`Close`). What connects to `GivenUp` closes it before, while it can still be
    /// notified.
    ~DriverLink() override;

    /// Opens the device. Once.
    void Open();
    /// Sets the device to standby, passes on what it has delivered until then, and destroys the driver;
    /// nothing arrives after that. No signal but those of the receiver is emitted, and `StateChanged` and
    /// `GivenUp` when the driver is given up meanwhile. Runs the event loop until the device stands by; takes
    /// no longer than `DriverThread::LONGEST_END`.
    void Close();

    [[nodiscard]] State GetState() const { return m_state; }
    /// Why the device is lost or the driver given up; empty while it is neither.
    [[nodiscard]] const QString& GetReason() const { return m_reason; }
    /// The driver's callback.
    [[nodiscard]] DriverReceiver& GetReceiver() const { return *m_receiver; }
    /// Carries out the calls. Call the driver only while it is connected.
    [[nodiscard]] DriverThread& GetThread() { return m_thread; }

Q_SIGNALS:
    /// `GetState` or `GetReason` has changed. Before the signal that tells what has happened.
    void StateChanged();
    /// The device is open, for the first time or again.
    void Connected();
    /// The device could not be opened, or is lost. Once until it is there again, whatever the attempts say.
    void Lost(const QString& reason);
    /// The device that was lost has delivered something.
    void ThereAgain();
    /// The recording has been read.
    void Ended();
    /// A call has not returned in time, or will never return.
    void GivenUp(const QString& reason);
    /// A call other than `Initialize` has thrown.
    void CallFailed(const QString& reason);

private:
    ZANSERVER_NO_EXPORT void Connect();
    ZANSERVER_NO_EXPORT void SetState(State state, const QString& reason);
    ZANSERVER_NO_EXPORT void OnInitialized(const QString& failure);
    ZANSERVER_NO_EXPORT void OnFailed(DriverCall kind, const QString& reason);
    ZANSERVER_NO_EXPORT void OnGivenUp(const QString& reason);
    ZANSERVER_NO_EXPORT void OnLinkClosed();
    ZANSERVER_NO_EXPORT void OnDelivered();
    ZANSERVER_NO_EXPORT void TellIfThereAgain();
    ZANSERVER_NO_EXPORT void Lose(const QString& reason);
    [[nodiscard]] ZANSERVER_NO_EXPORT std::chrono::milliseconds GetLongestDelay() const;

    const QString m_address;
    const Kind m_kind;
    const std::chrono::milliseconds m_firstDelay;
    std::chrono::milliseconds m_delay; // before the next attempt
    const std::shared_ptr<DriverReceiver> m_receiver;
    DriverThread m_thread;
    bool m_isClosed = false; // by `Close`
    QTimer m_nextAttempt;
    QElapsedTimer m_connected;
    State m_state = State::Closed;
    QString m_reason;
    bool m_isLossTold = false;
    bool m_hasDelivered = false; // since it was opened
    bool m_isClosing = false;    // while the driver is waited for
    bool m_isOpening = false;    // else what the driver reports is of the connection before
    bool m_hasClosedWhileConnecting = false;
};

} // namespace ZANServer
