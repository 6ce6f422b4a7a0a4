#pragma once

#include "zanserver_export.h"

#include "valueframework/valuetypes.h"

#include <QString>

#include <optional>

namespace ZANServer {

/// What is known of the state of a device as values of the tree, beside that of its link. Values that are not
/// known are "not measured". Belongs to the thread of the tree.
class ZANSERVER_EXPORT DeviceStatus {
public:
    DeviceStatus();

    /// The device is gone: sweep time and number of channels are not measured.
    void Forget();
    /// Its time is now.
    void ReportError(const QString& text);
    /// Milliseconds for one pass over all ranges.
    void SetSweepTime(std::optional<int> time);
    /// Channels of all ranges that are measured.
    void SetChannelCount(std::optional<int> count);

private:
    ValueString* m_error;
    ValueTimeStamp* m_errorTime;
    ValueNumericInt* m_sweepTime;
    ValueNumericInt* m_channelCount;
};

} // namespace ZANServer
