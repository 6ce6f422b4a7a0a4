#pragma once

#include <QString>

class QSerialPort;

/// Serial lines by their addresses. `CInterfaceCreator` has the notation.
class SerialLine {
public:
    /// Why an address is malformed; empty when it is not.
    [[nodiscard]] static QString CheckAddress(const QString& address);
    /// Sets up a port and opens it for reading and writing. False, with the reason, when the address is
    /// malformed or the port cannot be opened.
    static bool Open(QSerialPort& port, const QString& address, QString& reason);
};
