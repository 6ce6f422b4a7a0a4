#pragma once

#include <QByteArray>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QString>
#include <QUrl>

#include <atomic>
#include <chrono>
#include <optional>

namespace KrakenSdr {

/// Asks a server over HTTP, and waits for the answer. Redirections are not followed, and nothing is sent by
/// way of a proxy. Belongs to the thread that made it, but for `Interrupt`; the application object must
/// exist.
class HttpReader {
public:
    HttpReader();

    /// The body of an answer with the status 200; nothing, with the reason in `GetErrorText`, when there is
    /// none within the time for all of it, when it is longer than `mostBytes`, and when it was interrupted.
    std::optional<QByteArray> Get(const QUrl& url, std::chrono::milliseconds timeout, qsizetype mostBytes);
    /// From any thread: a request that is under way, and all later ones, fail.
    void Interrupt();

    [[nodiscard]] const QString& GetErrorText() const { return m_errorText; }

private:
    std::optional<QByteArray> Fail(const QString& reason);

    QNetworkAccessManager m_manager;
    QEventLoop m_loop;
    std::atomic<bool> m_isInterrupted = false;
    QString m_errorText;
};

} // namespace KrakenSdr
