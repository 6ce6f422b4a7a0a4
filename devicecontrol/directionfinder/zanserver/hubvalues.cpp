#include "zanserver/hubvalues.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "zancommon/zanvaluenames.h"
#include "zanserver/drivererrands.h"
#include "zanserver/publish.h"
#include "zanserver/servervalue.h"
#include "zanserver/station.h"

#include <QDateTime>

#include <algorithm>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace ZANServer {

namespace {

const QString KEY_ENABLED = u"MshReceiver_Enabled"_s;
// The manager reads these.
const QString KEY_ADDRESS = u"MshCentralAddress"_s;
const QString KEY_PORT = u"MshCentralPort"_s;
const QString KEY_CLIENT_NAME = u"MshClientName"_s;
const QString KEY_TARGETS = u"AutoCoupleTargets"_s;

constexpr int DEFAULT_PORT = 4500;
constexpr qsizetype LONGEST_REASON = 1000; // bytes

/// Why a text cannot be used; empty when it can.
/// \param what names it
QString CheckText(const QString& what, const QString& text, qsizetype mostBytes) {
    if (text.toUtf8().size() > mostBytes) {
        return u"%1 is longer than %2 bytes"_s.arg(what).arg(mostBytes);
    }
    const auto isControl = [](QChar c) { return c.category() == QChar::Other_Control; };
    return !text.isValidUtf16() || std::ranges::any_of(text, isControl)
               ? u"%1 has characters that are no text"_s.arg(what)
               : QString();
}

QString CheckAddress(const QString& address) {
    const QString what = u"the address of the hub"_s;
    if (address.isEmpty()) {
        return u"the hub has no address"_s;
    }
    return address.contains(u' ') ? u"%1 has blanks"_s.arg(what)
                                  : CheckText(what, address, HubValues::LONGEST_NAME);
}

} // namespace

HubValues::HubValues(int publishMs)
    : m_enabled(ServerValue<ValueBool>(g_vdHubEnabled))
    , m_address(ServerValue<ValueString>(g_vdHubAddress))
    , m_port(ServerValue<ValueNumericInt>(g_vdHubPort))
    , m_clientName(ServerValue<ValueString>(g_vdHubClientName))
    , m_targets(ServerValue<ValueString>(g_vdHubTargets))
    , m_refused(ServerValue<ValueString>(g_vdHubRefused))
    , m_state(ServerValue<ValueSelection>(g_vdHubState))
    , m_lastError(ServerValue<ValueString>(g_vdHubLastError))
    , m_lastErrorTime(ServerValue<ValueTimeStamp>(g_vdHubLastErrorTime)) {
    m_timer.setInterval(publishMs);
    m_timer.callOnTimeout(&PublishRange);
    Publish<quint64>(*m_lastErrorTime, std::nullopt, this);
    ReadSettings();
    Show();
    Apply();
    for (ValueBase* const value : {static_cast<ValueBase*>(m_enabled), static_cast<ValueBase*>(m_address),
                                   static_cast<ValueBase*>(m_port), static_cast<ValueBase*>(m_clientName),
                                   static_cast<ValueBase*>(m_targets)}) {
        value->AddObserver(this);
    }
}

void HubValues::ReadSettings() {
    const ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    const qint64 port = cfg.GetInt(KEY_PORT, DEFAULT_PORT);
    const bool isPort = port >= m_port->GetMin() && port <= m_port->GetMax();
    m_settings = {cfg.GetBool(KEY_ENABLED, false), cfg.GetString(KEY_ADDRESS, u"127.0.0.1"_s),
                  isPort ? static_cast<int>(port) : DEFAULT_PORT, cfg.GetString(KEY_CLIENT_NAME, {}),
                  cfg.GetString(KEY_TARGETS, {})};
}

void HubValues::StoreSettings() const {
    ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    cfg.SetBool(KEY_ENABLED, m_settings.on);
    cfg.SetString(KEY_ADDRESS, m_settings.address);
    cfg.SetInt(KEY_PORT, m_settings.port);
    cfg.SetString(KEY_CLIENT_NAME, m_settings.clientName);
    cfg.SetString(KEY_TARGETS, m_settings.targets);
}

void HubValues::Update(Observable* /*subject*/, TChangeCode code) {
    const Settings wished{m_enabled->GetValue(), m_address->GetValue(), m_port->GetValue(),
                          m_clientName->GetValue(), m_targets->GetValue()};
    if (code != TChangeCode::Changed || wished == m_settings) {
        return;
    }
    const QString reason = CheckChange(wished);
    if (reason.isEmpty()) {
        const bool wasOn = std::exchange(m_settings, wished).on;
        StoreSettings();
        if (wasOn || wished.on) {
            Apply();
        }
    }
    Show();
    m_refused->SetValue(reason, this);
}

/// Why a change is refused; empty when it is not. Leaving the hub never is, whatever the texts are.
QString HubValues::CheckChange(const Settings& wished) const {
    const bool areTextsSame = wished.address == m_settings.address &&
                              wished.clientName == m_settings.clientName &&
                              wished.targets == m_settings.targets;
    if (!wished.on && areTextsSame) {
        return {};
    }
    QString reason = CheckAddress(wished.address);
    if (reason.isEmpty()) {
        reason = CheckText(u"the name of the client"_s, wished.clientName, LONGEST_NAME);
    }
    if (reason.isEmpty()) {
        reason = CheckText(u"the list of the clients to couple to"_s, wished.targets, LONGEST_TARGETS);
    }
    return reason;
}

void HubValues::Show() {
    m_enabled->SetValue(m_settings.on, this);
    m_address->SetValue(m_settings.address, this);
    m_port->SetValue(m_settings.port, this);
    m_clientName->SetValue(m_settings.clientName, this);
    m_targets->SetValue(m_settings.targets, this);
}

/// Joins the hub with the settings, or leaves it.
void HubValues::Apply() {
    m_manager.DestroyMshReceiver();
    m_timer.stop();
    m_problem.clear();
    State state = State::Off;
    if (m_settings.on) {
        PublishRange();
        m_manager.CreateMshReceiver({});
        state = m_manager.IsReceiver() ? State::Started : State::Failed;
    }
    if (state == State::Started) {
        m_timer.start();
    } else if (state == State::Failed) {
        m_problem = Bounded(DescribeFailure(), LONGEST_REASON);
        Publish(*m_lastErrorTime, std::optional(static_cast<quint64>(QDateTime::currentMSecsSinceEpoch())),
                this);
        m_lastError->SetValue(m_problem, this);
    }
    m_state->SetCurrentKey(static_cast<long>(state), this);
}

void HubValues::PublishRange() {
    const ZANCharacteristics& characteristics = Station::GetCharacteristics();
    const auto publish = [](QStringView name, double frequency) {
        if (auto* const value = ZANPlatform::GetOrCreateValue<ValueNumericDouble>(ZANPath::Control(name))) {
            value->SetValue(frequency, nullptr);
        }
    };
    publish(ZANValueName::SYSMINFREQ, characteristics.GetMinFreq(OPMODE_FFM));
    publish(ZANValueName::SYSMAXFREQ, characteristics.GetMaxFreq(OPMODE_FFM));
}

QString HubValues::DescribeFailure() {
    return u"there is no client of the message hub: "_s + CfgCenter::GetLastError();
}

} // namespace ZANServer
