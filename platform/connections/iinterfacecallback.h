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

    /// The interface is open: once, first of all.
    virtual void OnOpen() = 0;
    /// The other side ended the connection in an orderly way. A serial line knows no such end and never calls
    /// it.
    virtual void OnClose() = 0;
    /// Data came in. It has been discarded.
    virtual void OnRead() = 0;
    /// The interface has failed, for example because its port was unplugged: once, last of all. It sends
    /// nothing any more; a new one has to be opened.
    virtual void OnError() = 0;
    /// Everything that was written is with the operating system; there is room for the most that the
    /// interface takes.
    virtual void OnWritten() {}

protected:
    ~IInterfaceCallback() = default;
};
