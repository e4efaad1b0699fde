#pragma once
#include "platform/LocalApi.h"

#include <QNetworkAccessManager>
#include <QString>

namespace orvan {

// HTTP over one QNetworkAccessManager, which keeps the loopback connection alive between requests.
// The request's time-out is a transfer time-out: it fires only when nothing arrives for that long,
// so a slow answer that keeps trickling in is not cut off.
class QtLocalApi final : public LocalApi {
public:
    explicit QtLocalApi(QString baseAddress);
    Task<HttpAnswer> send(HttpRequest request) override;

private:
    QString base_;
    QNetworkAccessManager network_;
};

} // namespace orvan
