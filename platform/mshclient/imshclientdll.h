#pragma once

#include "tolmappstartup/idllinstance.h"
#include "zanplatform_export.h"

#include <QString>

class QToolBar;

/// The client of the message hub, by which applications share tuning parameters: a component library
/// ("MshClient.dll") that is loaded at run time.
///
/// The receiver's client sets values of the tree from what the hub sends; the sender's client offers values
/// of the tree to the hub. Values are named by their full paths in the value tree and need not exist; a tag
/// names a parameter at the hub. No operation reports a failure to its caller. Everything is called on the
/// application's main thread, before `Start` unless said otherwise.
class ZANPLATFORM_EXPORT IMshClientDll : public IDllInstance {
public:
    ~IMshClientDll() override;

    // The order of the operations is part of the interface.

    /// Couples a parameter to a value.
    /// \param algorithm how a received value is adapted to the tree's; empty: it is taken as it is
    virtual void MapValue(const QString& tag, const QString& path, const QString& algorithm) = 0;
    /// Names the value that a sender hands over (Hz).
    virtual void SetHandoverValue(const QString& path) = 0;
    /// Names the value by which a sender hands over to a pool of receivers.
    virtual void SetHandoverPoolValue(const QString& path) = 0;
    /// Couples a parameter to a selection.
    virtual void MapSelectionValue(const QString& tag, const QString& path) = 0;
    /// Puts the client's controls into a tool bar, which is not owned and outlives the client; null when the
    /// application has none. The position is 0 in every use.
    virtual void AttachToolBar(QToolBar* toolBar, int position) = 0;
    /// True: receiver, false: sender.
    virtual void SetReceiver(bool isReceiver) = 0;
    /// Names the kind of the application to the hub ("KORVA_ZAN").
    virtual void SetApplicationId(const QString& id) = 0;
    /// The range that the device receives, "lowest,highest" in Hz without a fraction. Also after `Start`.
    virtual void SetFrequencyRange(const QString& range) = 0;
    /// The address of the device, as it is in the tree; empty when there is none. Receivers only.
    virtual void SetDeviceAddress(const QString& address) = 0;
    /// Where the hub is: host name or address, and port, as they are in the settings.
    virtual void SetCentralAddress(const QString& address, int port) = 0;
    /// The clients to couple to automatically, as they are in the settings; empty for none.
    virtual void SetAutoCoupleTargets(const QString& targets) = 0;
    /// Joins the hub.
    virtual void Start() = 0;
    /// The name of this client at the hub.
    virtual void SetClientName(const QString& name) = 0;
};
