#include "zanserver/gpsdclient.h"

#include "support/eventloop.h"
#include "support/gpsdserver.h"
#include "support/printing.h"
#include "support/tracelines.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include <dlfcn.h>
#include <netdb.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ZANServer;

/// The system's, which also knows a host of two addresses: gpsd listens at the second one.
// NOLINTNEXTLINE(cert-dcl50-cpp, readability-inconsistent-declaration-parameter-name)
extern "C" [[gnu::visibility("default")]] int getaddrinfo(const char* __restrict host,
                                                          const char* __restrict service,
                                                          const addrinfo* __restrict hints,
                                                          addrinfo** __restrict result) {
    static auto* const ask = reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
    if (!host || host != std::string_view("two.example")) {
        return ask(host, service, hints, result);
    }
    if (const int error = ask("127.0.0.2", service, hints, result); error != 0) {
        return error;
    }
    return ask("127.0.0.1", service, hints, &(*result)->ai_next);
}

namespace {

using EState = GpsdClient::EState;

constexpr const char* REPORT = R"({"class":"TPV","device":"/dev/ttyUSB0","mode":3,"lat":54.5,"lon":8.25})";

/// So short that a test need not wait for it, and so long that it is not over by itself.
constexpr GpsdClient::Timing QUICK{10ms, 40ms, 1min};

class GpsdClientTest : public testing::Test {
protected:
    void Start(GpsdAddress address, const GpsdClient::Timing& timing = QUICK) {
        m_client = std::make_unique<GpsdClient>(
            std::move(address), timing, [this](const GpsdReport& report) { m_reports.push_back(report); },
            [this] { NoteState(); });
        m_client->Start();
    }
    void Start(const GpsdServer& server, const GpsdClient::Timing& timing = QUICK) {
        Start({u"127.0.0.1"_s, server.GetPort()}, timing);
    }
    [[nodiscard]] bool AwaitState(EState state) const {
        return SpinUntil([&] { return m_client->GetState() == state; });
    }
    [[nodiscard]] bool AwaitFailure(const QString& text) const {
        return SpinUntil([&] { return m_client->GetLastFailure().contains(text); });
    }
    /// How many reports of positions have come.
    [[nodiscard]] std::ptrdiff_t CountFixes() const {
        return std::ranges::count(m_reports, GpsdReport::Kind::Fix, &GpsdReport::kind);
    }
    [[nodiscard]] bool AwaitFixes(std::ptrdiff_t count) const {
        return SpinUntil([&] { return CountFixes() == count; });
    }

    std::vector<GpsdReport> m_reports;
    std::vector<EState> m_states;
    QElapsedTimer m_sinceFailure;
    std::vector<qint64> m_pauses; // ms from each failure to the next attempt
    std::unique_ptr<GpsdClient> m_client;

private:
    void NoteState() {
        if (!m_client) {
            return; // it is being made
        }
        const EState state = m_client->GetState();
        if (state == EState::CONNECTING && m_sinceFailure.isValid()) {
            m_pauses.push_back(m_sinceFailure.elapsed());
        }
        if (state == EState::WAITING) {
            m_sinceFailure.start();
        }
        m_states.push_back(state);
    }
};

} // namespace

TEST_F(GpsdClientTest, AsksForAllReportsAndHandsThemOver) {
    const GpsdServer server;
    Start(server);
    ASSERT_TRUE(AwaitState(EState::CONNECTED));
    EXPECT_TRUE(
        SpinUntil([&] { return server.requests.contains("?WATCH={\"enable\":true,\"json\":true};"); }));
    server.Send(REPORT);
    ASSERT_TRUE(AwaitFixes(1));
    EXPECT_EQ(m_reports.back().latitude, 54.5);
    EXPECT_EQ(m_states, (std::vector{EState::CONNECTING, EState::CONNECTED}));
    EXPECT_EQ(m_client->GetLastFailure(), QString());
}

TEST_F(GpsdClientTest, RefusedConnectionIsSoughtAgainWithGrowingPauses) {
    std::optional<GpsdServer> server(std::in_place);
    const quint16 port = server->GetPort();
    server.reset();
    Start({u"127.0.0.1"_s, port});
    ASSERT_TRUE(SpinUntil([&] { return m_pauses.size() == 5; }));
    EXPECT_EQ(m_client->GetLastFailure(), u"127.0.0.1:%1: Connection refused"_s.arg(port));
    // The pauses are the rule here; a timer of Qt may be early by a twentieth.
    const std::vector<qint64> shortest{9, 19, 38, 38, 38};
    for (std::size_t i = 0; i < shortest.size(); ++i) {
        EXPECT_GE(m_pauses[i], shortest[i]) << i;
    }
    server.emplace(GpsdServer::GREETING, port);
    EXPECT_TRUE(AwaitState(EState::CONNECTED)) << "it is there now";
    EXPECT_NE(m_client->GetLastFailure(), QString()) << "the last failure is still told";
}

TEST_F(GpsdClientTest, GpsdThatIsRestartedIsFoundAgainAndAskedAgain) {
    std::optional<GpsdServer> server(std::in_place);
    const quint16 port = server->GetPort();
    Start(*server);
    ASSERT_TRUE(AwaitState(EState::CONNECTED));
    for (int i = 0; i < 3; ++i) {
        server.reset();
        ASSERT_TRUE(AwaitState(EState::WAITING));
        server.emplace(GpsdServer::GREETING, port);
        ASSERT_TRUE(AwaitState(EState::CONNECTED));
        ASSERT_TRUE(SpinUntil([&] { return server->requests.contains("?WATCH"); }));
        server->Send(REPORT);
        ASSERT_TRUE(AwaitFixes(i + 1));
    }
}

TEST_F(GpsdClientTest, LossIsTracedOnceAndSoIsItsEnd) {
    const TraceLines trace;
    std::optional<GpsdServer> server(std::in_place);
    const quint16 port = server->GetPort();
    server.reset();
    Start({u"127.0.0.1"_s, port});
    ASSERT_TRUE(SpinUntil([&] { return m_pauses.size() == 3; }));
    server.emplace(GpsdServer::GREETING, port);
    ASSERT_TRUE(AwaitState(EState::CONNECTED));
    server->Send(REPORT);
    ASSERT_TRUE(AwaitFixes(1));
    server->Send(REPORT);
    ASSERT_TRUE(AwaitFixes(2));
    const QString address = u"127.0.0.1:%1"_s.arg(port);
    ASSERT_EQ(trace.lines.size(), 2);
    EXPECT_TRUE(trace.lines.front().endsWith(
        u"gpsd is not connected, and is tried again: %1: Connection refused"_s.arg(address)));
    EXPECT_TRUE(trace.lines.back().endsWith(u"gpsd is connected again: %1"_s.arg(address)));
}

TEST_F(GpsdClientTest, ServerThatGreetsAndDropsIsSoughtWithGrowingPauses) {
    const GpsdServer server;
    Start(server);
    for (int i = 1; i <= 3; ++i) {
        ASSERT_TRUE(SpinUntil([&] { return server.clientCount == i; }));
        ASSERT_TRUE(AwaitState(EState::CONNECTED));
        server.Drop();
        ASSERT_TRUE(AwaitState(EState::WAITING));
    }
    ASSERT_TRUE(AwaitState(EState::CONNECTED));
    EXPECT_GE(m_pauses.back(), 38); // the pauses are the rule here
}

TEST_F(GpsdClientTest, EveryAddressOfTheHostIsTried) {
    const GpsdServer server; // "localhost" may have an address of IPv6 first, at which nothing listens
    Start({u"localhost"_s, server.GetPort()});
    EXPECT_TRUE(AwaitState(EState::CONNECTED));
    EXPECT_EQ(m_client->GetLastFailure(), QString());
}

TEST_F(GpsdClientTest, AddressThatRefusesIsFollowedByTheNextOneOfTheHost) {
    const GpsdServer server;
    Start({u"two.example"_s, server.GetPort()});
    EXPECT_TRUE(AwaitState(EState::CONNECTED));
    EXPECT_EQ(m_states, (std::vector{EState::CONNECTING, EState::CONNECTED}));
    EXPECT_EQ(m_client->GetLastFailure(), QString());
}

TEST_F(GpsdClientTest, HostWithoutAnAddressIsAFailureLikeTheOthers) {
    Start({u"no..host"_s, 2947});
    EXPECT_TRUE(AwaitFailure(u"no..host:2947: "_s));
    EXPECT_TRUE(SpinUntil([&] { return m_pauses.size() == 2; }));
}

TEST_F(GpsdClientTest, ServerThatIsNotGpsdIsLeftWithItsFirstLineAsTheReason) {
    const GpsdServer server("HTTP/1.1 400 Bad Request");
    Start(server);
    EXPECT_TRUE(AwaitFailure(u"it is not gpsd: it begins with \"HTTP/1.1 400 Bad Request\""_s));
    EXPECT_FALSE(std::ranges::count(m_states, EState::CONNECTED));
    EXPECT_TRUE(m_reports.empty());
}

TEST_F(GpsdClientTest, ServerThatDoesNotGreetIsGivenUp) {
    const GpsdServer server("");
    Start(server, {10ms, 40ms, 50ms});
    EXPECT_TRUE(AwaitFailure(u"no answer within 50 ms"_s));
    EXPECT_TRUE(SpinUntil([&] { return server.clientCount == 2; })) << "and tried again";
}

TEST_F(GpsdClientTest, GpsdWithoutAReceiverIsAskedWhetherItIsThereAndKept) {
    GpsdServer server;
    Start(server, {10ms, 40ms, 50ms});
    ASSERT_TRUE(SpinUntil([&] { return server.requests.count("?VERSION;") >= 3; }));
    EXPECT_EQ(server.clientCount, 1);
    EXPECT_EQ(m_client->GetState(), EState::CONNECTED);
    server.doesAnswerQuestions = false; // it stalls
    EXPECT_TRUE(AwaitFailure(u"no answer within 50 ms"_s));
}

TEST_F(GpsdClientTest, HalfALineWaitsForItsOtherHalf) {
    const GpsdServer server;
    Start(server);
    ASSERT_TRUE(AwaitState(EState::CONNECTED));
    const QByteArray report = REPORT;
    server.SendRaw(report.first(40));
    CountWakeUps(); // it arrives
    EXPECT_EQ(CountFixes(), 0);
    server.SendRaw(report.sliced(40) + "\r\n");
    ASSERT_TRUE(AwaitFixes(1));
    EXPECT_EQ(m_reports.back().longitude, 8.25);
    EXPECT_EQ(m_client->GetLastFailure(), QString());
}

TEST_F(GpsdClientTest, HalfALineAtTheEndOfAConnectionIsNoReport) {
    const GpsdServer server;
    Start(server);
    ASSERT_TRUE(AwaitState(EState::CONNECTED));
    server.SendRaw(QByteArray(REPORT).chopped(4));
    server.Drop();
    ASSERT_TRUE(AwaitState(EState::WAITING));
    ASSERT_TRUE(AwaitState(EState::CONNECTED));
    server.Send(REPORT);
    ASSERT_TRUE(AwaitFixes(1)) << "the half is not put in front of the first line of the next connection";
}

TEST_F(GpsdClientTest, LineThatIsNoReportIsToldAndThoseAfterItAreRead) {
    const GpsdServer server;
    Start(server);
    ASSERT_TRUE(AwaitState(EState::CONNECTED));
    server.Send("one\x01two " + QByteArray(100, 'x'));
    server.Send(REPORT);
    ASSERT_TRUE(AwaitFixes(1));
    EXPECT_EQ(m_client->GetLastFailure(),
              u"127.0.0.1:%1: a line that is no report: \"onetwo %2...\""_s.arg(server.GetPort())
                  .arg(QString(52, u'x')));
    EXPECT_EQ(server.clientCount, 1);
}

TEST_F(GpsdClientTest, EndlessLineEndsTheConnection) {
    const GpsdServer server;
    Start(server);
    ASSERT_TRUE(AwaitState(EState::CONNECTED));
    server.SendRaw(QByteArray(10'000'000, '{'));
    EXPECT_TRUE(AwaitFailure(u"a line has more than 32768 bytes"_s));
    EXPECT_TRUE(AwaitState(EState::CONNECTED)) << "and is sought again";
}

TEST_F(GpsdClientTest, LineOfTheGreatestLengthIsRead) {
    const GpsdServer server;
    Start(server);
    ASSERT_TRUE(AwaitState(EState::CONNECTED));
    const QByteArray report = REPORT;
    server.Send(report + QByteArray(GpsdClient::LONGEST_LINE - 2 - report.size(), ' '));
    EXPECT_TRUE(AwaitFixes(1));
    EXPECT_EQ(m_client->GetLastFailure(), QString());
}

TEST_F(GpsdClientTest, FloodOfLinesIsReadInPartsBetweenWhichOthersWork) {
    const GpsdServer server;
    Start(server);
    ASSERT_TRUE(AwaitState(EState::CONNECTED));
    std::ptrdiff_t mostAtOnce = 0;
    std::ptrdiff_t before = 0;
    QTimer other;
    QObject::connect(&other, &QTimer::timeout, &other, [&] {
        mostAtOnce = std::max(mostAtOnce, CountFixes() - before);
        before = CountFixes();
    });
    other.start(0);
    constexpr int COUNT = 20'000;
    server.SendRaw((QByteArray(REPORT) + '\n').repeated(COUNT));
    ASSERT_TRUE(AwaitFixes(COUNT));
    EXPECT_LT(mostAtOnce, COUNT / 4);
}

TEST_F(GpsdClientTest, StopEndsTheConnectionAtOnceAndForGood) {
    const GpsdServer server;
    Start(server);
    ASSERT_TRUE(AwaitState(EState::CONNECTED));
    m_client->Stop();
    EXPECT_EQ(m_client->GetState(), EState::OFF);
    EXPECT_TRUE(SpinUntil([&] { return !server.HasClient(); }));
    CountWakeUps(); // longer than the longest pause
    EXPECT_EQ(server.clientCount, 1);
    EXPECT_EQ(m_client->GetState(), EState::OFF);
    EXPECT_EQ(m_client->GetLastFailure(), QString()) << "an intended end is no failure";
    m_client->Start();
    EXPECT_TRUE(AwaitState(EState::CONNECTED));
}

TEST_F(GpsdClientTest, IsStoppedForGoodByWhomItTellsThatItIsConnected) {
    const GpsdServer server;
    bool isStopped = false;
    std::optional<GpsdClient> client;
    client.emplace(
        GpsdAddress{u"127.0.0.1"_s, server.GetPort()}, GpsdClient::Timing{10ms, 40ms, 50ms},
        [](const GpsdReport&) {},
        [&] {
            if (client->GetState() == EState::CONNECTED) {
                client->Stop();
                isStopped = true;
            }
        });
    client->Start();
    ASSERT_TRUE(SpinUntil([&] { return isStopped; }));
    CountWakeUps(); // longer than an answer and the longest pause
    EXPECT_EQ(client->GetState(), EState::OFF);
    EXPECT_EQ(client->GetLastFailure(), QString());
    EXPECT_EQ(server.clientCount, 1);
}

TEST_F(GpsdClientTest, IsStoppedWhileItConnectsOrWaits) {
    const GpsdServer server("");
    Start(server);
    m_client->Stop();
    EXPECT_EQ(m_client->GetState(), EState::OFF);
    Start({u"no..host"_s, 2947});
    ASSERT_TRUE(AwaitState(EState::WAITING));
    m_client->Stop();
    CountWakeUps(); // longer than the longest pause
    EXPECT_EQ(m_client->GetState(), EState::OFF);
    m_client->Start();
    m_client.reset();
    CountWakeUps(); // nothing calls back
}

TEST_F(GpsdClientTest, DoesNotTurnOverWhileGpsdIsAway) {
    Start({u"127.0.0.1"_s, 1}, {1min, 1min, 1min});
    ASSERT_TRUE(AwaitState(EState::WAITING));
    EXPECT_LT(CountWakeUps(), FEW_WAKE_UPS);
}
