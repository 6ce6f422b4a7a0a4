#pragma once

#include "zanserver_export.h"

#include <QString>
#include <QStringList>

namespace ZANServer {

/// The connection to the device: publishes it in the value tree as the station's settings describe it.
///
/// A station without settings gets an example: a ZANTIDE device with three antennas for 300 kHz to 3 GHz,
/// written there for people to edit.
class ZANSERVER_EXPORT DeviceConnection {
public:
    /// Publishes the device of an address: its address, name, type, options, hardware and antennas.
    explicit DeviceConnection(const QString& address);
    DeviceConnection(const DeviceConnection&) = delete;
    DeviceConnection& operator=(const DeviceConnection&) = delete;
    /// Takes the device out of the tree.
    ~DeviceConnection();

    /// Whether the settings did not hold the station before.
    [[nodiscard]] bool IsFirst() const { return m_isFirst; }
    /// What was found wrong with the settings, in words for the operator.
    [[nodiscard]] const QStringList& GetWarnings() const { return m_warnings; }

private:
    static void PublishDevice(const QString& address);
    static void PublishHardware(const QString& address);
    static void PublishAntennas(const QString& address);

    bool m_isFirst;
    QStringList m_warnings;
};

} // namespace ZANServer
