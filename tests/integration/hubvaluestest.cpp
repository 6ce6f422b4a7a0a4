#include "zanserver/hubvalues.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "support/eventloop.h"
#include "support/hubclients.h"
#include "support/observers.h"
#include "support/printing.h"
#include "support/storedsettings.h"
#include "valueframework/tree.h"
#include "zancommon/zanpath.h"
#include "zancommon/zanvaluenames.h"
#include "zanserver/station.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using namespace StdDeviceDefinition;

// The values of the hub with a client that is loaded at run time.

namespace {

constexpr int SOON_MS = 1;

class HubValuesTest : public testing::Test {
protected:
    static QString Text(const ValueDescriptor& descriptor) {
        return Tree::Instance()->GetValue(ZANPath::Server(descriptor))->GetStringValue();
    }
    /// Sets a value as a display does. False when the value itself refuses it.
    static bool Set(const ValueDescriptor& descriptor, const QString& text, IObserver* originator = nullptr) {
        return Tree::Instance()->GetValue(ZANPath::Server(descriptor))->SetStringValue(text, originator);
    }
    static ICfg& Settings() { return CfgCenter::GetAppCfg(ICfg::View::Outputs); }

    void Make() { m_values.emplace(SOON_MS); }
    /// The text is refused, and nothing is done about it.
    void ExpectRefused(const ValueDescriptor& descriptor, const QString& text, const QString& reason) {
        const QString present = Text(descriptor);
        EXPECT_TRUE(Set(descriptor, text));
        EXPECT_EQ(Text(descriptor), present);
        EXPECT_EQ(Text(g_vdHubRefused), reason);
        EXPECT_EQ(m_clients.TakeCalls(), QStringList());
    }

    HubClients m_clients;
    StoredSettings m_settings;
    Station m_station;
    std::optional<HubValues> m_values;
};

} // namespace

TEST_F(HubValuesTest, WithoutSettingsTheHubIsOff) {
    Make();
    EXPECT_EQ(Text(g_vdHubEnabled), u"0"_s);
    EXPECT_EQ(Text(g_vdHubAddress), u"127.0.0.1"_s);
    EXPECT_EQ(Text(g_vdHubPort), u"4500"_s);
    EXPECT_EQ(Text(g_vdHubState), u"Off"_s);
    EXPECT_EQ(Text(g_vdHubLastError), QString());
    EXPECT_EQ(Tree::Instance()->GetValue(ZANPath::Server(g_vdHubLastErrorTime))->GetState(),
              TValueState::NotMeasured);
    EXPECT_EQ(m_clients.TakeCalls(), QStringList());
    m_values.reset();
    EXPECT_FALSE(m_settings.CloseAndRead().contains(u"Msh"_s)) << "nothing was set";
}

TEST_F(HubValuesTest, StationJoinsWhenTheSettingsSayIt) {
    Settings().SetBool(u"MshReceiver_Enabled"_s, true);
    Settings().SetString(u"MshCentralAddress"_s, u"hub.example"_s);
    Settings().SetInt(u"MshCentralPort"_s, 1883);
    Settings().SetString(u"MshClientName"_s, u"north"_s);
    Settings().SetString(u"AutoCoupleTargets"_s, u"south"_s);
    Make();
    EXPECT_EQ(Text(g_vdHubState), u"Started"_s);
    EXPECT_EQ(Text(g_vdHubAddress), u"hub.example"_s);
    EXPECT_EQ(Text(g_vdHubPort), u"1883"_s);
    EXPECT_EQ(Text(g_vdHubClientName), u"north"_s);
    EXPECT_EQ(Text(g_vdHubTargets), u"south"_s);
    const QStringList calls = m_clients.TakeCalls();
    for (const QString& call : {u"1 SetClientName north"_s, u"1 SetCentralAddress hub.example 1883"_s,
                                u"1 SetAutoCoupleTargets south"_s, u"1 SetReceiver true"_s, u"1 Start"_s,
                                u"1 SetFrequencyRange 300000,3000000000"_s}) {
        EXPECT_TRUE(calls.contains(call)) << call.toStdString() << " in " << calls.join(u'\n').toStdString();
    }
    m_values.reset();
    EXPECT_EQ(m_clients.TakeCalls(), QStringList{u"1 destroyed"_s});
}

TEST_F(HubValuesTest, WhatIsSetTakesEffectAtOnceAndIsKept) {
    Make();
    EXPECT_TRUE(Set(g_vdHubAddress, u"10.0.0.7"_s));
    EXPECT_TRUE(Set(g_vdHubClientName, u"west"_s));
    EXPECT_EQ(m_clients.TakeCalls(), QStringList()) << "it is off";
    EXPECT_TRUE(Set(g_vdHubEnabled, u"true"_s));
    EXPECT_EQ(Text(g_vdHubState), u"Started"_s);
    EXPECT_TRUE(m_clients.TakeCalls().contains(u"1 SetCentralAddress 10.0.0.7 4500"_s));
    EXPECT_TRUE(Set(g_vdHubPort, u"1883"_s));
    EXPECT_TRUE(Set(g_vdHubTargets, u"east,south"_s));
    const QStringList calls = m_clients.TakeCalls();
    EXPECT_EQ(calls.first(), u"1 destroyed"_s);
    EXPECT_EQ(calls.count(u"1 SetCentralAddress 10.0.0.7 1883"_s), 2) << "started again with each";
    EXPECT_TRUE(calls.contains(u"1 SetAutoCoupleTargets east,south"_s));
    EXPECT_TRUE(SpinUntil([this] {
        const QString settings = m_settings.Read();
        return settings.contains(u"MshReceiver_Enabled=true"_s) &&
               settings.contains(u"MshCentralAddress=10.0.0.7"_s) &&
               settings.contains(u"MshCentralPort=1883"_s) && settings.contains(u"MshClientName=west"_s) &&
               settings.contains(u"AutoCoupleTargets=\"east,south\""_s);
    })) << m_settings.Read().toStdString();
    EXPECT_TRUE(Set(g_vdHubEnabled, u"false"_s));
    EXPECT_EQ(Text(g_vdHubState), u"Off"_s);
    EXPECT_EQ(m_clients.TakeCalls(), QStringList{u"1 destroyed"_s});
}

TEST_F(HubValuesTest, WithoutAClientItHasFailedAndCanBeSwitchedOffAndOnAgain) {
    m_clients.Install({});
    Make();
    EXPECT_TRUE(Set(g_vdHubEnabled, u"true"_s));
    EXPECT_EQ(Text(g_vdHubEnabled), u"1"_s) << "that is what the operator wants";
    EXPECT_EQ(Text(g_vdHubState), u"Failed"_s);
    EXPECT_TRUE(Text(g_vdHubLastError).startsWith(u"there is no client of the message hub: "_s));
    EXPECT_EQ(m_values->GetProblem(), Text(g_vdHubLastError));
    EXPECT_EQ(Tree::Instance()->GetValue(ZANPath::Server(g_vdHubLastErrorTime))->GetState(),
              TValueState::Valid);
    m_clients.Install(u"libhubclient.so"_s);
    EXPECT_TRUE(Set(g_vdHubEnabled, u"false"_s));
    EXPECT_TRUE(Set(g_vdHubEnabled, u"true"_s));
    EXPECT_EQ(Text(g_vdHubState), u"Started"_s);
    EXPECT_EQ(m_values->GetProblem(), QString());
    EXPECT_NE(Text(g_vdHubLastError), QString()) << "it was the last one";
}

TEST_F(HubValuesTest, TextThatCannotBeUsedIsRefused) {
    Settings().SetBool(u"MshReceiver_Enabled"_s, true);
    Make();
    m_clients.TakeCalls();
    ExpectRefused(g_vdHubAddress, {}, u"the hub has no address"_s);
    ExpectRefused(g_vdHubAddress, u"two hubs"_s, u"the address of the hub has blanks"_s);
    ExpectRefused(g_vdHubAddress, u"hub\n"_s, u"the address of the hub has characters that are no text"_s);
    ExpectRefused(g_vdHubAddress, QString(1 << 20, u'x'),
                  u"the address of the hub is longer than 253 bytes"_s);
    ExpectRefused(g_vdHubClientName, QString(QChar::Null),
                  u"the name of the client has characters that are no text"_s);
    ExpectRefused(g_vdHubClientName, QString(127, QChar(0xE4)),
                  u"the name of the client is longer than 253 bytes"_s);
    ExpectRefused(g_vdHubTargets, QString(4097, u'x'),
                  u"the list of the clients to couple to is longer than 4096 bytes"_s);
    EXPECT_FALSE(Set(g_vdHubPort, u"0"_s));
    EXPECT_FALSE(Set(g_vdHubPort, u"65536"_s));
    EXPECT_EQ(m_clients.TakeCalls(), QStringList());
    EXPECT_TRUE(Set(g_vdHubClientName, u"south"_s));
    EXPECT_EQ(Text(g_vdHubRefused), QString()) << "until the next change";
}

TEST_F(HubValuesTest, StateOfAValueAndAChangeThatIsTakenBackDoNotJoinTheHubAgain) {
    Settings().SetBool(u"MshReceiver_Enabled"_s, true);
    Make();
    m_clients.TakeCalls();
    auto& address = *Tree::Instance()->Find<ValueString>(ZANPath::Server(g_vdHubAddress));
    address.SetState(TValueState::NotMeasured, nullptr);
    {
        const auto transaction = address.CreateTransaction({TChangeCode::Changed}, nullptr);
        const QString present = address.GetValue();
        address.SetValue(u"other"_s);
        address.SetValue(present);
    }
    EXPECT_EQ(m_clients.TakeCalls(), QStringList());
    EXPECT_EQ(Text(g_vdHubState), u"Started"_s);
}

TEST_F(HubValuesTest, StoredTextThatCannotBeUsedDoesNotKeepItFromBeingSwitchedOff) {
    Settings().SetString(u"MshClientName"_s, QString(300, u'x'));
    Settings().SetBool(u"MshReceiver_Enabled"_s, true);
    Make();
    EXPECT_TRUE(Set(g_vdHubEnabled, u"false"_s));
    EXPECT_EQ(Text(g_vdHubEnabled), u"0"_s);
    EXPECT_EQ(Text(g_vdHubState), u"Off"_s);
}

TEST_F(HubValuesTest, StoredPortThatIsNoneIsTheDefault) {
    Settings().SetInt(u"MshCentralPort"_s, 70000);
    Make();
    EXPECT_EQ(Text(g_vdHubPort), u"4500"_s);
}

TEST_F(HubValuesTest, FrequencyRangeFollowsTheDevice) {
    Settings().SetBool(u"MshReceiver_Enabled"_s, true);
    Make();
    m_clients.TakeCalls();
    const auto enabled = ZANPath::DEVICE_NODE.toString() + u"/Ant0/AntEnabled"_s;
    ASSERT_TRUE(Tree::Instance()->Find<ValueBool>(enabled));
    Tree::Instance()->Find<ValueBool>(enabled)->SetValue(false);
    Tree::Instance()->Find<ValueString>(ZANPath::Device(g_vdCfgModifyTime))->SetValue(u"later"_s);
    EXPECT_TRUE(SpinUntil(
        [this] { return m_clients.TakeCalls().contains(u"1 SetFrequencyRange 30000001,3000000000"_s); }));
}

TEST_F(HubValuesTest, OriginatorIsNotToldOfItsOwnChangeAndIsToldThatItGoesBack) {
    Make();
    auto& address = *Tree::Instance()->Find<ValueString>(ZANPath::Server(g_vdHubAddress));
    CodeObserver display;
    address.AddObserver(&display);
    EXPECT_TRUE(address.SetValue(u"hub"_s, &display));
    EXPECT_TRUE(display.codes.empty());
    EXPECT_TRUE(address.SetValue({}, &display));
    EXPECT_EQ(display.codes, std::vector{TChangeCode::Changed});
    EXPECT_EQ(address.GetValue(), u"hub"_s);
}
