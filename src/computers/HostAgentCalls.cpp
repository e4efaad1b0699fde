// The operations that put agents and accounts on a computer.
#include "computers/Hosts.h"

#include "computers/AgentChoice.h"
#include "computers/HostAnswers.h"

#include <algorithm>

namespace orvan {

using namespace std::chrono_literals;

namespace {
constexpr Duration lookTimeout = 70s;
// The bridge answers when every installer there has ended.
constexpr Duration installTimeout = 2800s;

std::vector<std::string> without(std::vector<std::string> steps, const std::string& line) {
    std::erase(steps, line);
    return steps;
}

// Built outside the coroutines: GCC 12 can't keep a braced list with string literals in a coroutine frame.
Json targetBody(const std::string& target) { return Json{{"target", target}}; }

void wipe(std::string& secret) {
    std::fill(secret.begin(), secret.end(), '\0');
    secret.clear();
}
} // namespace

void Hosts::addStep(std::string line) {
    auto now = steps;
    now.push_back(std::move(line));
    assign(steps, std::move(now));
}

Task<std::optional<HostAgentsThere>> Hosts::lookAgents(CompanionHost host) {
    Cancel alive = alive_;
    HttpAnswer answer = co_await send("/companion/hosts/agents/look", targetBody(host.target), lookTimeout);
    if (alive.cancelled()) co_return std::nullopt;
    if (answer.failure) {
        assign(note, std::string("Could not reach that computer."));
        co_return std::nullopt;
    }
    if (answer.status == 200) {
        if (auto there = decodeJson<HostAgentsThere>(answer.body)) co_return there;
    }
    auto reply = decodeJson<HostReply>(answer.body);
    assign(note, reply && reply->message ? *reply->message : std::string("Could not read the agents there."));
    co_return std::nullopt;
}

Task<AgentInstall> Hosts::installAgents(CompanionHost host, std::vector<std::string> names, std::string password) {
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, std::string());
    std::string titles;
    for (const auto& name : names) titles += (titles.empty() ? "" : ", ") + HostAgent::titleOf(name);
    const std::string line =
        "Installing " + titles + " there… Each downloads from its maker, which can take a few minutes.";
    addStep(line);
    Json body = AgentChoice::body(host.target, names, password);
    wipe(password);
    HttpAnswer answer = co_await send("/companion/hosts/agents", std::move(body), installTimeout);
    if (alive.cancelled()) co_return AgentInstall::failed();
    AgentInstall result = AgentInstall::failed();
    if (answer.failure) {
        // Nobody knows how far it got; the card's sheet reads what is there.
        assign(note, std::string("The bridge did not answer while the agents installed. Install agents… on the "
                                 "computer's card says what is there."));
    } else {
        auto reply = decodeJson<AgentInstall::Answer>(answer.body);
        auto now = without(steps, line);
        if (reply && reply->steps) now.insert(now.end(), reply->steps->begin(), reply->steps->end());
        assign(steps, std::move(now));
        if (answer.status == 401) {
            result = AgentInstall::needsSudo(reply && reply->packages ? *reply->packages : std::vector<std::string>{});
        } else if (answer.status == 200) {
            result = AgentInstall::done();
        } else {
            assign(note, reply && reply->message ? *reply->message : std::string("The agents did not install."));
        }
    }
    assign(steps, without(steps, line));
    assign(busy, false);
    co_return result;
}

Task<Hosts::Copied> Hosts::copyAccounts(CompanionHost host, std::vector<std::string> ids,
                                        std::vector<CompanionAccount> accounts, bool replace) {
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, std::string());
    const std::string line =
        ids.size() == 1 ? std::string("Copying the account there…") : "Copying " + std::to_string(ids.size()) + " accounts there…";
    addStep(line);
    const Duration timeout = std::chrono::seconds(60 * static_cast<long>(ids.size()) + 60);
    HttpAnswer answer = co_await send("/companion/hosts/accounts", AccountCopy::body(host.target, ids, replace), timeout);
    if (alive.cancelled()) co_return Copied{};
    Copied copied;
    if (answer.failure) {
        assign(note, std::string("The bridge did not answer."));
    } else {
        auto reply = (answer.status == 200 || answer.status == 409) ? decodeJson<AccountCopy::Answer>(answer.body)
                                                                     : std::nullopt;
        if (reply) {
            auto now = without(steps, line);
            now.insert(now.end(), reply->steps.begin(), reply->steps.end());
            assign(steps, std::move(now));
            copied.results = reply->results;
            if (answer.status == 409) copied.replacing = ReplaceAsk::from(host.target, host.name, *reply, accounts);
        } else {
            auto failed = decodeJson<HostReply>(answer.body);
            assign(note, failed && failed->message ? *failed->message : std::string("The accounts were not copied."));
        }
    }
    assign(steps, without(steps, line));
    assign(busy, false);
    co_return copied;
}

} // namespace orvan
