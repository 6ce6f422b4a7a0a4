#include "zancommon/mshmanager.h"

#include "kwbase/tracesource.h"
#include "mshclient/imshclientdll.h"
#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "valueframework/tree.h"
#include "zancommon/zanvaluenames.h"

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace {

constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\mshmanager");

ICfg& GetCfg() {
    return CfgCenter::GetAppCfg(ICfg::View::Outputs);
}

/// The hub's client; null when it cannot be loaded.
IMshClientDll* LoadClient() {
    IDllInstance* const instance =
        CfgCenter::CreateDllInstanceByFileName(u"MshClient.dll"_s, {}, false, false);
    auto* const client = dynamic_cast<IMshClientDll*>(instance);
    if (instance && !client) {
        TRACE.Information(
            [] { return u"The component \"MshClient.dll\" is not a client of the message hub."_s; });
        CfgCenter::DestroyDllInstanceByPointer(instance);
    }
    return client;
}

/// The port of the hub. An invalid number is traced, and the default is used.
int ReadPort(const ICfg& cfg) {
    constexpr int DEFAULT_PORT = 4500;
    constexpr qint64 HIGHEST_PORT = 65535;
    const qint64 port = cfg.GetInt(u"MshCentralPort"_s, DEFAULT_PORT);
    if (port >= 1 && port <= HIGHEST_PORT) {
        return static_cast<int>(port);
    }
    TRACE.Information([port] {
        return u"WARNING: MshCentralPort %1 is not a port from 1 to 65535; %2 is used"_s.arg(
            QString::number(port), QString::number(DEFAULT_PORT));
    });
    return DEFAULT_PORT;
}

/// The algorithm that replaces a received bandwidth which the device does not have by the next larger one.
const QString& BandwidthAlgorithm() {
    static const QString name = u"AdAlgSelectEqualOrBiggerValue"_s;
    return name;
}

void MapReceiverValues(IMshClientDll& client) {
    client.MapValue(u"FRQ"_s, ZANPath::Server(g_vdFrequency), {});
    client.MapValue(u"BW"_s, ZANPath::Server(g_vdBandwidth), BandwidthAlgorithm());
    client.MapValue(u"DEM"_s, ZANPath::Server(g_vdDemodulation), {});
    client.MapSelectionValue(u"FFM"_s, ZANPath::Server(g_vdOperationMode));
}

void MapSenderValues(IMshClientDll& client) {
    client.MapValue(u"BW"_s, ZANPath::Server(g_vdBandwidth), BandwidthAlgorithm());
    client.MapValue(u"DEM"_s, ZANPath::Server(g_vdDemodulation), {});
    client.MapSelectionValue(u"FFM"_s, ZANPath::Server(g_vdOperationMode));
    client.MapValue(u"AUDIO_MODE"_s, ZANPath::Control(u"AUDIOMODES"), {});
    client.MapValue(u"AUDIO_CHANNELMUTE"_s, ZANPath::Server(g_vdAuChannelMute), {});
    client.MapValue(u"AUDIO_CHANNELVOLUME"_s, ZANPath::Server(g_vdAuChannelVolume), {});
    client.MapValue(u"AUDIO_SOUNDCARDOUTPUT"_s, ZANPath::Control(u"SOUNDCARDOUTPUT"), {});
    client.MapValue(u"AUDIO_DEVICEOUTPUT"_s, ZANPath::Control(u"DEVICEOUTPUT"), {});
    client.MapValue(u"SQUELCHSTATE"_s, ZANPath::Server(g_vdAuSquelch), {});
    client.MapValue(u"SQUELCHVALUE"_s, ZANPath::Server(g_vdAudioThreshold), {});
}

} // namespace

MshManager::~MshManager() {
    DestroyMshSender();
    DestroyMshReceiver();
}

void MshManager::Update(Observable* subject, TChangeCode code) {
    if (m_pMinFrequency.LetGoIfGoing(subject, code) || m_pMaxFrequency.LetGoIfGoing(subject, code)) {
        return;
    }
    if (m_pMinFrequency.Is(subject) || m_pMaxFrequency.Is(subject)) {
        UpdateMshReceiverRange();
    }
}

void MshManager::CreateMshReceiver(const QString& name) {
    DestroyMshReceiver();
    m_pReceiver = LoadClient();
    if (!m_pReceiver) {
        return;
    }
    m_pMinFrequency.Find(ZANPath::Control(ZANValueName::SYSMINFREQ), this);
    m_pMaxFrequency.Find(ZANPath::Control(ZANValueName::SYSMAXFREQ), this);
    CommonMshInit(m_pReceiver, name);
    m_pReceiver->SetReceiver(true);
    const ValueBase* const address = Tree::Instance()->GetValue(ZANPath::Server(g_vdDevAddress));
    m_pReceiver->SetDeviceAddress(address ? address->GetStringValue() : QString());
    MapReceiverValues(*m_pReceiver);
    m_pReceiver->Start();
    UpdateMshReceiverRange();
}

void MshManager::CreateMshReceiverIfConfigured(const QString& name, const QString& cfgKey,
                                               bool defaultValue) {
    if (GetOrCreateBooleanCfg(cfgKey, defaultValue)) {
        CreateMshReceiver(name);
    }
}

void MshManager::CreateMshSender(const QString& name, QToolBar* toolBar) {
    DestroyMshSender();
    IMshClientDll* const client = LoadClient();
    if (!client) {
        return;
    }
    m_pSender = client;
    CommonMshInit(client, name);
    client->SetReceiver(false);
    client->AttachToolBar(toolBar, 0);
    client->SetHandoverValue(ZANPath::Control(ZANValueName::HANDOVERFREQUENCY));
    client->MapValue(u"FRQ"_s, ZANPath::Control(ZANValueName::HANDOVERFREQUENCY), {});
    client->SetHandoverPoolValue(ZANPath::Server(ZANValueName::HANDOVERPOOLFREQUENCY));
    MapSenderValues(*client);
    client->Start();
}

void MshManager::CreateMshSenderIfConfigured(const QString& name, QToolBar* toolBar, const QString& cfgKey,
                                             bool defaultValue) {
    if (GetOrCreateBooleanCfg(cfgKey, defaultValue)) {
        CreateMshSender(name, toolBar);
    }
}

void MshManager::DestroyMshReceiver() {
    m_pMinFrequency.LetGo();
    m_pMaxFrequency.LetGo();
    if (m_pReceiver) {
        CfgCenter::DestroyDllInstanceByPointer(m_pReceiver);
        m_pReceiver = nullptr;
    }
}

void MshManager::DestroyMshSender() {
    if (m_pSender) {
        CfgCenter::DestroyDllInstanceByPointer(m_pSender);
        m_pSender = nullptr;
    }
}

bool MshManager::GetOrCreateBooleanCfg(const QString& key, bool defaultValue) {
    ICfg& cfg = GetCfg();
    const bool value = cfg.GetBool(key, defaultValue);
    cfg.SetBool(key, value);
    cfg.CommitKey(key);
    return value;
}

void MshManager::CommonMshInit(IMshClientDll* pMshClientDll, const QString& name) {
    if (!pMshClientDll) {
        TRACE.Assertion(L"pMshClientDll != NULL", 154);
        return;
    }
    const ICfg& cfg = GetCfg();
    const QString address = cfg.GetString(u"MshCentralAddress"_s, u"127.0.0.1"_s);
    const int port = ReadPort(cfg);
    QString clientName = cfg.GetString(u"MshClientName"_s, {});
    if (clientName.isEmpty()) {
        clientName = name.isEmpty() ? u"ZAN"_s : name;
    }
    pMshClientDll->SetClientName(clientName);
    pMshClientDll->SetApplicationId(u"KORVA_ZAN"_s);
    pMshClientDll->SetCentralAddress(address, port);
    pMshClientDll->SetAutoCoupleTargets(cfg.GetString(u"AutoCoupleTargets"_s, {}));
}

void MshManager::UpdateMshReceiverRange() {
    if (!m_pMinFrequency || !m_pMaxFrequency || !m_pReceiver) {
        return;
    }
    const double lowest = m_pMinFrequency->GetValue();
    const double highest = m_pMaxFrequency->GetValue();
    if (highest > lowest && lowest > 0.0) {
        m_pReceiver->SetFrequencyRange(QString::number(lowest, 'f', 0) + u',' +
                                       QString::number(highest, 'f', 0));
    }
}
