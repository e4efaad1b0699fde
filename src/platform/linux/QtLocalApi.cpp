#include "platform/linux/QtLocalApi.h"

#include <QCoroNetworkReply>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

namespace orvan {

QtLocalApi::QtLocalApi(QString baseAddress) : base_(std::move(baseAddress)) {
    // Answers from the bridge are never cached and never stored as cookies.
    network_.setCookieJar(nullptr);
    network_.setCache(nullptr);
}

namespace {

// Errors below 200 are of the network layer and above 300 of the protocol: nothing usable came
// back. Content and server errors (HTTP 4xx/5xx) still carry a status and a body.
bool transportError(QNetworkReply::NetworkError error) {
    int code = static_cast<int>(error);
    return (code > 0 && code < 200) || (code >= 300 && code < 400);
}

} // namespace

Task<HttpAnswer> QtLocalApi::send(HttpRequest request) {
    QUrl url(base_ + QString::fromStdString(request.path), QUrl::StrictMode);
    if (!url.isValid()) co_return HttpAnswer::transportFailure("The address is not valid.");

    QNetworkRequest q(url);
    q.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    q.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    // Over loopback, compression only costs both ends time (and a brotli decoder's memory).
    q.setRawHeader("Accept-Encoding", "identity");
    for (const auto& [name, value] : request.headers)
        q.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));

    QNetworkReply* reply = nullptr;
    if (request.method == "GET" && !request.body) {
        reply = network_.get(q);
    } else {
        QByteArray body = request.body ? QByteArray::fromStdString(*request.body) : QByteArray();
        reply = network_.sendCustomRequest(q, QByteArray::fromStdString(request.method), body);
    }
    std::unique_ptr<QNetworkReply, void (*)(QNetworkReply*)> owned(reply, [](QNetworkReply* r) { r->deleteLater(); });

    // The time-out counts from the last sign of life: Qt's own transfer time-out is not restarted by
    // every piece of a body that trickles in, so the reply's progress restarts this timer instead.
    QTimer idle;
    idle.setSingleShot(true);
    idle.setInterval(static_cast<int>(std::max<Duration>(request.timeout, Duration(1)).count()));
    bool timedOut = false;
    auto alive = [&idle] { idle.start(); };
    QObject::connect(reply, &QNetworkReply::downloadProgress, &idle, alive);
    QObject::connect(reply, &QNetworkReply::uploadProgress, &idle, alive);
    QObject::connect(reply, &QNetworkReply::metaDataChanged, &idle, alive);
    QObject::connect(reply, &QIODevice::readyRead, &idle, alive);
    QObject::connect(&idle, &QTimer::timeout, reply, [reply, &timedOut] {
        timedOut = true;
        reply->abort();
    });
    idle.start();

    co_await reply;
    idle.stop();
    if (timedOut) co_return HttpAnswer::transportFailure("The request timed out.");

    QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (transportError(reply->error()) || !status.isValid()) {
        QString description = reply->errorString();
        co_return HttpAnswer::transportFailure(description.isEmpty() ? "No answer." : description.toStdString());
    }
    co_return HttpAnswer::http(status.toInt(), reply->readAll().toStdString());
}

} // namespace orvan
