#include "zanserver/gpsdclient.h"

#include "kwbase/tracesource.h"

#include <QHostAddress>
#include <QNetworkProxy>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace ZANServer {

namespace {

constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zanserver\\gpsdclient");

constexpr qsizetype LONGEST_SHOWN = 60;

/// The beginning of what came instead of a report, as a text for the operator.
QString Show(const QByteArray& line) {
    QString text = QString::fromUtf8(line.first(std::min(line.size(), LONGEST_SHOWN))).simplified();
    text.removeIf([](QChar c) { return !c.isPrint(); });
    return line.size() > LONGEST_SHOWN ? text + u"..."_s : text;
}

} // namespace

GpsdClient::GpsdClient(GpsdAddress address, const Timing& timing,
                       std::function<void(const GpsdReport&)> report, std::function<void()> stateChanged)
    : m_address(std::move(address))
    , m_timing(timing)
    , m_report(std::move(report))
    , m_stateChanged(std::move(stateChanged))
    , m_pause(timing.firstPause) {
    m_retry.setSingleShot(true);
    m_silence.setSingleShot(true);
    m_socket.setProxy(QNetworkProxy::NoProxy); // gpsd is near, and no proxy knows its protocol
    m_socket.setReadBufferSize(LONGEST_LINE);
    QObject::connect(&m_retry, &QTimer::timeout, &m_socket, [this] { Connect(); });
    QObject::connect(&m_silence, &QTimer::timeout, &m_socket, [this] { OnSilence(); });
    QObject::connect(&m_socket, &QTcpSocket::connected, &m_socket, [this] {
        m_addresses.clear();
        m_socket.write("?WATCH={\"enable\":true,\"json\":true};\n");
    });
    QObject::connect(&m_socket, &QTcpSocket::readyRead, &m_socket, [this] { ReadLines(); });
    QObject::connect(&m_socket, &QTcpSocket::errorOccurred, &m_socket, [this] { OnSocketError(); });
}

GpsdClient::~GpsdClient() {
    m_socket.disconnect(); // nobody is called any more
}

void GpsdClient::Start() {
    if (m_state == EState::OFF) {
        m_lastFailure.clear();
        m_isFailureTold = false;
        m_pause = m_timing.firstPause;
        Connect();
    }
}

void GpsdClient::Stop() {
    m_retry.stop();
    m_silence.stop();
    m_lookup.reset();
    m_addresses.clear();
    SetState(EState::OFF); // so that the end of the connection is no failure
    m_socket.abort();
}

void GpsdClient::Connect() {
    SetState(EState::CONNECTING);
    m_isAsked = false;
    m_silence.start(m_timing.answer);
    m_lookup.emplace(m_address.host, [this](const HostLookup::Result& host) {
        m_addresses = host.addresses;
        if (m_addresses.isEmpty()) {
            Fail(host.error);
        } else {
            ConnectToNext();
        }
    });
}

void GpsdClient::ConnectToNext() {
    m_socket.connectToHost(QHostAddress(m_addresses.takeFirst()), m_address.port);
}

/// A host may have several addresses, of which gpsd listens at one: "localhost" has one of IPv6, too.
void GpsdClient::OnSocketError() {
    if (m_state == EState::CONNECTING && !m_addresses.isEmpty()) {
        ConnectToNext();
    } else {
        Fail(m_socket.errorString());
    }
}

/// Reads what has arrived, at most one buffer of it, so that a flood does not keep the thread from other
/// work.
void GpsdClient::ReadLines() {
    while (m_socket.canReadLine()) {
        Take(m_socket.readLine());
    }
    if (m_socket.bytesAvailable() >= LONGEST_LINE) {
        Fail(u"a line has more than %1 bytes"_s.arg(LONGEST_LINE));
    }
}

void GpsdClient::Take(const QByteArray& line) {
    const std::optional<GpsdReport> report = GpsdReport::Read(line);
    if (m_state == EState::CONNECTING) {
        if (!report || report->kind != GpsdReport::Kind::Version) {
            Fail(u"it is not gpsd: it begins with \"%1\""_s.arg(Show(line)));
            return;
        }
        SetState(EState::CONNECTED);
    }
    if (!report) {
        m_lastFailure = u"%1: a line that is no report: \"%2\""_s.arg(m_address.ToText(), Show(line));
        m_stateChanged();
        return;
    }
    if (report->kind != GpsdReport::Kind::Version) {
        NoteThatItIsThere();
    }
    m_isAsked = false;
    m_silence.start(m_timing.answer);
    m_report(*report);
}

/// Does so with the first report behind the greeting, which a server may send that drops every client after
/// it.
void GpsdClient::NoteThatItIsThere() {
    m_pause = m_timing.firstPause;
    if (std::exchange(m_isFailureTold, false)) {
        TRACE.Information([this] { return u"gpsd is connected again: %1"_s.arg(m_address.ToText()); });
    }
}

void GpsdClient::OnSilence() {
    if (m_state == EState::CONNECTED && !m_isAsked) {
        m_isAsked = true;
        m_socket.write("?VERSION;\n");
        m_silence.start(m_timing.answer);
    } else {
        Fail(u"no answer within %1 ms"_s.arg(m_timing.answer.count()));
    }
}

void GpsdClient::Fail(const QString& reason) {
    if (m_state == EState::OFF || m_state == EState::WAITING) {
        return;
    }
    m_lastFailure = u"%1: %2"_s.arg(m_address.ToText(), reason);
    if (!std::exchange(m_isFailureTold, true)) {
        TRACE.Information(
            [this] { return u"gpsd is not connected, and is tried again: %1"_s.arg(m_lastFailure); });
    }
    m_silence.stop();
    m_lookup.reset();
    m_addresses.clear();
    m_retry.start(m_pause);
    m_pause = std::min(2 * m_pause, m_timing.longestPause);
    SetState(EState::WAITING);
    m_socket.abort();
}

void GpsdClient::SetState(EState state) {
    if (std::exchange(m_state, state) != state) {
        m_stateChanged();
    }
}

} // namespace ZANServer
