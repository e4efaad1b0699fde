#include "sandboxes/Sandboxes.h"

#include "bridge/LocalRequest.h"
#include "sandboxes/SandboxImage.h"
#include "sandboxes/SandboxReply.h"

#include <algorithm>

namespace orvan {

using namespace std::chrono_literals;

namespace {
constexpr Duration readTimeout = 15s;
constexpr Duration stopTimeout = 60s;
constexpr Duration imageTimeout = 90s;
constexpr Duration runtimeTimeout = 30s;
constexpr Duration agentsTimeout = 90s;

// The answer of a desktop mode change: the agents as they stand after it.
struct AgentsAnswer {
    std::map<std::string, bool> agents;
    static std::optional<AgentsAnswer> decode(const Json& j) {
        AgentsAnswer a;
        Fields f(j);
        f.optional("agents", a.agents, std::map<std::string, bool>{});
        return f.result(std::move(a));
    }
};
} // namespace

Sandboxes::Sandboxes(LocalApi& api, Clock& clock, Environment environment)
    : api_(api), clock_(clock), environment_(std::move(environment)) {}

Sandboxes::~Sandboxes() { alive_.cancel(); }

bool Sandboxes::installing() const {
    return install && install->step && *install->step != "done" && *install->step != "failed";
}

Duration Sandboxes::period() const {
    bool underWay = installing() || service == "starting" || docker == "starting" || SandboxImage::busy(image);
    return underWay ? Duration(1s) : Duration(5s);
}

Task<HttpAnswer> Sandboxes::send(std::string path, std::optional<Json> body, Duration timeout) {
    HttpAnswer answer = co_await LocalRequest::send(api_, std::move(path), std::move(body), timeout, environment_);
    co_return answer;
}

Task<void> Sandboxes::refresh() {
    Cancel alive = alive_;
    HttpAnswer answer = co_await send("/companion/sandbox", std::nullopt, readTimeout);
    if (alive.cancelled()) co_return;
    if (!answer.isHttp() || answer.status != 200) co_return;
    auto reply = decodeJson<SandboxReply>(answer.body);
    if (!reply) co_return;
    assign(list, std::move(reply->sandboxes));
    assign(runtime, std::move(reply->runtime));
    assign(service, std::move(reply->service));
    assign(docker, std::move(reply->docker));
    assign(image, std::move(reply->image));
    assign(progress, reply->progress);
    assign(download, reply->download);
    assign(imageNote, std::move(reply->note));
    assign(agents, std::move(reply->agents));
    assign(choices, std::move(reply->choices));
    assign(install, std::move(reply->install));
    assign(loaded, true);
    quickenPoll();
}

void Sandboxes::quickenPoll() {
    if (nap_ && period() < napLength_) nap_->cancel();
}

Task<void> Sandboxes::stop(std::string session, bool discard) {
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, "");
    Json body = {{"session", session}, {"discard", discard}};
    HttpAnswer answer = co_await send("/companion/sandbox/stop", std::move(body), stopTimeout);
    if (alive.cancelled()) co_return;
    // A stop has nothing to say back; anything but an empty success is doubt, and doubt is failure.
    if (!answer.isHttp() || answer.status != 204)
        assign(note, discard ? "That sandbox was not discarded." : "That sandbox did not stop.");
    co_await refresh();
    if (alive.cancelled()) co_return;
    assign(busy, false);
}

Task<void> Sandboxes::changeImage(std::string action) {
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, "");
    Json body = {{"action", action}};
    HttpAnswer answer = co_await send("/companion/sandbox/image", std::move(body), imageTimeout);
    if (alive.cancelled()) co_return;
    if (!LocalRequest::ok(answer))
        assign(note, action == "remove" ? "The image was not removed; a sandbox may be using it." : "The build did not start.");
    co_await refresh();
    if (alive.cancelled()) co_return;
    assign(busy, false);
}

Task<void> Sandboxes::changeRuntime(std::string action, std::string id) {
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, "");
    Json body = {{"action", action}, {"runtime", id}};
    HttpAnswer answer = co_await send("/companion/sandbox/runtime", std::move(body), runtimeTimeout);
    if (alive.cancelled()) co_return;
    if (!LocalRequest::ok(answer)) {
        if (action == "install") assign(note, "The setup did not start.");
        else if (action == "open") assign(note, "It did not open.");
        else assign(note, "That did not change.");
    }
    co_await refresh();
    if (alive.cancelled()) co_return;
    assign(busy, false);
}

Task<void> Sandboxes::setAgents(bool on) {
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, "");
    Json body = {{"on", on}};
    HttpAnswer answer = co_await send("/companion/sandbox/agents", std::move(body), agentsTimeout);
    if (alive.cancelled()) co_return;
    std::optional<AgentsAnswer> decoded;
    if (answer.isHttp() && answer.status == 200) decoded = decodeJson<AgentsAnswer>(answer.body);
    if (!decoded) {
        assign(note, "The agents' settings did not change.");
        assign(busy, false);
        co_return;
    }
    assign(agents, std::move(decoded->agents));
    bool refused = std::any_of(agents.begin(), agents.end(), [](const auto& a) { return !a.second; });
    if (on && refused) assign(note, "One of the agents did not take the tool. Its own settings may be read-only.");
    assign(busy, false);
}

Task<void> Sandboxes::poll(Cancel cancel) {
    Cancel alive = alive_;
    // The model's end stops the loop as surely as the section's.
    int link = alive.onCancel([cancel]() mutable { cancel.cancel(); });
    while (!cancel.cancelled()) {
        co_await refresh();
        if (cancel.cancelled()) break;
        // A nap cut short means the pace quickened after a read: sleep the quicker period from now.
        bool slept = false;
        while (!slept && !cancel.cancelled()) {
            Cancel nap;
            int wake = cancel.onCancel([nap]() mutable { nap.cancel(); });
            nap_ = nap;
            napLength_ = period();
            slept = co_await clock_.sleep(napLength_, nap);
            if (!cancel.cancelled()) {
                nap_.reset();
                cancel.forget(wake);
            }
        }
    }
    if (!alive.cancelled()) alive.forget(link);
}

} // namespace orvan
