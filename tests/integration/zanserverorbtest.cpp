#include "zancommon/zanserverorb.h"

#include "echo.hh"
#include "support/printing.h"
#include "support/tracelines.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <atomic>
#include <cstdlib>
#include <new>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

// The broker against a real second process, over a real socket.

// Tells when the object at one address is destroyed.
namespace {

std::atomic<const void*> watchedObject = nullptr;

} // namespace

void operator delete(void* memory) noexcept {
    const void* object = memory;
    watchedObject.compare_exchange_strong(object, nullptr);
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    operator delete(memory);
}

void* operator new(std::size_t size) {
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

namespace {

constexpr int PATIENCE_MS = 60000;

/// A TCP port of the loopback interface that was free a moment ago.
int GetFreePort() {
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    const bool isBound = ::bind(socket, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                         ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    ::close(socket);
    return isBound ? ntohs(address.sin_port) : -1;
}

/// The server of the test, which listens at an endpoint until this object is destroyed.
class EchoServer {
public:
    explicit EchoServer(const QString& endpoint) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"ORBendPoint"_s, endpoint);
        m_process.setProcessEnvironment(environment);
        m_process.start(QStringLiteral(ZAN_ECHO_SERVER), QStringList());
        isReady = m_process.waitForReadyRead(PATIENCE_MS) && m_process.readLine() == "ready\n";
    }
    EchoServer(const EchoServer&) = delete;
    EchoServer& operator=(const EchoServer&) = delete;
    ~EchoServer() {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(PATIENCE_MS)) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }

    bool isReady = false;

private:
    QProcess m_process;
};

ZANTest::Echo_var FindEcho(const QString& address) {
    const CORBA::ORB_var orb = ZANServerORB::Instance()->GetORB();
    const CORBA::Object_var object =
        orb->string_to_object((u"corbaloc:"_s + address + u"/Echo"_s).toLatin1());
    return ZANTest::Echo::_unchecked_narrow(object);
}

QString CallEcho(const QString& address, const char* text) {
    const CORBA::String_var answer = FindEcho(address)->Repeat(text);
    return QString::fromLatin1(answer.in());
}

class ZANServerORBTest : public testing::Test {
protected:
    void SetUp() override { qputenv("ORBendPoint", "giop:tcp:127.0.0.1:"); }
    void TearDown() override { ZANServerORB::Finalise(); }
};

} // namespace

TEST_F(ZANServerORBTest, InstanceIsOneUntilItIsFinalised) {
    ZANServerORB* const first = ZANServerORB::Instance();
    EXPECT_EQ(ZANServerORB::Instance(), first);
    first->Finalise();
    EXPECT_FALSE(CORBA::is_nil(ZANServerORB::Instance()->GetORB()));
    EXPECT_FALSE(CORBA::is_nil(ZANServerORB::Instance()->RootPoa()));
}

TEST_F(ZANServerORBTest, ShutdownAndFinaliseNeedNoInstance) {
    ZANServerORB::Shutdown();
    ZANServerORB::Finalise();
    EXPECT_FALSE(CORBA::is_nil(ZANServerORB::Instance()->GetORB()));
    ZANServerORB::Shutdown();
    ZANServerORB::Finalise();
    ZANServerORB::Finalise();
    ZANServerORB::Shutdown();
}

TEST_F(ZANServerORBTest, RootAdapterIsActiveFromTheStart) {
    const PortableServer::POA_var root = ZANServerORB::Instance()->RootPoa();
    const PortableServer::POAManager_var manager = root->the_POAManager();
    EXPECT_EQ(manager->get_state(), PortableServer::POAManager::ACTIVE);
}

TEST_F(ZANServerORBTest, ManagerOfTheRootAdapterIsGoneWithTheBroker) {
    PortableServer::POAManager_var manager = ZANServerORB::Instance()->RootPoa()->the_POAManager();
    watchedObject = dynamic_cast<const void*>(manager.in());
    const CORBA::ORB_var orb = ZANServerORB::Instance()->GetORB();
    ZANServerORB::Finalise();
    orb->destroy();
    manager = PortableServer::POAManager::_nil();
    EXPECT_EQ(watchedObject.load(), nullptr) << "somebody still holds it";
}

TEST_F(ZANServerORBTest, ShutdownLeavesTheBrokerUsable) {
    ZANServerORB::Instance()->Shutdown();
    ZANServerORB::Instance()->Shutdown();
    const CORBA::ORB_var orb = ZANServerORB::Instance()->GetORB();
    ASSERT_FALSE(CORBA::is_nil(orb));
    EXPECT_FALSE(CORBA::is_nil(ZANServerORB::Instance()->InsPoa()));
    EXPECT_FALSE(CORBA::is_nil(ZANServerORB::Instance()->RootPoa()));
}

TEST_F(ZANServerORBTest, CopyRefersToTheSameBroker) {
    ZANServerORB copy(*ZANServerORB::Instance());
    EXPECT_TRUE(CORBA::ORB_var(copy.GetORB())->_is_equivalent(ZANServerORB::Instance()->GetORB()) ||
                CORBA::ORB_var(copy.GetORB()).in() ==
                    CORBA::ORB_var(ZANServerORB::Instance()->GetORB()).in());
    copy = *ZANServerORB::Instance();
    ZANServerORB::Instance()->Finalise();
    EXPECT_FALSE(CORBA::is_nil(copy.RootPoa())) << "it lives on in the copy";
}

TEST_F(ZANServerORBTest, ObjectWithAReadableKeyIsCalledOverTcp) {
    const int port = GetFreePort();
    const EchoServer server(u"giop:tcp:127.0.0.1:%1"_s.arg(port));
    ASSERT_TRUE(server.isReady);
    EXPECT_EQ(CallEcho(u":127.0.0.1:%1"_s.arg(port), "over loopback"), u"over loopback"_s);
}

TEST_F(ZANServerORBTest, ObjectWithAReadableKeyIsCalledOverAUnixSocket) {
    const QTemporaryDir directory;
    const QString path = directory.filePath(u"df.sock"_s);
    const EchoServer server(u"giop:unix:"_s + path);
    ASSERT_TRUE(server.isReady);
    EXPECT_EQ(CallEcho(u"omniunix:"_s + path + u':', "over a file"), u"over a file"_s);
}

TEST_F(ZANServerORBTest, ClientOutlivesItsServerAndFindsTheNextOne) {
    const int port = GetFreePort();
    const QString address = u":127.0.0.1:%1"_s.arg(port);
    const QString endpoint = u"giop:tcp:127.0.0.1:%1"_s.arg(port);
    {
        const EchoServer server(endpoint);
        ASSERT_TRUE(server.isReady);
        EXPECT_EQ(CallEcho(address, "first"), u"first"_s);
    }
    EXPECT_THROW(CallEcho(address, "nobody"), CORBA::SystemException);
    const EchoServer server(endpoint);
    ASSERT_TRUE(server.isReady);
    EXPECT_EQ(CallEcho(address, "second"), u"second"_s);
}

TEST_F(ZANServerORBTest, CallTimesOutWhenTheServerDoesNotAnswer) {
    const int port = GetFreePort();
    const EchoServer server(u"giop:tcp:127.0.0.1:%1"_s.arg(port));
    ASSERT_TRUE(server.isReady);
    const ZANTest::Echo_var echo = FindEcho(u":127.0.0.1:%1"_s.arg(port));
    omniORB::setClientCallTimeout(echo, 100);
    EXPECT_THROW(echo->Wait(PATIENCE_MS), CORBA::SystemException);
    omniORB::setClientCallTimeout(echo, 0);
    const CORBA::String_var answer = echo->Repeat("still there");
    EXPECT_STREQ(answer.in(), "still there");
}

TEST_F(ZANServerORBTest, CallsOfTheProcessTimeOutAfterTenSeconds) {
    const int port = GetFreePort();
    const EchoServer server(u"giop:tcp:127.0.0.1:%1"_s.arg(port));
    ASSERT_TRUE(server.isReady);
    const ZANTest::Echo_var echo = FindEcho(u":127.0.0.1:%1"_s.arg(port));
    QElapsedTimer timer;
    timer.start();
    EXPECT_THROW(echo->Wait(PATIENCE_MS), CORBA::SystemException);
    EXPECT_GE(timer.elapsed(), 9900);
    EXPECT_LT(timer.elapsed(), PATIENCE_MS) << "and not when the server answers";
}

TEST_F(ZANServerORBTest, FailingInitialReferenceReachesTheCallerAfterItsTraceLine) {
    ZANServerORB& broker = *ZANServerORB::Instance();
    const CORBA::ORB_var orb = broker.GetORB();
    orb->destroy(); // what another holder of the broker may do
    TraceLines trace;
    EXPECT_THROW(static_cast<void>(broker.RootPoa()), CORBA::Exception);
    EXPECT_THROW(static_cast<void>(broker.InsPoa()), CORBA::Exception);
    ASSERT_EQ(trace.lines.size(), 2);
    EXPECT_TRUE(trace.lines[0].endsWith(u": Could not access RootPOA"_s)) << trace.lines[0].toStdString();
    EXPECT_TRUE(trace.lines[1].endsWith(u": Could not access InsPOA"_s)) << trace.lines[1].toStdString();
    EXPECT_TRUE(trace.lines[1].startsWith(u"devicecontrol\\directionfinder\\zancommon\\zanserverorb("_s));
}

TEST_F(ZANServerORBTest, ConstructionThatFailsIsTracedAndNeverThrows) {
    qputenv("ORBendPoint", "giop:nonsense:");
    TraceLines trace;
    ZANServerORB* broker = nullptr;
    EXPECT_NO_THROW(broker = ZANServerORB::Instance());
    ASSERT_NE(broker, nullptr);
    ASSERT_FALSE(trace.lines.isEmpty());
    EXPECT_TRUE(trace.lines.last().endsWith(
        u": ZANServerORB::ZANServerORB(): Exception caught in constructor of ZANServerORB !!!"_s))
        << trace.lines.last().toStdString();
}

TEST_F(ZANServerORBTest, NothingIsTracedWhileTheTraceIsOff) {
    qputenv("ORBendPoint", "giop:nonsense:");
    TraceLines trace;
    ErrorHandler::Instance().SetTraceMask(TraceBit::ASSERTION);
    ZANServerORB::Instance();
    EXPECT_TRUE(trace.lines.isEmpty());
}
