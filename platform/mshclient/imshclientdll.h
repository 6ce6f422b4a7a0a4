#pragma once

#include "tolmappstartup/idllinstance.h"
#include "zanplatform_export.h"

#include <QString>

class QToolBar;

/// The client of the message hub, by which applications share tuning parameters: a component library
/// ("MshClient.dll") that is loaded at run time.
///
/// The receiver's client sets values of the tree from what the hub sends; the sender's client offers values
/// of the tree to the hub. Values are named by their paths in the value tree; a tag names a parameter at the
/// hub. Everything is called on the application's main thread, before `Start` unless said otherwise.
class ZANPLATFORM_EXPORT IMshClientDll : public IDllInstance {
public:
    ~IMshClientDll() override;

    // The order of the operations is part of the interface.

    /// Couples a parameter to a value.
    /// \param algorithm how a received value is fitted to the tree's; empty: as it is
    virtual void MapValue(const QString& tag, const QString& path, const QString& algorithm) = 0;
    /// Names the value that a sender hands over (Hz).
    virtual void SetHandoverValue(const QString& path) = 0;
    /// Names the value by which a sender hands over to a pool of receivers.
    virtual void SetHandoverPoolValue(const QString& path) = 0;
    /// Couples a parameter to a selection.
    virtual void MapSelectionValue(const QString& tag, const QString& path) = 0;
    /// Puts the client's controls into a tool bar, which is not owned and outlives the client.
    virtual void AttachToolBar(QToolBar* toolBar, int position) = 0;
    /// True: receiver, false: sender.
    virtual void SetReceiver(bool isReceiver) = 0;
    virtual void SetApplicationId(const QString& id) = 0;
    /// The range that the device receives, "lowest,highest" in Hz. Also after `Start`.
    virtual void SetFrequencyRange(const QString& range) = 0;
    virtual void SetDeviceAddress(const QString& address) = 0;
    /// Where the hub is.
    virtual void SetCentralAddress(const QString& address, int port) = 0;
    /// The clients to couple to without being asked.
    virtual void SetAutoCoupleTargets(const QString& targets) = 0;
    /// Joins the hub.
    virtual void Start() = 0;
    /// The name of this client at the hub.
    virtual void SetClientName(const QString& name) = 0;
};
