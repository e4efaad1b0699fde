#pragma once
#include "platform/LocalApi.h"

#include <QString>
#include <memory>

namespace orvan {

// HTTP/1.1 over loopback on the main thread, one QTcpSocket per request in flight, and the
// connection kept alive between requests.
//
// Qt's own client was not enough: it sends a request again on a fresh connection when the first
// one drops before an answer (so a write could be applied twice), it files HTTP 400, 407 and 418
// under network errors, it has no cap on an answer's size, and it cannot let us check who owns
// the listening socket before the key goes out.
class QtLocalApi final : public LocalApi {
public:
    // `baseAddress` is "http://HOST:PORT" with HOST a literal IP address.
    explicit QtLocalApi(QString baseAddress);
    ~QtLocalApi() override;
    QtLocalApi(const QtLocalApi&) = delete;
    QtLocalApi& operator=(const QtLocalApi&) = delete;

    Task<HttpAnswer> send(HttpRequest request) override;

    // Far above anything the bridge sends; a longer answer fails and none of it is kept.
    static constexpr std::size_t answerCap = 16 * 1024 * 1024;

    struct Pool;

private:
    std::shared_ptr<Pool> pool_;
};

} // namespace orvan
