#pragma once

#include "zanserver_export.h"

#include "zancommon/antennadatalist.h"
#include "zanserver/devicereading.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <set>

namespace ZANServer {

/// Publishes in the device node what a driver says of its device; what it does not say stays as the settings
/// have it.
///
/// Type, options, channel count, hardware components and antennas. An antenna of the settings with the name
/// of one of the device keeps the operator's choices (range, switches, mounting), and gets the limits,
/// handles and the converter of the device. Antennas that the settings lack are added. Those that the device
/// lacks stay in the settings and are shown disabled; a warning names them once. When the device says nothing
/// of antennas, all stay. Belongs to the thread of the tree.
class ZANSERVER_EXPORT DeviceProperties {
public:
    /// Once the device is published from the settings (`DeviceConnection`).
    void Publish(const DeviceReading& reading);
    /// What was found by the latest `Publish`, for the operator; also in the tree, as "/DevAttr/DevWarnings".
    [[nodiscard]] const QStringList& GetWarnings() const { return m_warnings; }

    /// The reading of a compass, in degrees, becomes that of the antennas that it belongs to; without one
    /// they have an old one, which is "not measured".
    static void PublishCompass(unsigned long handle, const std::optional<double>& value);
    /// The readings of compasses become "not measured".
    static void ForgetMeasured();

private:
    ZANSERVER_NO_EXPORT void PublishAntennas(const DeviceReading& reading);
    ZANSERVER_NO_EXPORT void PublishComponents(const DeviceReading& reading);

    QStringList m_warnings;
    // What of the antennas in the tree is not from the settings.
    std::set<QString> m_added;
    std::set<QString> m_switchedOff;
    QStringList m_namedMissing;
};

} // namespace ZANServer
