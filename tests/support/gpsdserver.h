#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QHostAddress>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>

/// A server on the loopback interface that greets as gpsd does, and then sends what the test says.
class GpsdServer {
public:
    static constexpr const char* GREETING =
        R"({"class":"VERSION","release":"3.22","rev":"3.22","proto_major":3,"proto_minor":14})";

    /// \param greeting is sent to each client; empty: none
    explicit GpsdServer(QByteArray greeting = GREETING, quint16 port = 0)
        : m_greeting(std::move(greeting)) {
        EXPECT_TRUE(m_server.listen(QHostAddress::LocalHost, port));
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] { Accept(); });
    }
    GpsdServer(const GpsdServer&) = delete;
    GpsdServer& operator=(const GpsdServer&) = delete;

    [[nodiscard]] quint16 GetPort() const { return m_server.serverPort(); }
    [[nodiscard]] bool HasClient() const {
        return m_client && m_client->state() == QAbstractSocket::ConnectedState;
    }
    /// Sends a line.
    void Send(const QByteArray& line) const { SendRaw(line + "\r\n"); }
    void SendRaw(const QByteArray& bytes) const {
        ASSERT_TRUE(m_client);
        m_client->write(bytes);
    }
    void Drop() const { m_client->disconnectFromHost(); }

    QByteArray requests;             ///< of all clients
    int clientCount = 0;             ///< so far
    bool doesAnswerQuestions = true; ///< whether "?VERSION" is answered

private:
    void Accept() {
        ++clientCount;
        m_client = m_server.nextPendingConnection();
        QObject::connect(m_client, &QTcpSocket::readyRead, m_client, [this] {
            const QByteArray request = m_client->readAll();
            requests += request;
            if (doesAnswerQuestions && request.contains("?VERSION")) {
                Send(m_greeting);
            }
        });
        if (!m_greeting.isEmpty()) {
            Send(m_greeting);
        }
    }

    const QByteArray m_greeting;
    QTcpServer m_server; // owns its sockets
    QPointer<QTcpSocket> m_client;
};
