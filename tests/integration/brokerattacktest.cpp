#include "zancommon/zanserverorb.h"

#include "echo.hh"
#include "support/printing.h"

#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryFile>

#include <array>
#include <memory>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

// The station's broker in a process of its own, against somebody who sends it what is not a request.

namespace {

constexpr int PATIENCE_MS = 60000;

/// A connection to a port of the loopback interface, as an attacker has it.
class Connection {
public:
    explicit Connection(int port = 0)
        : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_address.sin_port = htons(static_cast<in_port_t>(port));
        if (port != 0) {
            EXPECT_EQ(::connect(m_socket, reinterpret_cast<sockaddr*>(&m_address), sizeof m_address), 0);
        }
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() { ::close(m_socket); }

    /// A port that is free while nobody has taken it again.
    int FindFreePort() {
        socklen_t size = sizeof m_address;
        EXPECT_EQ(::bind(m_socket, reinterpret_cast<sockaddr*>(&m_address), size), 0);
        EXPECT_EQ(::getsockname(m_socket, reinterpret_cast<sockaddr*>(&m_address), &size), 0);
        return ntohs(m_address.sin_port);
    }
    void Send(const QByteArray& bytes) const {
        EXPECT_EQ(::send(m_socket, bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL),
                  bytes.size());
    }
    /// Whether the other side has ended it, or does so within a time.
    [[nodiscard]] bool IsClosed(int patienceMs) const {
        const QDeadlineTimer deadline(patienceMs);
        std::array<char, 100> farewell{};
        for (;;) {
            pollfd readable{m_socket, POLLIN, 0};
            if (::poll(&readable, 1, static_cast<int>(deadline.remainingTime())) <= 0) {
                return false;
            }
            if (::recv(m_socket, farewell.data(), farewell.size(), 0) <= 0) {
                return true;
            }
        }
    }

private:
    int m_socket;
    sockaddr_in m_address{};
};

/// The echo server with the station's broker.
class Server {
public:
    explicit Server(rlim_t descriptors = 1024, int idleSeconds = 600) {
        EXPECT_TRUE(m_log.open());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"ORBendPoint"_s, u"giop:tcp:127.0.0.1:%1"_s.arg(port));
        environment.insert(u"ORBinConScanPeriod"_s, QString::number(idleSeconds));
        environment.insert(u"ORBscanGranularity"_s, u"1"_s);
        m_process.setProcessEnvironment(environment);
        m_process.setStandardErrorFile(m_log.fileName());
        m_process.setChildProcessModifier([descriptors] {
            const rlimit limit{descriptors, descriptors};
            setrlimit(RLIMIT_NOFILE, &limit);
        });
        m_process.start(QStringLiteral(ZAN_ECHO_SERVER), QStringList());
        isReady = m_process.waitForReadyRead(PATIENCE_MS) && m_process.readLine() == "ready\n";
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() { End(); }

    /// Ends it; returns what it has logged.
    QByteArray End() {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(PATIENCE_MS)) {
            m_process.kill();
            m_process.waitForFinished();
        }
        QFile log(m_log.fileName());
        return log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray();
    }
    /// Whether it still runs; time passes for it.
    [[nodiscard]] bool IsRunning() {
        m_process.waitForFinished(0);
        return m_process.state() == QProcess::Running;
    }
    [[nodiscard]] qsizetype CountDescriptors() const {
        return QDir(u"/proc/%1/fd"_s.arg(m_process.processId()))
            .entryList(QDir::AllEntries | QDir::System)
            .size();
    }

    const int port = Connection().FindFreePort();
    bool isReady = false;

private:
    QTemporaryFile m_log;
    QProcess m_process;
};

class BrokerAttackTest : public testing::Test {
protected:
    void SetUp() override {
        qputenv("ORBendPoint", "giop:tcp:127.0.0.1:" + QByteArray::number(GetOwnPort()));
    }
    void TearDown() override { ZANServerORB::Instance()->Finalise(); }

    /// Where this process's own broker listens: it is one for all tests.
    static int GetOwnPort() {
        static const int port = Connection().FindFreePort();
        return port;
    }

    static QString CallEcho(const Server& server, const char* text) {
        const CORBA::ORB_var orb = ZANServerORB::Instance()->GetORB();
        const CORBA::Object_var object =
            orb->string_to_object(u"corbaloc::127.0.0.1:%1/Echo"_s.arg(server.port).toLatin1());
        const CORBA::String_var answer = ZANTest::Echo::_unchecked_narrow(object)->Repeat(text);
        return QString::fromLatin1(answer.in());
    }

    /// The same as soon as the server takes connections again: those that were refused for their number may
    /// still be ending.
    static QString CallEchoWhenThereIsRoom(const Server& server, const char* text) {
        for (const QDeadlineTimer deadline(PATIENCE_MS);;) {
            try {
                return CallEcho(server, text);
            } catch (const CORBA::SystemException& exception) {
                if (deadline.hasExpired()) {
                    return QString::fromLatin1(exception._name());
                }
            }
        }
    }
};

/// Waits until so many of the connections are closed; returns how many are open then.
std::size_t CountWhenClosed(std::vector<std::unique_ptr<Connection>>& connections, std::size_t closedCount) {
    const QDeadlineTimer deadline(PATIENCE_MS);
    const std::size_t wanted = connections.size() - closedCount;
    while (connections.size() > wanted && !deadline.hasExpired()) {
        std::erase_if(connections, [](const auto& connection) { return connection->IsClosed(1); });
    }
    std::erase_if(connections, [](const auto& connection) { return connection->IsClosed(1); });
    return connections.size();
}

const QByteArray HEADER("GIOP\1\2\1\0", 8); // the length of the message follows

} // namespace

TEST_F(BrokerAttackTest, MalformedRequestsAreReportedOnceWithACount) {
    Server server;
    ASSERT_TRUE(server.isReady);
    for (int i = 0; i < 300; ++i) {
        const Connection connection(server.port);
        connection.Send(QByteArray("GIOP\x09\x09\x01\x00\x00\x00\x00\x00", 12));
        EXPECT_TRUE(connection.IsClosed(PATIENCE_MS));
    }
    EXPECT_EQ(CallEcho(server, "still there"), u"still there"_s);
    const QByteArray log = server.End();
    EXPECT_EQ(log.count("Detected GIOP"), 2) << log.toStdString();
    EXPECT_TRUE(log.contains("299 more times: omniORB: ")) << log.toStdString();
}

TEST_F(BrokerAttackTest, ConnectionsAreRefusedWellBelowTheDescriptorLimit) {
    constexpr std::size_t LIMIT = 64;
    Server server(LIMIT);
    ASSERT_TRUE(server.isReady);
    EXPECT_EQ(CallEcho(server, "before"), u"before"_s);
    std::vector<std::unique_ptr<Connection>> attack;
    for (int i = 0; i < 300; ++i) {
        attack.push_back(std::make_unique<Connection>(server.port));
    }
    // One of those that are allowed is this process's own.
    EXPECT_EQ(CountWhenClosed(attack, attack.size() - (LIMIT / 2 - 1)), LIMIT / 2 - 1);
    EXPECT_LT(server.CountDescriptors(), qsizetype{LIMIT});
    EXPECT_EQ(CallEcho(server, "meanwhile"), u"meanwhile"_s);

    attack.clear();
    const QDeadlineTimer deadline(PATIENCE_MS);
    while (Connection(server.port).IsClosed(100) && !deadline.hasExpired()) {
    }
    EXPECT_FALSE(deadline.hasExpired()) << "there is room again when they are gone";
}

TEST_F(BrokerAttackTest, NoMoreThan256ConnectionsAreTakenHoweverManyDescriptorsThereAre) {
    constexpr std::size_t LIMIT = 256;
    const rlimit descriptors{1024, 1024}; // for both ends of the connections
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &descriptors), 0);
    ASSERT_FALSE(CORBA::is_nil(ZANServerORB::Instance()->RootPoa()));
    std::vector<std::unique_ptr<Connection>> attack;
    for (std::size_t i = 0; i < LIMIT + 50; ++i) {
        attack.push_back(std::make_unique<Connection>(GetOwnPort()));
    }
    EXPECT_EQ(CountWhenClosed(attack, 50), LIMIT);
}

TEST_F(BrokerAttackTest, IdleConnectionIsClosedWhateverItHasBegun) {
    Server server(1024, 1);
    ASSERT_TRUE(server.isReady);
    const Connection silent(server.port);
    const Connection halfAHeader(server.port);
    halfAHeader.Send(HEADER.first(6));
    const Connection halfABody(server.port);
    halfABody.Send(HEADER + QByteArray("\x64\x00\x00\x00"
                                       "abc",
                                       7));
    EXPECT_TRUE(silent.IsClosed(PATIENCE_MS));
    EXPECT_TRUE(halfAHeader.IsClosed(PATIENCE_MS));
    EXPECT_TRUE(halfABody.IsClosed(PATIENCE_MS));
}

TEST_F(BrokerAttackTest, RequestWithAFragmentTooManyEndsNoServer) {
    Server server;
    ASSERT_TRUE(server.isReady);
    const QByteArray attack =
        QByteArray::fromHex("47494f50010201002e000000010000000300000000000000040000004563686f07000000"
                            "5265706561740000000000000600000068656c6c6f00" // a complete request of number 1
                            "47494f50010201070400000001000000");           // a fragment of the same number
    for (int i = 0; i < 5000 && server.IsRunning(); ++i) {
        const Connection connection(server.port);
        connection.Send(attack);
    }
    ASSERT_TRUE(server.IsRunning());
    EXPECT_EQ(CallEchoWhenThereIsRoom(server, "still there"), u"still there"_s);
}
