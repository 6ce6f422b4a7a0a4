#include "krakensdr/httpreader.h"

#include <QNetworkProxy>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

#include <memory>

using namespace Qt::StringLiterals;

namespace KrakenSdr {

HttpReader::HttpReader() {
    m_manager.setProxy(QNetworkProxy::NoProxy);
}

std::optional<QByteArray> HttpReader::Get(const QUrl& url, std::chrono::milliseconds timeout,
                                          qsizetype mostBytes) {
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    // Else Qt would ask for compressed answers, whose length says nothing.
    request.setRawHeader("Accept-Encoding", "identity");
    const std::unique_ptr<QNetworkReply> reply(m_manager.get(request));
    reply->setReadBufferSize(mostBytes + 1);
    QByteArray body;
    bool isTooLong = false;
    bool isInTime = true;
    QObject::connect(reply.get(), &QNetworkReply::readyRead, &m_loop, [&] {
        body += reply->read(mostBytes + 1 - body.size());
        isTooLong = body.size() > mostBytes;
        if (isTooLong) {
            m_loop.quit();
        }
    });
    QObject::connect(reply.get(), &QNetworkReply::finished, &m_loop, &QEventLoop::quit);
    QTimer
        timer; // for all of the answer: a server that sends a byte now and then must not hold up the reader
    timer.setSingleShot(true);
    timer.callOnTimeout(&m_loop, [&] {
        isInTime = false;
        m_loop.quit();
    });
    timer.start(timeout);
    if (!m_isInterrupted && !reply->isFinished()) {
        m_loop.exec();
    }
    reply->disconnect(&m_loop);
    if (m_isInterrupted) {
        return Fail(u"interrupted"_s);
    }
    if (isTooLong) {
        return Fail(u"the answer is longer than %1 bytes"_s.arg(mostBytes));
    }
    if (!isInTime) {
        return Fail(u"no answer within %1 ms"_s.arg(timeout.count()));
    }
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status != 0 && status != 200) {
        return Fail(u"the server answers with the status %1"_s.arg(status));
    }
    if (reply->error() != QNetworkReply::NoError) {
        return Fail(reply->errorString());
    }
    body += reply->read(mostBytes + 1 - body.size());
    return body.size() > mostBytes ? Fail(u"the answer is longer than %1 bytes"_s.arg(mostBytes))
                                   : std::optional(body);
}

void HttpReader::Interrupt() {
    m_isInterrupted = true;
    QMetaObject::invokeMethod(&m_loop, &QEventLoop::quit, Qt::QueuedConnection);
}

std::optional<QByteArray> HttpReader::Fail(const QString& reason) {
    m_errorText = reason;
    return std::nullopt;
}

} // namespace KrakenSdr
