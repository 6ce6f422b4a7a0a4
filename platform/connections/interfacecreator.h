#pragma once

#include "zanplatform_export.h"

#include <QString>

class IInterface;
class IInterfaceCallback;

/// Opens communication interfaces from address strings.
class ZANPLATFORM_EXPORT CInterfaceCreator {
public:
    /// Opens a serial line for sending, on the calling thread, which needs an event loop.
    /// \param address "PORT:BAUD,PARITY,DATABITS,STOPBITS", for example "COM1:9600,e,8,1" or
    ///        "/dev/ttyUSB0:9600,n,8,1". The port is "COM1" to "COM256" (in either case), which stand for
    ///        "/dev/ttyS0" to "/dev/ttyS255", or a path below "/dev/" without "..". The baud rate is any
    ///        number above 0 that the port can do. The parity is n(one), e(ven), o(dd), m(ark) or s(pace), in
    ///        either case; the data bits are 5 to 8; the stop bits are 1, 1.5 (with 5 data bits only) or 2
    ///        (not with 5). The defaults for missing or empty parts are, in this order, 9600, n, 8, 1. A port
    ///        path that itself holds a ":" must be followed by another ":".
    /// \param callback is notified of the interface's events, and must live as long as the interface; null is
    ///        refused
    /// \param context the caller's number for the interface; not used for a serial line
    /// \param unused has no effect; callers pass false
    /// \return the open interface, which the caller deletes; null, with the reason traced, when it cannot be
    ///         opened
    static IInterface* CreateInterface(const QString& address, IInterfaceCallback* callback, quint64 context,
                                       bool unused);

    /// Why an address is none that `CreateInterface` takes; empty when it is one. Opens nothing.
    [[nodiscard]] static QString CheckAddress(const QString& address);
};
