#include "zanserver/stationdevice.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "zancommon/stationcfg.h"
#include "zancommon/zanpath.h"

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace ZANServer {

namespace {

DriverThread::Factory MakeFactory(DriverComponentPtr driver) {
    return [component = std::shared_ptr<KvZANCommon::IDriverComponent>(std::move(driver))] {
        return component->CreateDriver();
    };
}

/// The log's file is named after the device, and an address such as "http://kraken:8081" is no file name.
QString GetLogAddress() {
    return Station::GetDeviceAddress().replace(u'/', u'_');
}

} // namespace

StationDevice::StationDevice(Station& station, const DriverChoice& choice, DriverComponentPtr driver)
    : m_station(station)
    , m_commandLog(GetLogAddress(), StationCfg::GetStationName())
    , m_pState(Tree::Instance()->Find<ValueInt>(ZANPath::Device(g_vdDevState)))
    , m_pStateInfo(Tree::Instance()->Find<ValueString>(ZANPath::Device(g_vdDevStateInfo)))
    , m_link(MakeFactory(std::move(driver)), choice.address, Station::GetDeviceAddress(),
             choice.name == DriverChoice::REPLAY ? DriverLink::Kind::Recording : DriverLink::Kind::Device) {
    DriverReceiver& receiver = m_link.GetReceiver();
    // Deliveries that have waited together are written together.
    connect(&receiver, &DriverReceiver::PassingOnBegins, this,
            [this] { m_burst.emplace(m_station.GetOutput()); });
    connect(&receiver, &DriverReceiver::PassingOnEnds, this, [this] { m_burst.reset(); });
    connect(&receiver, &DriverReceiver::BlockReceived, this, &StationDevice::TakeBlock);
    connect(&receiver, &DriverReceiver::PositionReceived, this,
            [this](const PositionFix& fix) { m_station.TakePosition(fix); });
    connect(&receiver, &DriverReceiver::CommandReported, this, &StationDevice::LogCommand);
    connect(&m_link, &DriverLink::Connected, this, &StationDevice::OnConnected);
    connect(&m_link, &DriverLink::StateChanged, this, &StationDevice::PublishState);
    connect(&m_link, &DriverLink::CallFailed, this, &StationDevice::Refused);
    if (!m_commandLog.Init()) {
        ReportLogProblem();
    }
    PublishState();
}

StationDevice::~StationDevice() {
    m_link.Close();
}

void StationDevice::TakeBlock(BearingBlock& block) {
    if (IsWithinDuration(block.time)) {
        Q_EMIT BlockReceived(block);
        m_station.Process(block);
    } else if (!std::exchange(m_isOver, true)) {
        Q_EMIT DurationIsOver();
    }
}

bool StationDevice::IsWithinDuration(quint64 time) {
    if (m_duration && !m_end) {
        m_end = time + static_cast<quint64>(m_duration->count());
    }
    return !m_end || time < *m_end;
}

void StationDevice::OnConnected() {
    DriverThread& thread = m_link.GetThread();
    if (!m_firstCommand.isEmpty()) {
        const auto reason = std::make_shared<QString>();
        thread.Post(
            DriverCall::Setting,
            [reason, command = m_firstCommand](KvZANCommon::IDriver& driver) {
                if (driver.SetTest(command) != 0) {
                    *reason = u"the driver refuses \"%1\": "_s.arg(command) + driver.GetLastError();
                }
            },
            [this, reason] {
                if (!reason->isEmpty()) {
                    Q_EMIT Refused(*reason);
                }
            });
    }
    m_link.GetReceiver().SetOperateMode(EMODE_SCAN);
    thread.Post(DriverCall::SetMode, [](KvZANCommon::IDriver& driver) { driver.SetMode(EMODE_SCAN); });
}

void StationDevice::PublishState() {
    const DriverLink::State state = m_link.GetState();
    m_pStateInfo->SetValue(m_link.GetReason());
    m_pState->SetValue(static_cast<int>(state));
    if (state == DriverLink::State::Lost || state == DriverLink::State::GivenUp) {
        m_station.ForgetMeasurements();
    }
}

void StationDevice::LogCommand(const QString& command) {
    if (m_logProblem.isEmpty() && !m_commandLog.Add(command)) {
        ReportLogProblem();
    }
}

void StationDevice::ReportLogProblem() {
    m_logProblem = m_commandLog.GetLastError();
    Q_EMIT LogFailed(m_logProblem);
}

} // namespace ZANServer
