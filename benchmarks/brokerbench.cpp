// A call to a server in another process over loopback TCP, through the broker. The yardstick is the same call
// through an ORB that the program has initialised itself.

#include "echo.hh"
#include "zancommon/zanserverorb.h"

#include <QProcess>
#include <QProcessEnvironment>

#include <benchmark/benchmark.h>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int PATIENCE_MS = 60000;

/// A TCP port of the loopback interface that was free a moment ago.
int GetFreePort() {
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    ::bind(socket, reinterpret_cast<sockaddr*>(&address), size);
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    ::close(socket);
    return ntohs(address.sin_port);
}

/// The server process. It is ended by the destructor.
class EchoServer {
public:
    EchoServer() {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"ORBendPoint"_s, u"giop:tcp:127.0.0.1:%1"_s.arg(m_port));
        m_process.setProcessEnvironment(environment);
        m_process.start(QStringLiteral(ZAN_ECHO_SERVER), QStringList());
        m_process.waitForReadyRead(PATIENCE_MS);
    }
    EchoServer(const EchoServer&) = delete;
    EchoServer& operator=(const EchoServer&) = delete;
    ~EchoServer() {
        m_process.closeWriteChannel();
        m_process.waitForFinished(PATIENCE_MS);
    }

    ZANTest::Echo_var Find(CORBA::ORB_ptr orb) const {
        const CORBA::Object_var object =
            orb->string_to_object(u"corbaloc::127.0.0.1:%1/Echo"_s.arg(m_port).toLatin1());
        return ZANTest::Echo::_unchecked_narrow(object);
    }

private:
    const int m_port = GetFreePort();
    QProcess m_process;
};

void Call(benchmark::State& state, CORBA::ORB_ptr orb) {
    const EchoServer server;
    const ZANTest::Echo_var echo = server.Find(orb);
    for (auto _ : state) {
        const CORBA::String_var answer = echo->Repeat("127500000");
        benchmark::DoNotOptimize(answer.in());
    }
}

void CallWithoutBroker(benchmark::State& state) {
    int argumentCount = 0;
    const CORBA::ORB_var orb = CORBA::ORB_init(argumentCount, nullptr, "");
    Call(state, orb);
}

void CallThroughBroker(benchmark::State& state) {
    const CORBA::ORB_var orb = ZANServerORB::Instance()->GetORB();
    Call(state, orb);
}

// In this order: the first one runs before there is a broker.
BENCHMARK(CallWithoutBroker)->UseRealTime();
BENCHMARK(CallThroughBroker)->UseRealTime();

} // namespace

int main(int argc, char** argv) {
    qputenv("ORBendPoint", "giop:tcp:127.0.0.1:");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    ZANServerORB::Instance()->Finalise();
    return 0;
}
