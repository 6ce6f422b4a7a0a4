#pragma once

#include <QString>

class QSerialPort;

/// Serial lines by their addresses. `CInterfaceCreator` has the notation.
class SerialLine {
public:
    /// Sets up a port and opens it for reading and writing. False, with the reason, when the address is
    /// malformed or the port cannot be opened.
    static bool Open(QSerialPort& port, const QString& address, QString& reason);
};
