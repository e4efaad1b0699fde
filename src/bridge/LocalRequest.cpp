#include "bridge/LocalRequest.h"

#include "bridge/LocalKey.h"

namespace orvan::LocalRequest {

HttpRequest make(std::string path, std::optional<Json> body, Duration timeout, const Environment& environment) {
    HttpRequest request;
    request.path = std::move(path);
    request.timeout = timeout;
    if (body) {
        request.method = "POST";
        request.headers.emplace_back("Content-Type", "application/json");
    }
    request.headers.emplace_back(keyHeader, LocalKey::value(environment));
    request.ownListenerOnly = true;
    // A map that can't be written as JSON leaves the POST without a body.
    if (body) request.body = json::dump(*body);
    return request;
}

HttpRequest make(std::string path, std::optional<Json> body, Duration timeout) {
    return make(std::move(path), std::move(body), timeout, Carryover::processEnvironment());
}

bool ok(const HttpAnswer& answer) { return answer.isHttp() && answer.status >= 200 && answer.status <= 299; }

bool ok(const std::optional<HttpAnswer>& answer) { return answer && ok(*answer); }

namespace {
struct Answer {
    std::optional<std::string> message;
    static std::optional<Answer> decode(const Json& j) {
        Answer a;
        Fields f(j);
        f.optional("message", a.message);
        return f.result(std::move(a));
    }
};
} // namespace

std::optional<std::string> message(std::string_view body) {
    auto answer = decodeJson<Answer>(body);
    if (!answer || !answer->message || answer->message->empty()) return std::nullopt;
    return answer->message;
}

Task<HttpAnswer> send(LocalApi& api, std::string path, std::optional<Json> body, Duration timeout,
                      const Environment& environment) {
    HttpRequest request = make(std::move(path), std::move(body), timeout, environment);
    co_return co_await api.send(std::move(request));
}

HttpRequest health() {
    HttpRequest request;
    request.path = "/healthz";
    request.timeout = std::chrono::milliseconds(1500);
    return request;
}

} // namespace orvan::LocalRequest
