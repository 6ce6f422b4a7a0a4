#include "mshclient/imshclientdll.h"
#include "valueframework/tree.h"
#include "valueframework/valuetypes.h"

#include <QHash>
#include <QTcpSocket>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

/// A client of a hub that speaks lines over TCP: "FRQ 121500000" sets the value that the tag is coupled to,
/// and the hub gets the range. Joins again whenever the hub is gone.
class SocketHubClient final : public IMshClientDll {
public:
    SocketHubClient() {
        m_again.setSingleShot(true);
        QObject::connect(&m_again, &QTimer::timeout, &m_socket, [this] { Start(); });
        QObject::connect(&m_socket, &QTcpSocket::connected, &m_socket, [this] { TellRange(); });
        QObject::connect(&m_socket, &QTcpSocket::readyRead, &m_socket, [this] { Receive(); });
        QObject::connect(&m_socket, &QTcpSocket::errorOccurred, &m_again, [this] { m_again.start(1); });
    }
    ~SocketHubClient() override {
        m_socket.disconnect();
        m_socket.abort();
    }

    void MapValue(const QString& tag, const QString& path, const QString& /*algorithm*/) override {
        m_paths.insert(tag, path);
    }
    void SetHandoverValue(const QString& /*path*/) override {}
    void SetHandoverPoolValue(const QString& /*path*/) override {}
    void MapSelectionValue(const QString& /*tag*/, const QString& /*path*/) override {}
    void AttachToolBar(QToolBar* /*toolBar*/, int /*position*/) override {}
    void SetReceiver(bool /*isReceiver*/) override {}
    void SetApplicationId(const QString& /*id*/) override {}
    void SetFrequencyRange(const QString& range) override {
        m_range = range;
        TellRange();
    }
    void SetDeviceAddress(const QString& /*address*/) override {}
    void SetCentralAddress(const QString& address, int port) override {
        m_address = address;
        m_port = static_cast<quint16>(port);
    }
    void SetAutoCoupleTargets(const QString& /*targets*/) override {}
    void Start() override { m_socket.connectToHost(m_address, m_port); }
    void SetClientName(const QString& /*name*/) override {}

private:
    void TellRange() {
        if (m_socket.state() == QAbstractSocket::ConnectedState) {
            m_socket.write("range " + m_range.toUtf8() + '\n');
        }
    }
    void Receive() {
        while (m_socket.canReadLine()) {
            const QStringList words = QString::fromUtf8(m_socket.readLine()).trimmed().split(u' ');
            if (auto* value = Tree::Instance()->Find<ValueNumericDouble>(m_paths.value(words.first()))) {
                value->SetValue(words.last().toDouble(), nullptr);
            }
        }
    }

    QTcpSocket m_socket;
    QTimer m_again;
    QHash<QString, QString> m_paths;
    QString m_address;
    quint16 m_port = 0;
    QString m_range;
};

} // namespace

ZAN_DEFINE_COMPONENT(SocketHubClient)
