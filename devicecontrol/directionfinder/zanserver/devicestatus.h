#pragma once

#include "zanserver_export.h"

#include "valueframework/valuetypes.h"

#include <QString>

#include <optional>

namespace ZANServer {

/// The state of the connection to a device, as "/DevAttr/DevState" holds it. The numbers are used by other
/// programs.
enum class EDeviceState : int {
    NONE = 0,       ///< no device, or not yet
    CONNECTING = 1, ///< it is being opened, for the first time or again
    CONNECTED = 2,
    LOST = 3,    ///< sought again
    GIVEN_UP = 4 ///< its driver hangs; only a new start helps
};

/// The state of the device as values of the tree. Values that are not known are "not measured". Belongs to
/// the thread of the tree.
class ZANSERVER_EXPORT DeviceStatus {
public:
    DeviceStatus();

    /// In any other state than CONNECTED, sweep time and number of channels are not measured.
    void SetState(EDeviceState state);
    [[nodiscard]] EDeviceState GetState() const;
    /// Its time is now.
    void ReportError(const QString& text);
    /// Milliseconds for one pass over all ranges.
    void SetSweepTime(std::optional<int> time);
    /// Channels of all ranges that are measured.
    void SetChannelCount(std::optional<int> count);

private:
    ValueNumericInt* m_state;
    ValueString* m_error;
    ValueTimeStamp* m_errorTime;
    ValueNumericInt* m_sweepTime;
    ValueNumericInt* m_channelCount;
};

} // namespace ZANServer
