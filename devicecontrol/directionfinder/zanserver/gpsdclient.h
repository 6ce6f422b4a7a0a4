#pragma once

#include "connections/hostlookup.h"
#include "zanserver/gpsdreport.h"
#include "zanserver/gpsdsettings.h"

#include <QString>
#include <QStringList>
#include <QTcpSocket>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>

namespace ZANServer {

/// The connection to gpsd. Connects in the background, asks for all reports, and hands them over; a
/// connection that is refused, lost, silent or not one of gpsd is sought again with growing pauses until it
/// is stopped. Nothing of it blocks. Belongs to a thread with an event loop, on which it calls back.
class GpsdClient {
public:
    /// The values are those of the state in the tree.
    enum class EState {
        OFF = 0,        ///< not started
        CONNECTING = 1, ///< there is no answer yet
        CONNECTED = 2,  ///< gpsd has answered
        WAITING = 3     ///< failed; tries again after a pause
    };

    struct Timing {
        std::chrono::milliseconds firstPause{1000}; ///< each further one is twice as long ...
        std::chrono::milliseconds longestPause{30000};
        /// How long gpsd may take to accept, to greet, and to answer. One that has no receiver sends nothing
        /// by itself; after this time it is asked whether it is still there.
        std::chrono::milliseconds answer{10000};
    };

    static constexpr qint64 LONGEST_LINE = 32768; ///< bytes; a report of 140 satellites has some 14,000

    /// Does not connect yet.
    /// \param report is called with each report of gpsd
    /// \param stateChanged is called when state or last failure has changed; neither may destroy the client
    GpsdClient(GpsdAddress address, const Timing& timing, std::function<void(const GpsdReport&)> report,
               std::function<void()> stateChanged);
    GpsdClient(const GpsdClient&) = delete;
    GpsdClient& operator=(const GpsdClient&) = delete;
    ~GpsdClient();

    /// Connects, and goes on doing so. Nothing if it was started already.
    void Start();
    /// Ends the connection at once.
    void Stop();

    [[nodiscard]] EState GetState() const { return m_state; }
    /// The last failure, which a later success leaves; empty: there was none since the client was started.
    [[nodiscard]] const QString& GetLastFailure() const { return m_lastFailure; }

private:
    void Connect();
    void ConnectToNext();
    void OnSocketError();
    void ReadLines();
    void Take(const QByteArray& line);
    void NoteThatItIsThere();
    void OnSilence();
    void Fail(const QString& reason);
    void SetState(EState state);

    const GpsdAddress m_address;
    const Timing m_timing;
    const std::function<void(const GpsdReport&)> m_report;
    const std::function<void()> m_stateChanged;
    EState m_state = EState::OFF;
    QString m_lastFailure;
    std::chrono::milliseconds m_pause;
    bool m_isFailureTold = false; // in the trace, once until gpsd is there again
    bool m_isAsked = false;       // whether gpsd is still there
    std::optional<HostLookup> m_lookup;
    QStringList m_addresses; // of the host, which are still to be tried
    QTimer m_retry;
    QTimer m_silence;
    QTcpSocket m_socket; // last: what it signals when it is destroyed reaches nothing
};

} // namespace ZANServer
