#include "accounts/Accounts.h"

#include "accounts/AccountHome.h"
#include "accounts/AccountLabel.h"
#include "accounts/AccountsList.h"
#include "accounts/CreatedAccount.h"
#include "bridge/LocalRequest.h"
#include "foundation/PathPart.h"

#include <algorithm>

namespace orvan {

using namespace std::chrono_literals;

namespace {
constexpr Duration listTimeout = 8s;
constexpr Duration changeTimeout = 30s;
constexpr Duration labelTimeout = 8s;
constexpr const char* noAnswer = "The bridge did not answer.";

// Every id stands as one path segment, whatever bytes it holds.
std::string accountPath(const std::string& id, const char* verb) {
    return "/companion/accounts/" + PathPart::escape(id) + "/" + verb;
}

std::string failureNote(const HttpAnswer& answer, const char* fallback) {
    if (answer.failure) return noAnswer;
    return LocalRequest::message(answer.body).value_or(fallback);
}

Json texts(const Accounts::Texts& map) {
    Json object = Json::object();
    for (const auto& [key, value] : map) object[key] = value;
    return object;
}
} // namespace

Accounts::Accounts(LocalApi& api, Clock& clock, AccountsSetup setup)
    : userHome(setup.userHome), place(AccountWords::placeFrom(setup.environment)), api_(api), clock_(clock), setup_(std::move(setup)) {}

Accounts::~Accounts() {
    alive_.cancel();
    if (usageTask_) usageTask_->cancel();
}

std::string Accounts::accountsFolder() const {
    return AccountHome::bridgeFolder(setup_.environment, userHome) + "/accounts";
}

Task<HttpAnswer> Accounts::send(std::string path, std::optional<Json> body, Duration timeout) {
    HttpAnswer answer =
        co_await LocalRequest::send(api_, std::move(path), std::move(body), timeout, setup_.environment);
    co_return answer;
}

Task<void> Accounts::refresh(int generation, bool useCurrent) {
    if (useCurrent) generation = plan.currentGeneration();
    Cancel alive = alive_;
    HttpAnswer answer = co_await send("/companion/accounts", std::nullopt, listTimeout);
    if (alive.cancelled()) co_return;
    if (!answer.isHttp() || answer.status != 200) co_return;
    auto decoded = decodeJson<AccountsList>(answer.body);
    if (!decoded || !plan.accepts(generation)) co_return;
    show(std::move(*decoded));
}

void Accounts::show(AccountsList decoded) {
    assign(list, std::move(decoded.accounts));
    assign(chain, std::move(decoded.chain));
    assign(autoSwitch, decoded.autoSwitch);
    assign(found, std::move(decoded.found));
    assign(awsProfiles, std::move(decoded.awsProfiles));
    assign(loaded, true);
    // A sign-in that landed ends its "finish in Terminal" note at once.
    std::set<std::string> stillWaiting;
    for (const auto& id : waiting) {
        auto row = std::find_if(list.begin(), list.end(), [&](const auto& a) { return a.id == id; });
        if (row != list.end() && row->status != "ready") stillWaiting.insert(id);
    }
    assign(waiting, std::move(stillWaiting));
}

Task<std::optional<CompanionAccount>> Accounts::add(Texts fields, std::string key, Texts secret) {
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, "");
    Texts merged = fields;
    for (auto& [name, value] : secret) merged[name] = value;
    HttpAnswer created = co_await send("/companion/accounts", texts(merged), changeTimeout);
    if (alive.cancelled()) co_return std::nullopt;
    std::optional<CreatedAccount> row;
    if (LocalRequest::ok(created)) row = decodeJson<CreatedAccount>(created.body);
    if (!row) {
        assign(note, failureNote(created, "The account was not added."));
        co_await refresh(0, true);
        if (alive.cancelled()) co_return std::nullopt;
        assign(busy, false);
        co_return std::nullopt;
    }
    auto kind = fields.find("kind");
    if (kind != fields.end() && kind->second == "apikey") {
        Json body = {{"key", key}};
        HttpAnswer keyed = co_await send(accountPath(row->account.id, "key"), std::move(body), changeTimeout);
        if (alive.cancelled()) co_return std::nullopt;
        if (!LocalRequest::ok(keyed)) {
            auto label = fields.find("label");
            std::string who = label != fields.end() && !label->second.empty() ? label->second : "The account";
            assign(note, who + " was added, but its key was not saved. Choose Add key… to try again.");
        }
    }
    co_await refresh(0, true);
    if (alive.cancelled()) co_return std::nullopt;
    std::optional<CompanionAccount> shown = row->account;
    for (const auto& a : list)
        if (a.id == row->account.id) shown = a;
    assign(busy, false);
    co_return shown;
}

Task<void> Accounts::replaceKey(CompanionAccount account, Texts fields) {
    Cancel alive = alive_;
    assign(busy, true);
    auto notes = rowNote;
    notes.erase(account.id);
    assign(rowNote, std::move(notes));
    HttpAnswer answer = co_await send(accountPath(account.id, "key"), texts(fields), changeTimeout);
    if (alive.cancelled()) co_return;
    if (!LocalRequest::ok(answer)) {
        auto notes = rowNote;
        notes[account.id] = failureNote(answer, "The key was not saved.");
        assign(rowNote, std::move(notes));
    }
    co_await refresh(0, true);
    if (alive.cancelled()) co_return;
    assign(busy, false);
}

Task<bool> Accounts::rename(std::string id, std::string label) {
    auto cleaned = AccountLabel::clean(label);
    auto notes = rowNote;
    if (!cleaned) {
        notes[id] = AccountLabel::refused;
        assign(rowNote, std::move(notes));
        co_return false;
    }
    Cancel alive = alive_;
    assign(busy, true);
    notes.erase(id);
    assign(rowNote, std::move(notes));
    Json body = {{"label", *cleaned}};
    HttpAnswer answer = co_await send(accountPath(id, "label"), std::move(body), labelTimeout);
    if (alive.cancelled()) co_return false;
    if (LocalRequest::ok(answer)) {
        co_await refresh(0, true);
        if (alive.cancelled()) co_return false;
        assign(busy, false);
        co_return true;
    }
    auto failed = rowNote;
    failed[id] = failureNote(answer, "That label was not saved.");
    assign(rowNote, std::move(failed));
    assign(busy, false);
    co_return false;
}

Task<void> Accounts::remove(CompanionAccount account) {
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, "");
    // `anyway` says the owner has seen the threads that use the account.
    Json body = {{"anyway", account.threads > 0}};
    HttpAnswer answer = co_await send(accountPath(account.id, "remove"), std::move(body), changeTimeout);
    if (alive.cancelled()) co_return;
    if (!LocalRequest::ok(answer)) {
        std::string sentence = "That account was not removed.";
        if (answer.isHttp()) sentence = LocalRequest::message(answer.body).value_or(sentence);
        if (answer.isHttp() && answer.status == 409) sentence += " Remove it again to go ahead.";
        assign(note, sentence);
    }
    auto left = waiting;
    left.erase(account.id);
    assign(waiting, std::move(left));
    auto notes = rowNote;
    notes.erase(account.id);
    assign(rowNote, std::move(notes));
    co_await refresh(0, true);
    if (alive.cancelled()) co_return;
    assign(busy, false);
}

} // namespace orvan
