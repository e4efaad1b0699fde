#pragma once
// The transport to the bridge: one request out, one answer back. The base address is fixed at
// construction by the adapter; a request names only the path (with its query).

#include "foundation/Async.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvan {

struct HttpRequest {
    std::string method = "GET";
    std::string path; // begins with "/", may carry a query
    std::vector<std::pair<std::string, std::string>> headers;
    std::optional<std::string> body;
    Duration timeout = std::chrono::seconds(8); // fails when nothing has arrived for this long
    // Carries a secret: it goes out only to a listener that belongs to this user.
    bool ownListenerOnly = false;

    std::optional<std::string> header(std::string_view name) const;
};

struct HttpAnswer {
    // Set when nothing came back (refused, timed out, dropped); `status` is then 0.
    std::optional<std::string> failure;
    int status = 0;
    std::string body;
    // The failure is that another user's program holds the port: nothing was sent to it.
    bool foreignListener = false;

    bool isHttp() const { return !failure && status > 0; }

    static HttpAnswer transportFailure(std::string description) {
        HttpAnswer a;
        a.failure = std::move(description);
        return a;
    }
    static HttpAnswer foreignPort(std::string description) {
        HttpAnswer a = transportFailure(std::move(description));
        a.foreignListener = true;
        return a;
    }
    static HttpAnswer http(int status, std::string body = {}) {
        HttpAnswer a;
        a.status = status;
        a.body = std::move(body);
        return a;
    }
};

class LocalApi {
public:
    virtual ~LocalApi() = default;
    // Sends once: no retry, no queue. Never throws; every failure is an answer.
    virtual Task<HttpAnswer> send(HttpRequest request) = 0;
};

} // namespace orvan
