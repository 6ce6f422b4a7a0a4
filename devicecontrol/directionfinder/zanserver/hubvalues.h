#pragma once

#include "zanserver_export.h"

#include "kwbase/observable.h"
#include "valueframework/valuetypes.h"
#include "zancommon/mshmanager.h"

#include <QObject>
#include <QString>
#include <QTimer>

namespace ZANServer {

/// The station as a receiver of the message hub, as values of the tree below `/ZANServer/Out/Hub`: whether it
/// joins, where the hub is, its name there, the clients that it couples to, and what has failed.
///
/// What is set there takes effect at once (the client is started again) and is kept in the settings, from
/// which the station joins when it starts. A text that cannot be used goes back, and then the reason is in
/// `HubRefused`, until the next change. `HubState` says whether the hub's client has been started; whether it
/// reaches the hub is the client's own matter. The frequency range for the hub follows the device. Uses the
/// values below "/ZANServer", which must outlive it, and needs an event loop; main thread.
class ZANSERVER_EXPORT HubValues final : public QObject, public IObserver {
public:
    enum class State : int {
        Off = 0,
        Started = 1,
        Failed = 2, ///< there is no client of the hub
    };
    static constexpr int PUBLISH_MS = 1000; ///< between two looks at the frequency range of the device
    /// In bytes: of the hub's address and the client's name, and of the targets.
    static constexpr qsizetype LONGEST_NAME = 253;
    static constexpr qsizetype LONGEST_TARGETS = 4096;

    /// Joins the hub when the settings say so.
    explicit HubValues(int publishMs = PUBLISH_MS);
    HubValues(const HubValues&) = delete;
    HubValues& operator=(const HubValues&) = delete;
    /// Leaves the hub.
    ~HubValues() override = default;

    /// Why the station has not joined although it shall; empty otherwise.
    [[nodiscard]] const QString& GetProblem() const { return m_problem; }

    /// Publishes the frequency range of the device for the hub's client, at `/ZANCONTROL`.
    static void PublishRange();
    /// Why a client could not join just now, as a text for the operator.
    [[nodiscard]] static QString DescribeFailure();

    void Update(Observable* subject, TChangeCode code) override;

private:
    struct Settings {
        bool on = false;
        QString address;
        int port = 0;
        QString clientName;
        QString targets;

        bool operator==(const Settings&) const = default;
    };

    ZANSERVER_NO_EXPORT void ReadSettings();
    ZANSERVER_NO_EXPORT void StoreSettings() const;
    [[nodiscard]] ZANSERVER_NO_EXPORT QString CheckChange(const Settings& wished) const;
    ZANSERVER_NO_EXPORT void Show();
    ZANSERVER_NO_EXPORT void Apply();

    ValueBool* const m_enabled;
    ValueString* const m_address;
    ValueNumericInt* const m_port;
    ValueString* const m_clientName;
    ValueString* const m_targets;
    ValueString* const m_refused;
    ValueSelection* const m_state;
    ValueString* const m_lastError;
    ValueTimeStamp* const m_lastErrorTime;

    Settings m_settings;
    QString m_problem;
    MshManager m_manager;
    QTimer m_timer; // while the station is a receiver
};

} // namespace ZANServer
