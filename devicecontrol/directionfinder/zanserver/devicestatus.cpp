#include "zanserver/devicestatus.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "zanserver/drivererrands.h"
#include "zanserver/publish.h"
#include "zanserver/servervalue.h"

#include <QDateTime>

using namespace StdDeviceDefinition;

namespace ZANServer {

DeviceStatus::DeviceStatus()
    : m_error(DeviceValue<ValueString>(g_vdDevLastError))
    , m_errorTime(DeviceValue<ValueTimeStamp>(g_vdDevLastErrorTime))
    , m_sweepTime(ServerValue<ValueNumericInt>(g_vdScanSweepTime))
    , m_channelCount(ServerValue<ValueNumericInt>(g_vdScanChannelCount)) {
    Forget();
}

void DeviceStatus::Forget() {
    SetSweepTime({});
    SetChannelCount({});
}

void DeviceStatus::ReportError(const QString& text) {
    m_errorTime->SetValue(static_cast<quint64>(QDateTime::currentMSecsSinceEpoch()));
    m_error->SetValue(Bounded(text));
}

void DeviceStatus::SetSweepTime(std::optional<int> time) {
    Publish(*m_sweepTime, time);
}

void DeviceStatus::SetChannelCount(std::optional<int> count) {
    Publish(*m_channelCount, count);
}

} // namespace ZANServer
