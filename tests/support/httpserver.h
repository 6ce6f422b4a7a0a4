#pragma once

#include <QByteArray>
#include <QEventLoop>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <mutex>
#include <thread>
#include <utility>

/// A server of HTTP on a thread of its own, which answers one request after the other as a test says.
class HttpServer {
public:
    using Answer = std::function<void(QTcpSocket& client)>;

    HttpServer() {
        std::promise<quint16> port;
        std::future<quint16> listening = port.get_future();
        m_thread = std::thread([this, &port] { Serve(port); });
        m_port = listening.get();
    }
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    ~HttpServer() { Stop(); }

    /// From then on nobody listens.
    void Stop() {
        m_isStopping = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }
    /// How the next requests are answered.
    void SetAnswer(Answer answer) {
        const std::lock_guard lock(m_mutex);
        m_answer = std::move(answer);
    }
    void SetBody(const QByteArray& body, const QByteArray& status = "200 OK") {
        SetAnswer([=](QTcpSocket& client) {
            client.write("HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) +
                         "\r\nConnection: close\r\n\r\n" + body);
        });
    }
    [[nodiscard]] QString Address() const { return QStringLiteral("http://127.0.0.1:%1").arg(m_port); }
    [[nodiscard]] int GetRequestCount() const { return m_requestCount; }
    [[nodiscard]] bool IsStopping() const { return m_isStopping; }
    [[nodiscard]] QByteArray GetLastRequest() {
        const std::lock_guard lock(m_mutex);
        return m_lastRequest;
    }

private:
    static constexpr int TURN_MS = 10;

    void Serve(std::promise<quint16>& port) {
        const QEventLoop loop; // gives the thread what Qt's sockets want
        QTcpServer server;
        EXPECT_TRUE(server.listen(QHostAddress::LocalHost));
        port.set_value(server.serverPort());
        while (!m_isStopping) {
            if (server.waitForNewConnection(TURN_MS)) {
                const std::unique_ptr<QTcpSocket> client(server.nextPendingConnection());
                Handle(*client);
            }
        }
    }
    void Handle(QTcpSocket& client) {
        QByteArray request;
        while (!request.contains("\r\n\r\n") && !m_isStopping &&
               client.state() == QTcpSocket::ConnectedState) {
            client.waitForReadyRead(TURN_MS);
            request += client.readAll();
        }
        Answer answer;
        {
            const std::lock_guard lock(m_mutex);
            answer = m_answer;
            m_lastRequest = request;
        }
        if (answer) {
            answer(client);
        }
        while (client.bytesToWrite() > 0 && client.waitForBytesWritten(TURN_MS * 100)) {
        }
        client.disconnectFromHost();
        ++m_requestCount;
    }

    std::mutex m_mutex;
    Answer m_answer;
    QByteArray m_lastRequest;
    std::atomic<int> m_requestCount = 0;
    std::atomic<bool> m_isStopping = false;
    quint16 m_port = 0;
    std::thread m_thread;
};
