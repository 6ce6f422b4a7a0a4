#include "stream/streamsource.h"

#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QNetworkProxy>
#include <QTcpSocket>
#include <QTimer>
#include <QUdpSocket>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace Stream {

namespace {

struct HostAndPort {
    QString host;
    quint16 port = 0;
};

/// "HOST:PORT", where the host may be in brackets; nothing when there is no port from 1 to 65535.
std::optional<HostAndPort> ParseHostAndPort(QStringView text) {
    const qsizetype colon = text.lastIndexOf(u':');
    bool isNumber = false;
    const quint16 port = colon < 0 ? quint16{0} : text.sliced(colon + 1).toUShort(&isNumber);
    if (!isNumber || port == 0) {
        return std::nullopt;
    }
    QStringView host = text.first(colon);
    if (host.startsWith(u'[') && host.endsWith(u']')) {
        host = host.sliced(1).chopped(1);
    }
    return HostAndPort{host.toString(), port};
}

/// A descriptor of a Qt socket's own connection that outlives the socket; Qt's sockets do not block.
int Duplicate(const QAbstractSocket& socket) {
    return ::fcntl(static_cast<int>(socket.socketDescriptor()), F_DUPFD_CLOEXEC, 0);
}

/// Without it a connection to a machine that has lost its power would look like a silent one for ever.
void KeepAlive(int descriptor) {
    constexpr int ON = 1;
    constexpr int IDLE_S = 10;
    constexpr int INTERVAL_S = 5;
    constexpr int COUNT = 4;
    ::setsockopt(descriptor, SOL_SOCKET, SO_KEEPALIVE, &ON, sizeof ON);
    ::setsockopt(descriptor, IPPROTO_TCP, TCP_KEEPIDLE, &IDLE_S, sizeof IDLE_S);
    ::setsockopt(descriptor, IPPROTO_TCP, TCP_KEEPINTVL, &INTERVAL_S, sizeof INTERVAL_S);
    ::setsockopt(descriptor, IPPROTO_TCP, TCP_KEEPCNT, &COUNT, sizeof COUNT);
}

/// A connected socket; below 0, with the reason, when there is none.
int ConnectTcp(const HostAndPort& target, QString& reason) {
    int descriptor = -1;
    QEventLoop loop;
    QTcpSocket socket;
    socket.setProxy(QNetworkProxy::NoProxy);
    QObject::connect(&socket, &QTcpSocket::connected, &loop, [&] {
        descriptor = Duplicate(socket);
        loop.quit();
    });
    QObject::connect(&socket, &QTcpSocket::errorOccurred, &loop, [&] {
        reason = socket.errorString();
        loop.quit();
    });
    reason = u"no answer within %1 s"_s.arg(StreamSource::CONNECT_MS / 1000);
    QTimer::singleShot(StreamSource::CONNECT_MS, &loop, &QEventLoop::quit);
    // Without a buffer, so that Qt's socket reads nothing of what a sender may send at once.
    socket.connectToHost(target.host, target.port, QIODevice::ReadWrite | QIODevice::Unbuffered);
    if (socket.state() != QAbstractSocket::UnconnectedState) { // it may have failed at once
        loop.exec();
    }
    if (descriptor >= 0) {
        KeepAlive(descriptor);
    }
    return descriptor;
}

int BindUdp(const HostAndPort& target, QString& reason) {
    const QHostAddress address = target.host.isEmpty() || target.host == u"localhost"
                                     ? QHostAddress(QHostAddress::LocalHost)
                                     : QHostAddress(target.host);
    if (address.isNull()) {
        reason = u"\"%1\" is not an address of this machine"_s.arg(target.host);
        return -1;
    }
    const QEventLoop
        loop; // Qt's socket wants its thread to have a dispatcher of events, although none is used
    QUdpSocket socket;
    socket.setProxy(QNetworkProxy::NoProxy);
    if (!socket.bind(address, target.port, QUdpSocket::DontShareAddress)) {
        reason = socket.errorString();
        return -1;
    }
    constexpr int ROOM = 1 << 20; // for bursts
    socket.setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, ROOM);
    return Duplicate(socket);
}

int ConnectUnix(const QString& path, QString& reason) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    if (name.isEmpty() || static_cast<std::size_t>(name.size()) >= sizeof address.sun_path) {
        reason = u"a socket has a path of 1 to %1 bytes"_s.arg(sizeof address.sun_path - 1);
        return -1;
    }
    name.toStdString().copy(address.sun_path, sizeof address.sun_path - 1);
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0 || ::connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        reason = qt_error_string(errno);
        if (descriptor >= 0) {
            ::close(descriptor);
        }
        return -1;
    }
    return descriptor;
}

/// A serial line in the notation of the outputs; with its settings, its path is that of nothing.
bool IsSerialLine(const QString& address) {
    if (address.startsWith(u"COM", Qt::CaseInsensitive) && !QFileInfo::exists(address)) {
        return true;
    }
    struct stat status {};
    return address.startsWith(u"/dev/") &&
           (::stat(QFile::encodeName(address).constData(), &status) != 0 || S_ISCHR(status.st_mode));
}

bool OpenSocket(KvZANCommon::LineReader& lines, int descriptor, QString& reason) {
    if (descriptor < 0) {
        return false;
    }
    reason.clear();
    return lines.Adopt(descriptor);
}

bool OpenPath(KvZANCommon::LineReader& lines, const QString& path, QString& reason) {
    if (IsSerialLine(path)) {
        return lines.OpenSerialLine(path);
    }
    const QFileInfo info(path);
    if (path != StreamSource::STANDARD_INPUT && (info.isFile() || info.isDir())) {
        reason =
            info.isDir() ? u"is a directory"_s : u"is a file, not a stream; the driver \"replay\" reads it"_s;
        return false;
    }
    return lines.OpenStream(path);
}

} // namespace

bool StreamSource::Open(KvZANCommon::LineReader& lines, const QString& address, QString& reason) {
    const auto openNetwork = [&](QStringView scheme, auto connect) {
        const std::optional<HostAndPort> target =
            ParseHostAndPort(QStringView(address).sliced(scheme.size()));
        if (!target) {
            reason = u"there is no port from 1 to 65535"_s;
            return false;
        }
        return OpenSocket(lines, connect(*target, reason), reason);
    };
    reason.clear();
    constexpr QStringView TCP = u"tcp://";
    constexpr QStringView UDP = u"udp://";
    constexpr QStringView UNIX = u"unix:";
    bool isOpen = false;
    if (address.isEmpty() || address.contains(QChar::Null)) {
        reason = u"the address is none of %1"_s.arg(FORM);
        return false;
    }
    if (address.startsWith(TCP)) {
        isOpen = openNetwork(TCP, ConnectTcp);
    } else if (address.startsWith(UDP)) {
        isOpen = openNetwork(UDP, BindUdp);
    } else if (address.startsWith(UNIX)) {
        isOpen = OpenSocket(lines, ConnectUnix(address.sliced(UNIX.size()), reason), reason);
    } else {
        isOpen = OpenPath(lines, address, reason);
    }
    if (!isOpen) {
        reason = address + u": "_s + (reason.isEmpty() ? lines.GetErrorText() : reason);
    }
    return isOpen;
}

std::optional<StreamSource::Fifo> StreamSource::FindFifo(const QString& address) {
    struct stat status {};
    if (::stat(QFile::encodeName(address).constData(), &status) != 0 || !S_ISFIFO(status.st_mode)) {
        return std::nullopt;
    }
    return Fifo{status.st_dev, status.st_ino};
}

} // namespace Stream
