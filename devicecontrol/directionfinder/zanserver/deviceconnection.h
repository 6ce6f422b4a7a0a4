#pragma once

#include "zanserver_export.h"

#include <QString>
#include <QStringList>

namespace ZANServer {

/// The connection to the device: publishes the device in the value tree according to the station's settings.
///
/// A station without settings gets those of an example, which users can edit: a ZANTIDE device with three
/// antennas for 300 kHz to 3 GHz.
class ZANSERVER_EXPORT DeviceConnection {
public:
    /// Publishes the device with this address: address, name, type, options, hardware and antennas.
    DeviceConnection(const QString& address, const QString& name);
    DeviceConnection(const DeviceConnection&) = delete;
    DeviceConnection& operator=(const DeviceConnection&) = delete;
    /// Removes the device from the tree.
    ~DeviceConnection();

    /// Whether the station was not in the settings before.
    [[nodiscard]] bool IsFirst() const { return m_isFirst; }
    /// The problems of the settings, as texts for the operator.
    [[nodiscard]] const QStringList& GetWarnings() const { return m_warnings; }

private:
    bool m_isFirst;
    QStringList m_warnings;
};

} // namespace ZANServer
