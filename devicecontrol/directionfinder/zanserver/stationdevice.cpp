#include "zanserver/stationdevice.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "zancommon/stationcfg.h"
#include "zancommon/zanpath.h"
#include "zanserver/deliverycheck.h"
#include "zanserver/devicecommands.h"

#include <QDateTime>

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

} // namespace

StationDevice::StationDevice(Station& station, const DriverChoice& choice, DriverComponentPtr driver)
    : m_station(station)
    , m_commandLog(Station::GetDeviceAddress(), StationCfg::GetStationName())
    , m_pState(Tree::Instance()->Find<ValueInt>(ZANPath::Device(g_vdDevState)))
    , m_pStateInfo(Tree::Instance()->Find<ValueString>(ZANPath::Device(g_vdDevStateInfo)))
    , m_check(std::make_unique<DeliveryCheck>())
    , m_link(MakeFactory(std::move(driver)), choice.address, Station::GetDeviceAddress(),
             choice.name == DriverChoice::REPLAY ? DriverLink::Kind::Recording : DriverLink::Kind::Device) {
    DriverReceiver& receiver = m_link.GetReceiver();
    // Deliveries that have waited together are written together.
    connect(&receiver, &DriverReceiver::PassingOnBegins, this,
            [this] { m_burst.emplace(m_station.GetOutput()); });
    connect(&receiver, &DriverReceiver::PassingOnEnds, this, [this] { m_burst.reset(); });
    connect(&receiver, &DriverReceiver::BlockReceived, this, &StationDevice::TakeBlock);
    connect(&receiver, &DriverReceiver::PositionReceived, this,
            [this, isRecording = choice.name == DriverChoice::REPLAY](const PositionFix& fix) {
                if (isRecording) {
                    m_station.TakeRecordedPosition(fix);
                } else if (IsCurrent()) {
                    m_station.TakePosition(fix);
                }
            });
    connect(&receiver, &DriverReceiver::CommandReported, this, &StationDevice::LogCommand);
    if (choice.name != DriverChoice::REPLAY) {
        m_control.emplace(m_link.GetThread(), Station::GetDeviceAddress(),
                          DeviceControl::Options{.keepsWishes = station.AreSettingsUsable()});
        connect(&receiver, &DriverReceiver::ErrorReported, this,
                [this](const KvZANCommon::ErrorStruct& error) {
                    m_control->GetStatus().ReportError(error.text);
                });
        connect(&receiver, &DriverReceiver::BitResultReported, this,
                [this](const KvZANCommon::ErrorStruct& result) {
                    m_control->GetCommands().OnTestResult(result);
                });
        m_station.SetFrequencyOf([this](const BearingBlock& block, std::size_t bearing) {
            return m_control->GetFrequency(block, bearing);
        });
    }
    connect(&m_link, &DriverLink::Connected, this, &StationDevice::OnConnected);
    connect(&m_link, &DriverLink::StateChanged, this, &StationDevice::PublishState);
    connect(&m_link, &DriverLink::CallFailed, this, &StationDevice::Refused);
    m_commandLog.KeepOutOfSubdirectories(); // an address such as "http://kraken:8081" is no file name
    if (!m_commandLog.Init()) {
        ReportLogProblem();
    }
    PublishState();
}

StationDevice::~StationDevice() {
    Close();
}

void StationDevice::Close() {
    m_link.Close();
    m_station.SetFrequencyOf({});
    m_control.reset();
}

/// Of a device that is lost nothing is current, whatever still comes.
bool StationDevice::IsCurrent() const {
    return m_link.GetState() == DriverLink::State::Connected ||
           m_link.GetState() == DriverLink::State::Closed;
}

void StationDevice::TakeBlock(BearingBlock& block) {
    if (!IsCurrent()) {
        return;
    }
    if (IsWithinDuration(block.time)) {
        for (const QString& fault : m_check->Check(block)) {
            Q_EMIT Refused(fault);
        }
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
    if (!m_firstCommand.isEmpty()) {
        GiveFirstCommand();
    }
    if (m_control) {
        m_control->OnConnected();
    } else {
        m_link.GetThread().Post(DriverCall::SetMode,
                                [](KvZANCommon::IDriver& driver) { driver.SetMode(EMODE_SCAN); });
    }
}

void StationDevice::GiveFirstCommand() {
    const auto reason = std::make_shared<QString>();
    m_link.GetThread().Post(
        DriverCall::Setting,
        [reason, command = m_firstCommand](KvZANCommon::IDriver& driver) {
            if (const long result = driver.SetTest(command); result != 0) {
                *reason = u"the driver refuses \"%1\": "_s.arg(command) + TakeLastError(driver, result);
            }
        },
        [this, reason] {
            if (!reason->isEmpty()) {
                Q_EMIT Refused(*reason);
            }
        });
}

void StationDevice::PublishState() {
    const DriverLink::State state = m_link.GetState();
    m_pStateInfo->SetValue(m_link.GetReason());
    m_pState->SetValue(static_cast<int>(state));
    if (state == DriverLink::State::Lost || state == DriverLink::State::GivenUp) {
        m_station.ForgetMeasurements();
        if (m_control) {
            m_control->OnLost();
        }
    }
}

void StationDevice::LogCommand(const QString& command) {
    m_commandLogValues.OnCommandReported(command, static_cast<quint64>(QDateTime::currentMSecsSinceEpoch()));
    if (m_logProblem.isEmpty() && !m_commandLog.Add(command)) {
        ReportLogProblem();
    }
}

void StationDevice::ReportLogProblem() {
    m_logProblem = m_commandLog.GetLastError();
    Q_EMIT LogFailed(m_logProblem);
}

} // namespace ZANServer
