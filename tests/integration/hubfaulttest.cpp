#include "stddevicedefinition/stddevicedescriptors.h"
#include "support/eventloop.h"
#include "tolmappstartup/cfgcenter.h"
#include "valueframework/tree.h"
#include "valueframework/valueaccess.h"
#include "zancommon/mshmanager.h"
#include "zancommon/zanvaluenames.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <memory>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;
using ZANPlatform::CreateValue;
using ZANPlatform::GetOrCreateValue;

// What survives when the message hub is gone, with a client that talks to it over TCP.

namespace {

class HubFaultTest : public testing::Test {
protected:
    void SetUp() override {
        const QString components = m_directory.filePath(u"components"_s);
        ASSERT_TRUE(QDir().mkpath(components));
        ASSERT_TRUE(QFile::copy(QStringLiteral(ZAN_TEST_COMPONENTS "/libsockethubclient.so"),
                                components + u"/libmshclient.so"_s));
        ASSERT_TRUE(CfgCenter::SetComponentDirectory(components));
        ASSERT_TRUE(CfgCenter::SetConfigDirectory(m_directory.filePath(u"config"_s)));
        m_pFrequency = CreateValue<ValueNumericDouble>(ZANPath::SERVER.toString(), g_vdFrequency, nullptr);
        m_pLowest = GetOrCreateValue<ValueNumericDouble>(ZANPath::Control(ZANValueName::SYSMINFREQ));
        m_pLowest->SetValue(20e6, nullptr);
        GetOrCreateValue<ValueNumericDouble>(ZANPath::Control(ZANValueName::SYSMAXFREQ))
            ->SetValue(3e9, nullptr);
    }
    void TearDown() override {
        Tree::Instance()->Clear();
        CfgCenter::Close();
    }

    /// The hub appears, on the port that it had before.
    void StartHub() {
        m_hub = std::make_unique<QTcpServer>();
        ASSERT_TRUE(m_hub->listen(QHostAddress::LocalHost, m_port));
        m_port = m_hub->serverPort();
        CfgCenter::GetAppCfg(ICfg::View::Outputs).SetInt(u"MshCentralPort"_s, m_port);
    }
    /// Waits until a client has joined and has sent its range.
    QByteArray RangeToldToTheHub() {
        EXPECT_TRUE(SpinUntil([this] {
            m_pClient = m_pClient ? m_pClient : m_hub->nextPendingConnection();
            return m_pClient && m_pClient->canReadLine();
        }));
        return m_pClient ? m_pClient->readLine() : QByteArray();
    }
    void HubSends(const QByteArray& line) { m_pClient->write(line + '\n'); }
    [[nodiscard]] bool FrequencyBecomes(double hz) const {
        return SpinUntil([this, hz] { return m_pFrequency->GetValue() == hz; });
    }
    void StopHub() {
        m_pClient = nullptr; // belongs to the hub
        m_hub.reset();
    }

    QTemporaryDir m_directory;
    std::unique_ptr<QTcpServer> m_hub;
    QTcpSocket* m_pClient = nullptr;
    quint16 m_port = 0;
    ValueNumericDouble* m_pFrequency = nullptr;
    ValueNumericDouble* m_pLowest = nullptr;
};

} // namespace

TEST_F(HubFaultTest, WhatTheHubHasSetStaysWhenItGoesAwayAndTheClientIsBackWithTheHub) {
    StartHub();
    MshManager manager;
    manager.CreateMshReceiver({});
    EXPECT_EQ(RangeToldToTheHub(), "range 20000000,3000000000\n");
    HubSends("FRQ 121500000");
    EXPECT_TRUE(FrequencyBecomes(121.5e6));

    StopHub();
    m_pLowest->SetValue(30e6, nullptr); // nobody hears that now
    EXPECT_TRUE(manager.IsReceiver());
    EXPECT_EQ(m_pFrequency->GetValue(), 121.5e6);

    StartHub();
    EXPECT_EQ(RangeToldToTheHub(), "range 30000000,3000000000\n");
    HubSends("FRQ 243000000");
    EXPECT_TRUE(FrequencyBecomes(243e6));
}

TEST_F(HubFaultTest, HubThatIsNotThereHoldsNeitherTheApplicationNorItsEndUp) {
    StartHub(); // to have a port at which nobody listens
    StopHub();
    MshManager manager;
    manager.CreateMshReceiver({});
    EXPECT_TRUE(manager.IsReceiver());
    m_pLowest->SetValue(30e6, nullptr);
    manager.DestroyMshReceiver();
    EXPECT_FALSE(manager.IsReceiver());
}

TEST_F(HubFaultTest, ClientWhoseLibraryIsDeletedWorksOnAndIsMissedByTheNextThatJoins) {
    StartHub();
    MshManager manager;
    manager.CreateMshReceiver({});
    EXPECT_EQ(RangeToldToTheHub(), "range 20000000,3000000000\n");
    ASSERT_TRUE(QFile::remove(m_directory.filePath(u"components/libmshclient.so"_s)));
    m_pLowest->SetValue(30e6, nullptr);
    EXPECT_EQ(RangeToldToTheHub(), "range 30000000,3000000000\n");

    manager.DestroyMshReceiver();
    manager.CreateMshReceiver({});
    EXPECT_FALSE(manager.IsReceiver());
    EXPECT_TRUE(CfgCenter::GetLastError().contains(u"there is no file"_s))
        << CfgCenter::GetLastError().toStdString();
}
