// The two operations of Hosts that an agent's sign-in on a computer uses.
#include "computers/Hosts.h"

#include "bridge/LocalRequest.h"
#include "computers/HostSignIn.h"

namespace orvan {

using namespace std::chrono_literals;

namespace {
// Kept out of the coroutines below: GCC 12 can't keep a braced list of literals in a coroutine frame.
std::optional<HostSignInTools> toolsOf(const std::string& body) {
    auto list = decodeJson<HostSignInList>(body);
    if (!list || !list->tools) return std::nullopt;
    return HostSignInTools{std::move(*list->tools), list->signIns.value_or(std::map<std::string, HostSignInState>{})};
}
} // namespace

Task<std::optional<HostSignInTools>> Hosts::signInTools(CompanionHost host) {
    Cancel alive = alive_;
    HttpAnswer answer = co_await send("/companion/hosts/signin/tools", HostSignIn::body(host.target, ""), 70s);
    if (alive.cancelled()) co_return std::nullopt;
    if (answer.failure) {
        assign(note, std::string("Could not reach that computer."));
        co_return std::nullopt;
    }
    if (answer.status == 200)
        if (auto tools = toolsOf(answer.body)) co_return tools;
    assign(note, LocalRequest::message(answer.body).value_or(std::string("That computer did not say what can sign in.")));
    co_return std::nullopt;
}

Task<std::variant<HostSignInState, std::string>> Hosts::signInCall(std::string path, std::string target, std::string tool,
                                                                  std::optional<std::string> code, Duration timeout) {
    HttpAnswer answer = co_await send(std::move(path), HostSignIn::body(target, tool, code), timeout);
    if (answer.failure) co_return std::string("The bridge did not answer.");
    if (answer.status == 200)
        if (auto state = decodeJson<HostSignInState>(answer.body)) co_return *state;
    co_return LocalRequest::message(answer.body).value_or(std::string("The sign-in did not start. Try again."));
}

} // namespace orvan
