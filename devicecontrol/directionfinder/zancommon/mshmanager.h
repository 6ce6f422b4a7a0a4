#pragma once

#include "kwbase/observable.h"
#include "valueframework/valuetypes.h"
#include "zancommon_export.h"

#include <QString>

class IDllInstance;
class IMshClientDll;
class QToolBar;

/// Couples the application to the message hub: as a receiver, whose values the hub sets, and as a sender,
/// whose values are offered to the hub. Both at once is possible.
///
/// The hub's client is a component that is loaded by name ("MshClient.dll", see `CfgCenter`). Without it the
/// manager does not have the role, and `CfgCenter::GetLastError` says why. Where the hub is, and under which
/// name the application joins, stands in the application's settings: "MshCentralAddress", "MshCentralPort",
/// "MshClientName" and "AutoCoupleTargets". Belongs to the application's main thread.
class ZANCOMMON_EXPORT MshManager : public IObserver {
public:
    MshManager() = default;
    /// A copy refers to the clients of its source; only one of the two may destroy them.
    MshManager(const MshManager&) = default;
    MshManager& operator=(const MshManager&) = default;
    /// Leaves the hub in both roles.
    ~MshManager() override;

    /// Called by the values of the tree.
    void Update(Observable* subject, TChangeCode code) override;

    /// Joins the hub as a receiver, anew when it is one already.
    /// \param name the client's name when the settings hold none; "ZAN" when both are empty
    void CreateMshReceiver(const QString& name);
    /// As `CreateMshReceiver`, when the settings say so.
    /// \param cfgKey key of the flag, which is written with the default when it is missing
    void CreateMshReceiverIfConfigured(const QString& name, const QString& cfgKey, bool defaultValue);
    /// Joins the hub as a sender, anew when it is one already.
    /// \param toolBar takes the client's controls; not owned, and outlives the sender
    void CreateMshSender(const QString& name, QToolBar* toolBar);
    void CreateMshSenderIfConfigured(const QString& name, QToolBar* toolBar, const QString& cfgKey,
                                     bool defaultValue);
    void DestroyMshReceiver();
    void DestroyMshSender();

    [[nodiscard]] bool IsReceiver() const { return m_pReceiver != nullptr; }
    [[nodiscard]] bool IsSender() const { return m_pSender != nullptr; }

private:
    static bool GetOrCreateBooleanCfg(const QString& key, bool defaultValue);
    static void CommonMshInit(IMshClientDll* pMshClientDll, const QString& name);
    void UpdateMshReceiverRange();
    void Observe(ValueNumericDouble*& member, const QString& path);
    void Forget(ValueNumericDouble*& member);

    IDllInstance* m_pSender = nullptr;             // made and destroyed by CfgCenter
    IMshClientDll* m_pReceiver = nullptr;          // made and destroyed by CfgCenter
    ValueNumericDouble* m_pMinFrequency = nullptr; // Hz; owned by the tree
    ValueNumericDouble* m_pMaxFrequency = nullptr; // Hz; owned by the tree
};
