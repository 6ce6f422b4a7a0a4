#include "zancommon/mshmanager.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "support/hubclients.h"
#include "support/printing.h"
#include "support/tracelines.h"
#include "tolmappstartup/cfgcenter.h"
#include "valueframework/tree.h"
#include "valueframework/valueaccess.h"
#include "zancommon/zanvaluenames.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QToolBar>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;
using ZANPlatform::CreateValue;
using ZANPlatform::GetOrCreateValue;

// The manager with a client that is loaded at run time, as the application's is.

namespace {

class MshManagerTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(CfgCenter::SetConfigDirectory(m_directory.filePath(u"config"_s)));
        CreateValue<ValueString>(ZANPath::SERVER.toString(), g_vdDevAddress, nullptr)
            ->SetValue(u"10.0.0.1:5555"_s, nullptr);
        m_pLowest = GetOrCreateValue<ValueNumericDouble>(ZANPath::Control(ZANValueName::SYSMINFREQ));
        m_pHighest = GetOrCreateValue<ValueNumericDouble>(ZANPath::Control(ZANValueName::SYSMAXFREQ));
        m_pLowest->SetValue(20e6, nullptr);
        m_pHighest->SetValue(3e9, nullptr);
    }
    void TearDown() override {
        Tree::Instance()->Clear();
        CfgCenter::Close();
    }

    static ICfg& Settings() { return CfgCenter::GetAppCfg(ICfg::View::Outputs); }

    QTemporaryDir m_directory;
    HubClients m_clients;
    ValueNumericDouble* m_pLowest = nullptr;
    ValueNumericDouble* m_pHighest = nullptr;
};

QStringList ReceiverCalls(const QString& name) {
    return {u"1 created"_s,
            u"1 SetClientName "_s + name,
            u"1 SetApplicationId KORVA_ZAN"_s,
            u"1 SetCentralAddress 127.0.0.1 4500"_s,
            u"1 SetAutoCoupleTargets"_s,
            u"1 SetReceiver true"_s,
            u"1 SetDeviceAddress 10.0.0.1:5555"_s,
            u"1 MapValue FRQ "_s + ZANPath::Server(g_vdFrequency),
            u"1 MapValue BW "_s + ZANPath::Server(g_vdBandwidth) + u" AdAlgSelectEqualOrBiggerValue"_s,
            u"1 MapValue DEM "_s + ZANPath::Server(g_vdDemodulation),
            u"1 MapSelectionValue FFM "_s + ZANPath::Server(g_vdOperationMode),
            u"1 Start"_s,
            u"1 SetFrequencyRange 20000000,3000000000"_s};
}

QStringList SenderCalls(const QString& number, const QString& name, const QString& toolBar) {
    QStringList calls{u"created"_s,
                      u"SetClientName "_s + name,
                      u"SetApplicationId KORVA_ZAN"_s,
                      u"SetCentralAddress 127.0.0.1 4500"_s,
                      u"SetAutoCoupleTargets"_s,
                      u"SetReceiver false"_s,
                      u"AttachToolBar "_s + toolBar + u" 0"_s,
                      u"SetHandoverValue /ZANCONTROL/HANDOVERFREQUENCY"_s,
                      u"MapValue FRQ /ZANCONTROL/HANDOVERFREQUENCY"_s,
                      u"SetHandoverPoolValue /ZANServer/HANDOVERPOOLFREQUENCY"_s,
                      u"MapValue BW "_s + ZANPath::Server(g_vdBandwidth) +
                          u" AdAlgSelectEqualOrBiggerValue"_s,
                      u"MapValue DEM "_s + ZANPath::Server(g_vdDemodulation),
                      u"MapSelectionValue FFM "_s + ZANPath::Server(g_vdOperationMode),
                      u"MapValue AUDIO_MODE /ZANCONTROL/AUDIOMODES"_s,
                      u"MapValue AUDIO_CHANNELMUTE "_s + ZANPath::Server(g_vdAuChannelMute),
                      u"MapValue AUDIO_CHANNELVOLUME "_s + ZANPath::Server(g_vdAuChannelVolume),
                      u"MapValue AUDIO_SOUNDCARDOUTPUT /ZANCONTROL/SOUNDCARDOUTPUT"_s,
                      u"MapValue AUDIO_DEVICEOUTPUT /ZANCONTROL/DEVICEOUTPUT"_s,
                      u"MapValue SQUELCHSTATE "_s + ZANPath::Server(g_vdAuSquelch),
                      u"MapValue SQUELCHVALUE "_s + ZANPath::Server(g_vdAudioThreshold),
                      u"Start"_s};
    for (QString& call : calls) {
        call.prepend(number + u' ');
    }
    return calls;
}

} // namespace

TEST_F(MshManagerTest, ReceiverIsSetUpCallByCall) {
    MshManager manager;
    manager.CreateMshReceiver(u"Station 7"_s);
    EXPECT_TRUE(manager.IsReceiver());
    EXPECT_FALSE(manager.IsSender());
    EXPECT_EQ(m_clients.TakeCalls(), ReceiverCalls(u"Station 7"_s));
    manager.DestroyMshReceiver();
    EXPECT_EQ(m_clients.TakeCalls(), QStringList{u"1 destroyed"_s});
    EXPECT_FALSE(manager.IsReceiver());
}

TEST_F(MshManagerTest, SenderIsSetUpCallByCall) {
    QToolBar toolBar;
    toolBar.setObjectName(u"tools"_s);
    MshManager manager;
    manager.CreateMshSender(u"Station 7"_s, &toolBar);
    EXPECT_TRUE(manager.IsSender());
    EXPECT_EQ(m_clients.TakeCalls(), SenderCalls(u"1"_s, u"Station 7"_s, u"tools"_s));
    m_pLowest->SetValue(30e6, nullptr);
    EXPECT_EQ(m_clients.TakeCalls(), QStringList()) << "the range is the receiver's";
    manager.DestroyMshSender();
    EXPECT_EQ(m_clients.TakeCalls(), QStringList{u"1 destroyed"_s});
}

TEST_F(MshManagerTest, ReceiverAndSenderWorkAtOnce) {
    {
        MshManager manager;
        manager.CreateMshReceiver(u"both"_s);
        manager.CreateMshSender(u"both"_s, nullptr);
        EXPECT_TRUE(manager.IsReceiver() && manager.IsSender());
        EXPECT_EQ(m_clients.TakeCalls(),
                  ReceiverCalls(u"both"_s) + SenderCalls(u"2"_s, u"both"_s, u"none"_s));
    }
    EXPECT_EQ(m_clients.TakeCalls(), (QStringList{u"2 destroyed"_s, u"1 destroyed"_s}))
        << "the sender leaves first";
}

TEST_F(MshManagerTest, SecondReceiverTakesThePlaceOfTheFirst) {
    MshManager manager;
    manager.CreateMshReceiver(u"first"_s);
    m_clients.TakeCalls();
    manager.CreateMshReceiver(u"second"_s);
    EXPECT_EQ(m_clients.TakeCalls(), QStringList{u"1 destroyed"_s} + ReceiverCalls(u"second"_s));
    EXPECT_EQ(m_pLowest->GetObserverCount(), 1U);
    m_pLowest->SetValue(30e6, nullptr);
    EXPECT_EQ(m_clients.TakeCalls(), QStringList{u"1 SetFrequencyRange 30000000,3000000000"_s}) << "set once";
}

TEST_F(MshManagerTest, SettingsSayWhereTheHubIsAndWhoJoins) {
    Settings().SetString(u"MshCentralAddress"_s, u"hub.example"_s);
    Settings().SetInt(u"MshCentralPort"_s, 4711);
    Settings().SetString(u"MshClientName"_s, u"Configured"_s);
    Settings().SetString(u"AutoCoupleTargets"_s, u"A;B"_s);
    MshManager manager;
    manager.CreateMshReceiver(u"Argument"_s);
    EXPECT_EQ(m_clients.TakeCalls().mid(1, 4),
              (QStringList{u"1 SetClientName Configured"_s, u"1 SetApplicationId KORVA_ZAN"_s,
                           u"1 SetCentralAddress hub.example 4711"_s, u"1 SetAutoCoupleTargets A;B"_s}));
}

TEST_F(MshManagerTest, PortThatIsNoneIsTracedAndTheDefaultTaken) {
    for (const qint64 port :
         {qint64(0), qint64(-1), qint64(65536), qint64(1) << 32, (qint64(1) << 32) + 4711}) {
        Settings().SetInt(u"MshCentralPort"_s, port);
        TraceLines trace;
        MshManager manager;
        manager.CreateMshSender({}, nullptr);
        EXPECT_TRUE(m_clients.TakeCalls().join(u'\n').contains(u" SetCentralAddress 127.0.0.1 4500\n"_s))
            << port;
        ASSERT_EQ(trace.lines.size(), 1) << port;
        EXPECT_TRUE(trace.lines[0].endsWith(
            u": WARNING: MshCentralPort %1 is not a port from 1 to 65535; 4500 is used"_s.arg(port)))
            << trace.lines[0].toStdString();
        EXPECT_EQ(Settings().GetInt(u"MshCentralPort"_s, 0), port) << "what was set stays";
    }
}

TEST_F(MshManagerTest, FirstAndLastPortAreTaken) {
    for (const qint64 port : {1, 65535}) {
        Settings().SetInt(u"MshCentralPort"_s, port);
        const TraceLines trace;
        MshManager manager;
        manager.CreateMshReceiver({});
        EXPECT_TRUE(m_clients.TakeCalls().contains(u"1 SetCentralAddress 127.0.0.1 %1"_s.arg(port))) << port;
        EXPECT_TRUE(trace.lines.isEmpty());
        manager.DestroyMshReceiver();
        m_clients.TakeCalls();
    }
}

TEST_F(MshManagerTest, ClientWithoutAnyNameIsCalledZan) {
    MshManager manager;
    manager.CreateMshReceiver({});
    EXPECT_EQ(m_clients.TakeCalls(), ReceiverCalls(u"ZAN"_s));
    EXPECT_EQ(Settings().GetString(u"MshClientName"_s, u"absent"_s), u"absent"_s)
        << "nothing is written back";
}

TEST_F(MshManagerTest, RangeFollowsItsTwoValues) {
    MshManager manager;
    manager.CreateMshReceiver({});
    m_clients.TakeCalls();
    struct Case {
        double lowest;
        double highest;
        QStringList calls;
    };
    const Case cases[] = {
        {0.0, 3e9, {}},
        {-1.0, 3e9, {}},
        {3e9, 3e9, {}},
        {2e9, 1e9, {}},
        {0.6, 1e9, {u"1 SetFrequencyRange 1,1000000000"_s}},
        {9000.0, 3.6e9, {u"1 SetFrequencyRange 9000,3600000000"_s}},
    };
    for (const Case& each : cases) {
        m_pLowest->SetValue(0.0, nullptr); // no range
        m_pHighest->SetValue(each.highest, nullptr);
        m_clients.TakeCalls();
        m_pLowest->SetValue(each.lowest, nullptr);
        EXPECT_EQ(m_clients.TakeCalls(), each.calls) << each.lowest << " to " << each.highest;
    }
    m_pLowest->SetValue(0.0, nullptr);
    m_pHighest->SetValue(1e9, nullptr);
    EXPECT_EQ(m_clients.TakeCalls(), QStringList()) << "a range that begins at 0 is none";
    m_pLowest->SetValue(9000.0, nullptr);
    m_pHighest->SetValue(3.6e9, nullptr);
    m_clients.TakeCalls();
    m_pHighest->HasChanged(TChangeCode::ListReplaced, nullptr);
    EXPECT_EQ(m_clients.TakeCalls(), QStringList{u"1 SetFrequencyRange 9000,3600000000"_s})
        << "any notice counts";
}

TEST_F(MshManagerTest, ValueThatGoesAwayIsForgotten) {
    MshManager manager;
    manager.CreateMshReceiver({});
    m_clients.TakeCalls();
    Tree::Instance()->Remove(m_pHighest);
    EXPECT_EQ(m_pLowest->GetObserverCount(), 1U) << "the other one is still of interest";
    m_pLowest->SetValue(40e6, nullptr);
    EXPECT_EQ(m_clients.TakeCalls(), QStringList());
    Tree::Instance()->Remove(m_pLowest);
    manager.DestroyMshReceiver();
    EXPECT_EQ(m_clients.TakeCalls(), QStringList{u"1 destroyed"_s});
}

TEST_F(MshManagerTest, NoticesOfOtherValuesAreNothingToTheHub) {
    MshManager manager;
    manager.CreateMshReceiver({});
    m_clients.TakeCalls();
    manager.Update(Tree::Instance()->GetValue(ZANPath::Server(g_vdDevAddress)), TChangeCode::Changed);
    manager.Update(nullptr, TChangeCode::Changed);
    EXPECT_EQ(m_clients.TakeCalls(), QStringList());
}

TEST_F(MshManagerTest, CopyOutlivesTheValuesOfTheRange) {
    MshManager manager;
    manager.CreateMshReceiver({});
    const MshManager copy(manager); // ends first, and leaves the hub
    Tree::Instance()->Remove(m_pHighest);
    Tree::Instance()->Remove(m_pLowest);
}

TEST_F(MshManagerTest, WithoutRangeValuesAndAddressTheReceiverWorksAllTheSame) {
    Tree::Instance()->Clear();
    MshManager manager;
    manager.CreateMshReceiver({});
    EXPECT_TRUE(manager.IsReceiver());
    const QStringList calls = m_clients.TakeCalls();
    EXPECT_TRUE(calls.contains(u"1 SetDeviceAddress"_s));
    EXPECT_EQ(calls.last(), u"1 Start"_s);
}

TEST_F(MshManagerTest, RolesAreTakenWhenTheSettingsSaySoAndTheFlagIsWritten) {
    MshManager manager;
    manager.CreateMshReceiverIfConfigured({}, u"MshReceive"_s, false);
    EXPECT_FALSE(manager.IsReceiver());
    EXPECT_FALSE(Settings().GetBool(u"MshReceive"_s, true)) << "the default is there now";
    manager.CreateMshReceiverIfConfigured({}, u"MshReceive"_s, true);
    EXPECT_FALSE(manager.IsReceiver()) << "the settings count, not the default";
    Settings().SetBool(u"MshReceive"_s, true);
    manager.CreateMshReceiverIfConfigured({}, u"MshReceive"_s, false);
    EXPECT_TRUE(manager.IsReceiver());

    manager.CreateMshSenderIfConfigured({}, nullptr, u"MshSend"_s, false);
    EXPECT_FALSE(manager.IsSender());
    Settings().SetBool(u"MshSend"_s, true);
    manager.CreateMshSenderIfConfigured({}, nullptr, u"MshSend"_s, false);
    EXPECT_TRUE(manager.IsSender());
    EXPECT_TRUE(Settings().GetBool(u"MshSend"_s, false));
}

TEST_F(MshManagerTest, LibraryThatIsNoClientIsRefusedWithAReason) {
    struct Case {
        QString library;
        QString reason;
    };
    for (const Case& each :
         {Case{QString(), u"there is no file"_s}, Case{u"libnocomponent.so"_s, u"is not a component"_s},
          Case{u"libotherversioncomponent.so"_s, u"version"_s}}) {
        m_clients.Install(each.library);
        MshManager manager;
        manager.CreateMshReceiver({});
        manager.CreateMshSender({}, nullptr);
        EXPECT_FALSE(manager.IsReceiver() || manager.IsSender()) << each.library.toStdString();
        EXPECT_TRUE(CfgCenter::GetLastError().contains(each.reason))
            << CfgCenter::GetLastError().toStdString();
        EXPECT_TRUE(CfgCenter::GetLastError().contains(m_clients.GetDirectory()))
            << "it says where it looked";
        EXPECT_EQ(m_pLowest->GetObserverCount(), 0U);
    }
}

TEST_F(MshManagerTest, ComponentOfAnotherKindLeavesTheManagerWithoutTheRole) {
    m_clients.Install(u"libgoodcomponent.so"_s);
    TraceLines trace;
    MshManager manager;
    manager.CreateMshReceiver({});
    manager.CreateMshSender({}, nullptr);
    EXPECT_FALSE(manager.IsReceiver() || manager.IsSender());
    ASSERT_EQ(trace.lines.size(), 2);
    EXPECT_TRUE(
        trace.lines[0].endsWith(u": The component \"MshClient.dll\" is not a client of the message hub."_s));
}

TEST_F(MshManagerTest, DestroyingWhatIsNotThereDoesNothing) {
    TraceLines trace;
    MshManager manager;
    manager.DestroyMshReceiver();
    manager.DestroyMshSender();
    EXPECT_TRUE(trace.lines.isEmpty());
}
