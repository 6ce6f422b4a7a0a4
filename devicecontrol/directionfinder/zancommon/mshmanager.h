#pragma once

#include "kwbase/observable.h"
#include "valueframework/valueptr.h"
#include "valueframework/valuetypes.h"
#include "zancommon_export.h"

#include <QString>

class IDllInstance;
class IMshClientDll;
class QToolBar;

/// Couples the application to the message hub: as a receiver, whose values the hub sets, as a sender, whose
/// values are offered to the hub, or as both.
///
/// The hub's client is a component that is loaded by name ("MshClient.dll", see `CfgCenter`). Without it the
/// application does not join, and `CfgCenter::GetLastError` says why (or the trace, when the component is not
/// a client of the hub). The address of the hub and the application's name there are in the application's
/// settings: "MshCentralAddress" (127.0.0.1 by default), "MshCentralPort" (4500), "MshClientName" and
/// "AutoCoupleTargets". A receiver sends the frequency range of the device (Hz) and its changes to the hub.
/// Belongs to the application's main thread.
class ZANCOMMON_EXPORT MshManager : public IObserver {
public:
    MshManager() = default;
    /// A copy uses the clients of its source; only one of the two may destroy them.
    MshManager(const MshManager&) = default;
    MshManager& operator=(const MshManager&) = default;
    /// Leaves the hub in both roles.
    ~MshManager() override;

    /// Called when a value of the tree has changed or goes away.
    void Update(Observable* subject, TChangeCode code) override;

    /// Joins the hub as a receiver; a receiver that exists already is replaced.
    /// \param name the client's name when the settings hold none; "ZAN" when both are empty
    void CreateMshReceiver(const QString& name);
    /// As `CreateMshReceiver`, when the settings say so.
    /// \param cfgKey key of the flag, which is written with the default when it is missing or unreadable
    void CreateMshReceiverIfConfigured(const QString& name, const QString& cfgKey, bool defaultValue);
    /// Joins the hub as a sender; a sender that exists already is replaced.
    /// \param name    as for `CreateMshReceiver`
    /// \param toolBar gets the client's controls; not owned, must outlive the sender; null for none
    void CreateMshSender(const QString& name, QToolBar* toolBar);
    /// As `CreateMshSender`, when the settings say so (see `CreateMshReceiverIfConfigured`).
    void CreateMshSenderIfConfigured(const QString& name, QToolBar* toolBar, const QString& cfgKey,
                                     bool defaultValue);
    /// Leaves the hub as a receiver; does nothing when it is not one.
    void DestroyMshReceiver();
    /// Leaves the hub as a sender; does nothing when it is not one.
    void DestroyMshSender();

    [[nodiscard]] bool IsReceiver() const { return m_pReceiver != nullptr; }
    [[nodiscard]] bool IsSender() const { return m_pSender != nullptr; }

private:
    ZANCOMMON_NO_EXPORT static bool GetOrCreateBooleanCfg(const QString& key, bool defaultValue);
    ZANCOMMON_NO_EXPORT static void CommonMshInit(IMshClientDll* pMshClientDll, const QString& name);
    ZANCOMMON_NO_EXPORT void UpdateMshReceiverRange();

    IDllInstance* m_pSender = nullptr;                         // made and destroyed by CfgCenter
    IMshClientDll* m_pReceiver = nullptr;                      // made and destroyed by CfgCenter
    ZANPlatform::ValuePtr<ValueNumericDouble> m_pMinFrequency; // Hz
    ZANPlatform::ValuePtr<ValueNumericDouble> m_pMaxFrequency; // Hz
};
