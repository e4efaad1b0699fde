// The accounts model's longer changes: a sign-in in a terminal, a token for other computers,
// Bedrock's settings and models, the fallback order and the auto-resume switch.

#include "accounts/Accounts.h"

#include "accounts/AutoResume.h"
#include "accounts/FallbackOrder.h"
#include "accounts/LoginCommand.h"
#include "accounts/PortableToken.h"
#include "accounts/ShellCommand.h"
#include "bridge/LocalRequest.h"
#include "foundation/PathPart.h"

#include <algorithm>

namespace orvan {

using namespace std::chrono_literals;

namespace {
constexpr const char* noAnswer = "The bridge did not answer.";
constexpr const char* unsafe = "The bridge's sign-in command could not be run safely, so nothing ran.";
constexpr Duration tokenDeadline = 320s;
constexpr Duration tokenPoll = 2s;

std::string accountPath(const std::string& id, const char* verb) {
    return "/companion/accounts/" + PathPart::escape(id) + "/" + verb;
}

std::string failureNote(const HttpAnswer& answer, const char* fallback) {
    if (answer.failure) return noAnswer;
    return LocalRequest::message(answer.body).value_or(fallback);
}

} // namespace

void Accounts::setRowNote(const std::string& id, std::optional<std::string> sentence) {
    auto notes = rowNote;
    if (sentence) notes[id] = std::move(*sentence);
    else notes.erase(id);
    assign(rowNote, std::move(notes));
}

Task<void> Accounts::signIn(CompanionAccount account) {
    Cancel alive = alive_;
    const std::string id = account.id;
    assign(busy, true);
    setRowNote(id, std::nullopt);
    auto lines = signInLine;
    lines.erase(id);
    assign(signInLine, std::move(lines));
    HttpAnswer answer = co_await send(accountPath(id, "login"), Json::object(), 15s);
    if (alive.cancelled()) co_return;
    std::optional<LoginCommand> command;
    if (LocalRequest::ok(answer)) command = decodeJson<LoginCommand>(answer.body);
    if (!command) {
        setRowNote(id, failureNote(answer, "The bridge gave no sign-in command."));
    } else {
        auto fresh = std::find_if(list.begin(), list.end(), [&](const auto& a) { return a.id == id; });
        const CompanionAccount& row = fresh != list.end() ? *fresh : account;
        auto line = command->fits(row) ? ShellCommand::line(command->argv, command->env) : std::nullopt;
        if (!line) {
            setRowNote(id, std::string(unsafe));
        } else {
            TerminalRun run{TerminalRun::Outcome::notLaunched, {}};
            if (setup_.terminal) run = co_await setup_.terminal->run(*line);
            if (alive.cancelled()) co_return;
            auto sentence = TerminalWindow::sentence(run);
            if (sentence) {
                setRowNote(id, *sentence);
                if (run.outcome == TerminalRun::Outcome::noDisplay) {
                    auto kept = signInLine;
                    kept[id] = *line;
                    assign(signInLine, std::move(kept));
                }
            } else {
                auto now = waiting;
                now.insert(id);
                assign(waiting, std::move(now));
            }
        }
    }
    co_await refresh(0, true);
    if (alive.cancelled()) co_return;
    assign(busy, false);
}

Task<void> Accounts::makeToken(CompanionAccount account) {
    const std::string id = account.id;
    if (making.count(id)) co_return;
    Cancel alive = alive_;
    setRowNote(id, std::nullopt);
    HttpAnswer started = co_await send(accountPath(id, "portable"), Json::object(), 15s);
    if (alive.cancelled()) co_return;
    std::optional<PortableToken::Answer> answer;
    if (LocalRequest::ok(started)) answer = decodeJson<PortableToken::Answer>(started.body);
    if (!answer) {
        setRowNote(id, failureNote(started, "The bridge did not make a token."));
        co_return;
    }
    auto now = making;
    now.insert(id);
    assign(making, std::move(now));
    const TimePoint deadline = clock_.now() + tokenDeadline;
    while (answer && answer->state == "waiting" && clock_.now() < deadline) {
        if (!co_await clock_.sleep(tokenPoll, alive) || alive.cancelled()) co_return;
        HttpAnswer polled = co_await send(accountPath(id, "portable"), std::nullopt, 8s);
        if (alive.cancelled()) co_return;
        // A poll that fails is asked again until the deadline; only the bridge's word ends the wait.
        if (LocalRequest::ok(polled))
            if (auto decoded = decodeJson<PortableToken::Answer>(polled.body)) answer = decoded;
    }
    if (answer->state == "failed") setRowNote(id, answer->failedText());
    else if (answer->state != "ready") setRowNote(id, std::string(PortableToken::noToken));
    co_await refresh(0, true);
    if (alive.cancelled()) co_return;
    auto left = making;
    left.erase(id);
    assign(making, std::move(left));
}

Task<std::optional<std::string>> Accounts::saveBedrock(std::string id, Json settings) {
    Cancel alive = alive_;
    HttpAnswer answer = co_await send(accountPath(id, "bedrock"), std::move(settings), 8s);
    if (alive.cancelled()) co_return std::nullopt;
    if (!LocalRequest::ok(answer)) co_return failureNote(answer, "Those settings were not saved.");
    co_await refresh(0, true);
    co_return std::nullopt;
}

Task<std::variant<std::vector<BedrockModel>, std::string>> Accounts::bedrockModels(Json body) {
    using Result = std::variant<std::vector<BedrockModel>, std::string>;
    HttpAnswer answer = co_await send("/companion/bedrock/models", std::move(body), 45s);
    if (answer.failure) co_return Result{std::string(noAnswer)};
    std::optional<BedrockModels> models;
    if (LocalRequest::ok(answer)) models = decodeJson<BedrockModels>(answer.body);
    if (!models)
        co_return Result{LocalRequest::message(answer.body).value_or("Amazon Bedrock's models could not be read.")};
    if (models->models.empty()) co_return Result{std::string("Amazon Bedrock lists no Claude model for this region.")};
    co_return Result{std::move(models->models)};
}

Task<void> Accounts::saveOrder(std::vector<std::string> newChain, bool newAutoSwitch) {
    Cancel alive = alive_;
    assign(chain, newChain);
    assign(autoSwitch, newAutoSwitch);
    const int ticket = ++orderSaves;
    Json body = FallbackOrder::body(newChain, newAutoSwitch);
    HttpAnswer answer = co_await send("/companion/accounts/chain", std::move(body), 8s);
    if (alive.cancelled() || orderSaves != ticket) co_return;
    std::optional<AccountsList> decoded;
    if (LocalRequest::ok(answer)) decoded = decodeJson<AccountsList>(answer.body);
    if (decoded) {
        show(std::move(*decoded));
        assign(orderNote, std::string());
        co_return;
    }
    std::string why = answer.failure ? noAnswer : LocalRequest::message(answer.body).value_or(noAnswer);
    assign(orderNote, "Not saved. " + why);
    co_await refresh(0, true);
}

Task<void> Accounts::readAutoResume() {
    Cancel alive = alive_;
    HttpAnswer answer = co_await send("/companion/limits", std::nullopt, LocalRequest::defaultTimeout);
    if (alive.cancelled()) co_return;
    if (answer.failure) {
        assign(autoResumeNote, std::string(noAnswer));
        co_return;
    }
    if (answer.status == 404 || answer.status == 503) {
        assign(autoResumeUnsupported, true);
        assign(autoResume, std::optional<bool>());
        assign(autoResumeNote, std::string(AutoResume::unsupported));
        co_return;
    }
    auto value = LocalRequest::ok(answer) ? AutoResume::read(answer.body) : std::nullopt;
    if (!value) {
        assign(autoResumeNote, LocalRequest::message(answer.body).value_or("The switch could not be read."));
        co_return;
    }
    assign(autoResumeUnsupported, false);
    assign(autoResume, value);
    assign(autoResumeNote, std::string());
}

Task<void> Accounts::setAutoResume(bool on) {
    Cancel alive = alive_;
    const std::optional<bool> before = autoResume;
    assign(autoResume, std::optional<bool>(on));
    Json body = {{"autoResume", on}};
    HttpAnswer answer = co_await send("/companion/limits", std::move(body), LocalRequest::defaultTimeout);
    if (alive.cancelled()) co_return;
    if (LocalRequest::ok(answer)) {
        if (auto value = AutoResume::read(answer.body)) assign(autoResume, value);
        assign(autoResumeNote, std::string());
        co_return;
    }
    std::string why = answer.failure ? noAnswer : LocalRequest::message(answer.body).value_or(noAnswer);
    assign(autoResumeNote, "Not saved. " + why);
    assign(autoResume, before);
}

} // namespace orvan
