#pragma once

#include "zanplatform_export.h"

/// Receives the events of a communication interface.
///
/// Every call comes from the event loop of the thread that opened the interface, never from inside an
/// operation of the interface, and may destroy the interface. A destroyed interface calls nobody.
class ZANPLATFORM_EXPORT IInterfaceCallback {
public:
    IInterfaceCallback() = default;
    IInterfaceCallback(const IInterfaceCallback&) = default;
    IInterfaceCallback& operator=(const IInterfaceCallback&) = default;

    /// The interface is open. Called once, before all other notifications.
    virtual void OnOpen() = 0;
    /// The other side closed the connection in an orderly way. A serial line never calls this.
    virtual void OnClose() = 0;
    /// Data came in. It has been discarded.
    virtual void OnRead() = 0;
    /// The interface has failed, for example because its port was unplugged. Called once, after all other
    /// notifications. The interface sends nothing any more; a new one has to be opened.
    virtual void OnError() = 0;
    /// Everything that was written has been passed to the operating system; the whole buffer of the interface
    /// is free.
    virtual void OnWritten() {}

protected:
    ~IInterfaceCallback() = default;
};
