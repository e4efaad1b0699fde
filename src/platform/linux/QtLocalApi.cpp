#include "platform/linux/QtLocalApi.h"

#include <QCoroNetworkReply>
#include <QNetworkReply>
#include <QNetworkRequest>
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
    q.setTransferTimeout(static_cast<int>(std::max<Duration>(request.timeout, Duration(1)).count()));
    q.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    q.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
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

    co_await reply;

    QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (transportError(reply->error()) || !status.isValid()) {
        QString description = reply->errorString();
        co_return HttpAnswer::transportFailure(description.isEmpty() ? "No answer." : description.toStdString());
    }
    co_return HttpAnswer::http(status.toInt(), reply->readAll().toStdString());
}

} // namespace orvan
