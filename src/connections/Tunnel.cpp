#include "connections/Tunnel.h"

#include "bridge/LocalRequest.h"
#include "connections/Connections.h"

namespace orvan {

using namespace std::chrono_literals;

namespace {
constexpr Duration readTimeout = 4s;
constexpr Duration writeTimeout = 20s;
constexpr Duration pollPause = 5s;
} // namespace

Tunnel::Tunnel(LocalApi& api, Clock& clock, Environment environment)
    : api_(api), clock_(clock), environment_(std::move(environment)) {}

Tunnel::~Tunnel() { alive_.cancel(); }

Task<void> Tunnel::refresh() {
    Cancel alive = alive_;
    HttpAnswer answer = co_await LocalRequest::send(api_, Connections::path, std::nullopt, readTimeout, environment_);
    if (alive.cancelled() || !answer.isHttp()) co_return;
    if (answer.status == 404) {
        assign(unavailable, true);
        assign(state, std::nullopt);
        co_return;
    }
    if (answer.status != 200) co_return;
    auto decoded = decodeJson<TunnelState>(answer.body);
    if (!decoded) co_return;
    if (decoded != state) assign(state, std::move(decoded));
    assign(unavailable, false);
}

Task<void> Tunnel::send(Json body, std::string failed) {
    if (busy) co_return;
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, "");
    HttpAnswer answer = co_await LocalRequest::send(api_, Connections::path, std::move(body), writeTimeout, environment_);
    if (alive.cancelled()) co_return;
    if (!answer.isHttp()) assign(note, failed);
    else if (!LocalRequest::ok(answer)) assign(note, LocalRequest::message(answer.body).value_or(failed));
    co_await refresh();
    if (alive.cancelled()) co_return;
    assign(busy, false);
}

Task<void> Tunnel::poll(Cancel cancel) {
    Cancel alive = alive_;
    int link = alive.onCancel([cancel]() mutable { cancel.cancel(); });
    while (!cancel.cancelled()) {
        co_await refresh();
        if (cancel.cancelled()) break;
        if (!co_await clock_.sleep(pollPause, cancel)) break;
    }
    if (!alive.cancelled()) alive.forget(link);
}

} // namespace orvan
