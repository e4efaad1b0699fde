#include "computers/Remotes.h"

#include "bridge/LocalRequest.h"

namespace orvan {

using namespace std::chrono_literals;

namespace {
constexpr Duration listTimeout = 8s;
// The bridge answers a test only at its end, which for RDP includes starting a container.
constexpr Duration testTimeout = 1200s;
constexpr Duration addTimeout = 30s;
constexpr Duration removeTimeout = 30s;

Json idBody(const CompanionRemote& remote) { return Json{{"id", remote.id}}; }

std::string messageOr(const HttpAnswer& answer, const char* fallback) {
    return LocalRequest::message(answer.body).value_or(std::string(fallback));
}
} // namespace

Remotes::Remotes(LocalApi& api, Environment environment) : api_(api), environment_(std::move(environment)) {}

Remotes::~Remotes() { alive_.cancel(); }

Task<HttpAnswer> Remotes::send(std::string path, std::optional<Json> body, Duration timeout) {
    HttpAnswer answer = co_await LocalRequest::send(api_, std::move(path), std::move(body), timeout, environment_);
    co_return answer;
}

bool Remotes::tested(const RemoteForm& form) const {
    if (!found) return false;
    return !form.rdp() || !found->confirm.value_or(false) || !form.fingerprint.empty();
}

Task<void> Remotes::refresh() {
    Cancel alive = alive_;
    HttpAnswer answer = co_await send("/companion/remotes", std::nullopt, listTimeout);
    if (alive.cancelled() || !answer.isHttp() || answer.status != 200) co_return;
    if (auto read = decodeJson<RemotesList>(answer.body)) assign(list, std::move(read->remotes));
}

Task<void> Remotes::test(RemoteForm form) {
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, std::string());
    assign(found, std::nullopt);
    HttpAnswer answer = co_await send("/companion/remotes/test", form.body(), testTimeout);
    form.wipePassword();
    if (alive.cancelled()) co_return;
    if (answer.failure) {
        assign(note, std::string("The bridge did not answer."));
    } else {
        auto read = answer.status == 200 ? decodeJson<RemoteFound>(answer.body) : std::nullopt;
        if (read && read->ok) assign(found, std::move(read));
        else if (read) assign(note, read->message.value_or(std::string("It could not be reached.")));
        else assign(note, messageOr(answer, "It could not be reached."));
    }
    assign(busy, false);
}

Task<bool> Remotes::add(RemoteForm form) {
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, std::string());
    HttpAnswer answer = co_await send("/companion/remotes/add", form.body(), addTimeout);
    form.wipePassword();
    if (alive.cancelled()) co_return false;
    bool added = false;
    if (answer.failure) {
        assign(note, std::string("The bridge did not answer."));
    } else if (answer.status == 200) {
        co_await refresh();
        if (alive.cancelled()) co_return false;
        added = true;
    } else {
        assign(note, messageOr(answer, "It was not added."));
    }
    assign(busy, false);
    co_return added;
}

Task<void> Remotes::remove(CompanionRemote remote) {
    Cancel alive = alive_;
    assign(busy, true);
    co_await send("/companion/remotes/remove", idBody(remote), removeTimeout);
    if (alive.cancelled()) co_return;
    co_await refresh();
    if (alive.cancelled()) co_return;
    assign(busy, false);
}

} // namespace orvan
