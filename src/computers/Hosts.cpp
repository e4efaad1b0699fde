#include "computers/Hosts.h"

#include "bridge/LocalRequest.h"
#include "computers/HostAnswers.h"
#include "computers/HostBridge.h"
#include "sandboxes/SandboxImage.h"

#include <algorithm>

namespace orvan {

using namespace std::chrono_literals;

namespace {
// The bridge answers these only when the work on the other computer is done.
constexpr Duration listTimeout = 8s;
constexpr Duration testTimeout = 90s;
constexpr Duration addTimeout = 300s;
constexpr Duration removeTimeout = 60s;
constexpr Duration checkTimeout = 70s;
constexpr Duration dockerTimeout = 1000s;
constexpr Duration sandboxTimeout = 200s;
constexpr Duration updateTimeout = 320s;
constexpr Duration buildPause = 1500ms;

const char* const unreachable = "Could not reach that computer.";

std::string joined(const std::optional<std::vector<std::string>>& steps) {
    std::string out;
    if (!steps) return out;
    for (const auto& step : *steps) {
        if (!out.empty()) out += ". ";
        out += step;
    }
    return out;
}

template <class T> std::optional<T> decodeAnswer(const HttpAnswer& answer) {
    if (!answer.isHttp()) return std::nullopt;
    return decodeJson<T>(answer.body);
}

Json targetBody(const CompanionHost& host) { return Json{{"target", host.target}}; }
} // namespace

Hosts::Hosts(LocalApi& api, Clock& clock, Environment environment)
    : api_(api), clock_(clock), environment_(std::move(environment)) {}

Hosts::~Hosts() { alive_.cancel(); }

Task<HttpAnswer> Hosts::send(std::string path, std::optional<Json> body, Duration timeout) {
    HttpAnswer answer = co_await LocalRequest::send(api_, std::move(path), std::move(body), timeout, environment_);
    co_return answer;
}

void Hosts::setHostNote(const std::string& target, std::string text) {
    auto notes = hostNote;
    notes[target] = std::move(text);
    assign(hostNote, std::move(notes));
}

void Hosts::setWorking(const std::string& target, bool on) {
    auto set = working;
    if (on) set.insert(target);
    else set.erase(target);
    assign(working, std::move(set));
}

Task<void> Hosts::refresh() {
    Cancel alive = alive_;
    HttpAnswer answer = co_await send("/companion/hosts", std::nullopt, listTimeout);
    if (alive.cancelled()) co_return;
    // A failed read keeps the rows on screen: the next read tells the truth.
    if (!answer.isHttp() || answer.status != 200) co_return;
    auto list = decodeJson<HostsList>(answer.body);
    if (!list) co_return;
    std::vector<std::string> ssh;
    for (auto& entry : list->ssh) {
        bool added = std::any_of(list->hosts.begin(), list->hosts.end(), [&](const auto& h) { return h.target == entry; });
        if (!added) ssh.push_back(std::move(entry));
    }
    assign(hosts, std::move(list->hosts));
    assign(sshHosts, std::move(ssh));
    assign(bridge, list->bridge.value_or(""));
}

Task<void> Hosts::test(ComputerForm form) {
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, "");
    assign(found, std::nullopt);
    assign(steps, std::vector<std::string>{});
    HttpAnswer answer = co_await send("/companion/hosts/test", form.body(), testTimeout);
    std::fill(form.secret.begin(), form.secret.end(), '\0');
    if (alive.cancelled()) co_return;
    if (answer.failure) {
        assign(note, std::string(unreachable) + " " + *answer.failure);
    } else if (answer.status == 200) {
        assign(found, decodeJson<ComputerFound>(answer.body));
    } else {
        auto reply = decodeAnswer<HostReply>(answer);
        assign(note, reply && reply->message ? *reply->message : std::string(unreachable));
    }
    assign(busy, false);
}

Task<std::optional<CompanionHost>> Hosts::add(ComputerForm form) {
    Cancel alive = alive_;
    const std::string address = form.address;
    assign(busy, true);
    assign(note, "");
    assign(steps, std::vector<std::string>{"Connecting to " + address + "…"});
    HttpAnswer answer = co_await send("/companion/hosts/add", form.body(), addTimeout);
    std::fill(form.secret.begin(), form.secret.end(), '\0');
    if (alive.cancelled()) co_return std::nullopt;
    std::optional<CompanionHost> result;
    if (answer.failure) {
        assign(note, "Could not add " + address + ". " + *answer.failure);
    } else {
        auto reply = decodeAnswer<HostReply>(answer);
        assign(steps, reply && reply->steps ? *reply->steps : std::vector<std::string>{});
        if (answer.status == 200) {
            if (reply && reply->host) result = reply->host;
            else assign(note, "The computer was added, but the bridge did not say how to reach it.");
        } else {
            assign(note, reply && reply->message ? *reply->message : "Could not add " + address + ".");
        }
    }
    co_await refresh();
    if (alive.cancelled()) co_return std::nullopt;
    assign(busy, false);
    co_return result;
}

Task<void> Hosts::remove(CompanionHost host) {
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, "");
    // Whatever came back, the list that follows says whether the computer went.
    co_await send("/companion/hosts/remove", targetBody(host), removeTimeout);
    if (alive.cancelled()) co_return;
    assign(steps, std::vector<std::string>{});
    co_await refresh();
    if (alive.cancelled()) co_return;
    assign(busy, false);
}

Task<void> Hosts::check(CompanionHost host) {
    Cancel alive = alive_;
    const std::string target = host.target;
    HttpAnswer answer = co_await send("/companion/hosts/check", targetBody(host), checkTimeout);
    if (alive.cancelled()) co_return;
    if (answer.failure) {
        setHostNote(target, unreachable);
        co_return;
    }
    auto reply = decodeAnswer<HostCheck>(answer);
    if (answer.status != 200) {
        setHostNote(target, reply && reply->message ? *reply->message : std::string(unreachable));
        co_return;
    }
    auto readings = sandbox;
    if (reply && reply->sandbox) readings[target] = *reply->sandbox;
    else readings.erase(target);
    assign(sandbox, std::move(readings));
    if (reply && reply->note) setHostNote(target, *reply->note);
    // The bridge keeps Docker's state and its own version on the host record: the list brings them.
    co_await refresh();
}

Task<void> Hosts::installDocker(CompanionHost host, std::string password) {
    Cancel alive = alive_;
    const std::string target = host.target;
    setWorking(target, true);
    setHostNote(target, host.docker == std::string("stopped")
                            ? "Starting Docker's engine there…"
                            : "Installing Docker there… The package manager may take a few minutes.");
    Json body = targetBody(host);
    if (!password.empty()) body["password"] = password;
    std::fill(password.begin(), password.end(), '\0');
    HttpAnswer answer = co_await send("/companion/hosts/docker", std::move(body), dockerTimeout);
    if (alive.cancelled()) co_return;
    if (answer.failure) {
        setHostNote(target, unreachable);
        setWorking(target, false);
        co_return;
    }
    auto reply = decodeAnswer<HostCheck>(answer);
    if (answer.status == 401) {
        // Not a failure: sudo there needs its password, which the section asks for.
        setHostNote(target, "");
        assign(sudoFor, host);
        setWorking(target, false);
        co_return;
    }
    if (answer.status == 200) setHostNote(target, joined(reply ? reply->steps : std::nullopt));
    else setHostNote(target, reply && reply->message ? *reply->message : std::string("Docker did not install."));
    co_await check(host);
    if (alive.cancelled()) co_return;
    setWorking(target, false);
}

Task<std::optional<HostSandbox>> Hosts::sandboxAction(CompanionHost host, std::string action) {
    Cancel alive = alive_;
    const std::string target = host.target;
    Json body = {{"target", target}, {"action", action}};
    HttpAnswer answer = co_await send("/companion/hosts/sandbox", std::move(body), sandboxTimeout);
    if (alive.cancelled()) co_return std::nullopt;
    if (answer.failure) {
        setHostNote(target, unreachable);
        co_return std::nullopt;
    }
    auto reply = decodeAnswer<HostSandboxReply>(answer);
    if (answer.status == 200 && reply && reply->sandbox) co_return reply->sandbox;
    setHostNote(target, reply && reply->message ? *reply->message : std::string("The bridge there did not answer."));
    co_return std::nullopt;
}

Task<void> Hosts::buildImage(CompanionHost host) {
    Cancel alive = alive_;
    const std::string target = host.target;
    setWorking(target, true);
    setHostNote(target, "");
    auto reading = co_await sandboxAction(host, "build");
    if (alive.cancelled()) co_return;
    for (int reads = 0; reading;) {
        auto readings = sandbox;
        readings[target] = *reading;
        assign(sandbox, std::move(readings));
        // Settled, or given up on without a word: the card keeps the last state read.
        if (reads > 0 && !SandboxImage::busy(reading->image.value_or(""))) break;
        if (reads == buildPolls) break;
        if (!co_await clock_.sleep(buildPause, alive)) co_return;
        if (alive.cancelled()) co_return;
        reading = co_await sandboxAction(host, "status");
        if (alive.cancelled()) co_return;
        ++reads;
    }
    setWorking(target, false);
}

Task<void> Hosts::addTools(CompanionHost host) {
    Cancel alive = alive_;
    const std::string target = host.target;
    setWorking(target, true);
    auto reading = co_await sandboxAction(host, "tools");
    if (alive.cancelled()) co_return;
    if (reading) {
        auto readings = sandbox;
        readings[target] = *reading;
        assign(sandbox, std::move(readings));
    }
    setWorking(target, false);
}

Task<void> Hosts::updateBridge(CompanionHost host) {
    Cancel alive = alive_;
    const std::string target = host.target;
    setWorking(target, true);
    setHostNote(target, HostBridge::progress(host.name));
    HttpAnswer answer = co_await send(HostBridge::path, targetBody(host), updateTimeout);
    if (alive.cancelled()) co_return;
    if (answer.failure) {
        setHostNote(target, "The bridge did not answer. Check says what is there now.");
        setWorking(target, false);
        co_return;
    }
    auto reply = decodeAnswer<HostReply>(answer);
    const std::string done = joined(reply ? reply->steps : std::nullopt);
    if (answer.status == 200) {
        setHostNote(target, done);
    } else {
        const std::string sentence =
            reply && reply->message ? *reply->message : std::string("The bridge there was not updated.");
        setHostNote(target, done.empty() ? sentence : done + ". " + sentence);
    }
    co_await refresh();
    if (alive.cancelled()) co_return;
    setWorking(target, false);
}

bool Hosts::checkedOnOpen(const CompanionHost& host) {
    if (host.forTerminal()) return false;
    return !host.docker || *host.docker == "ready" || !host.version || host.version->empty();
}

Task<void> Hosts::open() {
    Cancel alive = alive_;
    co_await refresh();
    if (alive.cancelled()) co_return;
    // One after the other, so a room full of computers doesn't open that many SSH connections at once.
    const auto listed = hosts;
    for (const auto& host : listed) {
        if (!checkedOnOpen(host)) continue;
        co_await check(host);
        if (alive.cancelled()) co_return;
    }
}

} // namespace orvan
