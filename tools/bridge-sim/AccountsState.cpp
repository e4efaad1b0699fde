#include "AccountsState.h"

#include <algorithm>
#include <cmath>

namespace orvan::sim {

using nlohmann::json;
using namespace std::chrono_literals;

namespace {

// Counts the label in user-perceived characters roughly as the bridge does: code points, with
// combining marks, variation selectors, joiners and skin tones leaning on the one before.
std::size_t characters(const std::string& text) {
    std::size_t count = 0;
    bool joined = false;
    for (std::size_t i = 0; i < text.size();) {
        unsigned char c = static_cast<unsigned char>(text[i]);
        std::size_t length = c < 0x80 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
        char32_t cp = c < 0x80 ? c : c < 0xE0 ? c & 0x1F : c < 0xF0 ? c & 0x0F : c & 0x07;
        for (std::size_t k = 1; k < length && i + k < text.size(); ++k)
            cp = (cp << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3F);
        i += length;
        bool leans = (cp >= 0x300 && cp <= 0x36F) || (cp >= 0xFE00 && cp <= 0xFE0F) || cp == 0x200D ||
                     (cp >= 0x1F3FB && cp <= 0x1F3FF);
        if (!leans && !joined) ++count;
        joined = cp == 0x200D;
    }
    return count;
}

std::string trimmed(const std::string& text) {
    auto start = text.find_first_not_of(" \t\r\n");
    if (start == std::string::npos) return "";
    return text.substr(start, text.find_last_not_of(" \t\r\n") - start + 1);
}

std::string day(TimePoint when) { return Rfc3339::string(when).substr(0, 10); }

} // namespace

AccountsState AccountsState::seeded(TimePoint now, const std::string& dataFolder) {
    AccountsState s;
    s.accounts = {
        {"acc-work", "claude", "Work", "login", "ready", std::nullopt, dataFolder + "/accounts/claude-work", false,
         true, true, std::nullopt, 0},
        {"acc-ci", "codex", "CI key", "apikey", "ready", std::nullopt, "", false, std::nullopt, false, std::nullopt, 2},
        {"acc-grok", "grok", "Night shift", "token", "limited", now + 3h, "", false, std::nullopt, false, std::nullopt,
         0},
        {"acc-aws", "claude", "AWS", "bedrock", "ready", std::nullopt, "", false, std::nullopt, false,
         json{{"region", "us-east-1"}, {"model", ""}, {"auth", "profile"}, {"profile", "dev"}}, 1},
    };
    s.accounts[2].threadComing = true;
    s.chain = {"acc-work", "acc-ci"};
    s.nextId = 1;
    s.dataFolder = dataFolder;
    s.found = json::array({{{"provider", "codex"}, {"default", true}, {"signedIn", true}},
                           {{"provider", "gemini"}, {"home", "/home/owner/.gemini-side"}, {"signedIn", false}},
                           {{"provider", "grok"}, {"default", false}}});
    return s;
}

SimAccount* AccountsState::find(const std::string& id) {
    auto it = std::find_if(accounts.begin(), accounts.end(), [&](const SimAccount& a) { return a.id == id; });
    return it == accounts.end() ? nullptr : &*it;
}

std::string AccountsState::checked() const { return lastVendorRead ? Rfc3339::string(*lastVendorRead) : ""; }

json AccountsState::row(const SimAccount& a) const {
    json j = {{"id", a.id}, {"provider", a.provider}, {"label", a.label}, {"kind", a.kind}, {"status", a.status},
              {"default", a.isDefault}, {"portable", a.portable}, {"threads", a.threads}};
    if (a.until) j["until"] = Rfc3339::string(*a.until);
    if (!a.home.empty()) j["home"] = a.home;
    if (a.made) j["made"] = *a.made;
    if (a.bedrock) j["bedrock"] = *a.bedrock;
    if (a.kind == "login" && lastVendorRead) {
        double used = std::fmod(37.0 + 9.0 * vendorReads, 100.0);
        j["usage"] = {{"meter", {{"name", "5-hour"}, {"usedPercent", used}}}, {"checked", checked()},
                      {"week", {{"turns", 41}, {"tokens", 1'250'000}, {"costUSD", 12.4}}}};
    }
    return j;
}

json AccountsState::list() const {
    json rows = json::array();
    for (const auto& a : accounts) rows.push_back(row(a));
    // Rows an older or newer bridge might send, which the companion must step over or read leniently.
    rows.push_back({{"label", "A row without an id"}, {"provider", "claude"}});
    rows.push_back({{"id", 17}, {"provider", "codex"}});
    return {{"accounts", rows},
            {"chain", chain},
            {"autoSwitch", autoSwitch},
            {"found", found},
            {"awsProfiles", awsProfiles},
            // Counts for tests of the simulator; the companion reads no such key.
            {"simulator", {{"usageReads", usageReads}, {"vendorReads", vendorReads}, {"freshAsked", freshAsked}}}};
}

json AccountsState::loginUsage(const SimAccount& a) const {
    json j = {{"id", a.id}, {"provider", a.provider}, {"kind", a.kind}, {"checked", checked()}};
    const double drift = 9.0 * vendorReads;
    if (a.kind == "login" || a.kind == "token") {
        j["plan"] = a.provider == "claude" ? "max" : "pro";
        j["meters"] = json::array({{{"name", "5-hour"}, {"usedPercent", std::fmod(37.0 + drift, 100.0)},
                                    {"resetsAt", Rfc3339::string(*lastVendorRead + 2h)}},
                                   {{"name", "7-day"}, {"usedPercent", std::min(100.0, 64.0 + drift / 3)},
                                    {"resetsAt", Rfc3339::string(*lastVendorRead + 96h)}},
                                   // A meter an older vendor reply spells as text: stepped over alone.
                                   {{"name", "opus"}, {"usedPercent", "12"}}});
    }
    if (a.kind == "bedrock") {
        j["tallies"] = json::array({{{"span", "7d"}, {"model", "claude-sonnet"}, {"inputTokens", 2'400'000},
                                     {"outputTokens", 310'000}, {"invocations", 820}},
                                    {{"span", "7d"}, {"inputTokens", 2'600'000}, {"outputTokens", 330'000}, {"invocations", 871}},
                                    {{"span", "30d"}, {"name", "All models"}, {"inputTokens", 9'100'000},
                                     {"outputTokens", 1'200'000}, {"invocations", 3'140}}});
        j["scope"] = "us-east-1";
    }
    if (a.kind == "apikey") j["note"] = "API keys have no plan meters; the vendor bills by use.";
    j["today"] = {{"turns", 6}, {"tokens", 184'000}, {"costUSD", 1.92}, {"durationMs", 1'260'000}};
    j["week"] = {{"turns", 41}, {"tokens", 1'250'000}, {"costUSD", 12.4}, {"durationMs", 9'900'000}, {"bareTurns", 2}};
    json days = json::array();
    for (int back = 6; back >= 0; --back) {
        json d = {{"day", day(*lastVendorRead - std::chrono::hours(24 * back))}, {"turns", 3 + back},
                  {"tokens", 90'000 + 11'000 * back}, {"costUSD", 0.8 + 0.1 * back}};
        if (back == 2 && a.kind != "apikey")
            d["limits"] = json::array({{{"at", Rfc3339::string(*lastVendorRead - 50h)},
                                        {"resetsAt", Rfc3339::string(*lastVendorRead - 47h)},
                                        {"text", "5-hour limit reached"}}});
        days.push_back(d);
    }
    j["days"] = days;
    return j;
}

json AccountsState::usage(bool fresh, TimePoint now) {
    ++usageReads;
    if (fresh) ++freshAsked;
    bool due = !lastVendorRead || (fresh && now - *lastVendorRead >= std::chrono::seconds(freshEverySeconds));
    if (due) {
        lastVendorRead = now;
        ++vendorReads;
    }
    json rows = json::array();
    for (const auto& a : accounts) rows.push_back(loginUsage(a));
    // The same id twice: the first stands.
    if (!accounts.empty()) rows.push_back({{"id", accounts.front().id}, {"plan", "a duplicate the companion drops"}});
    json codex = {{"id", "codex|default"}, {"provider", "codex"}, {"kind", "login"}, {"plan", "plus"},
                  {"checked", checked()},
                  {"meters", json::array({{{"name", "5-hour"}, {"usedPercent", std::fmod(12.0 + 7.0 * vendorReads, 100.0)}},
                                          {{"name", "weekly"}, {"usedPercent", 28.5}}})}};
    return {{"accounts", rows}, {"defaults", json::array({codex})}};
}

Reply AccountsState::add(const json& body) {
    auto text = [&](const char* key) {
        return body.contains(key) && body[key].is_string() ? body[key].get<std::string>() : std::string();
    };
    std::string kind = text("kind");
    std::string provider = text("provider");
    if (provider.empty() || kind.empty()) return Reply::message(400, "Give a provider and a kind.");
    SimAccount a;
    a.id = "acc-new-" + std::to_string(nextId);
    a.provider = provider;
    a.kind = kind;
    a.label = trimmed(text("label"));
    if (a.label.empty() || characters(a.label) > 40) return Reply::message(400, "A label is 1 to 40 characters.");
    if (kind == "apikey") {
        a.status = "missing_key";
    } else if (kind == "login") {
        std::string home = text("home");
        if (home.empty()) {
            a.status = "needs_login";
            a.home = dataFolder + "/accounts/" + provider + "-" + std::to_string(nextId);
            a.made = true;
        } else {
            // Adopting: the login must be one the machine has and no account uses yet.
            auto login = std::find_if(found.begin(), found.end(), [&](const json& f) {
                bool isDefault = f.value("default", false);
                return f.value("provider", "") == provider && (isDefault ? home == "default" : f.value("home", "") == home);
            });
            if (login == found.end()) return Reply::message(404, "That login is not on this computer.");
            a.isDefault = home == "default";
            a.home = a.isDefault ? "" : home;
            a.status = login->value("signedIn", false) ? "ready" : "needs_login";
            found.erase(login);
        }
    } else if (kind == "bedrock") {
        std::string auth = text("auth");
        json bedrock = {{"region", text("region")}, {"model", text("model")}, {"auth", auth}};
        if (text("region").empty()) return Reply::message(400, "Give a region.");
        if (auth == "apikey" && text("key").empty()) return Reply::message(400, "That key is empty.");
        if (auth == "keys" && (text("accessKeyId").empty() || text("secretAccessKey").empty()))
            return Reply::message(400, "Give an access key ID and its secret.");
        if (auth == "profile") {
            if (std::find(awsProfiles.begin(), awsProfiles.end(), text("profile")) == awsProfiles.end())
                return Reply::message(400, "There is no such AWS profile.");
            bedrock["profile"] = text("profile");
        }
        if (auth != "apikey" && auth != "keys" && auth != "profile") return Reply::message(400, "Give a way to sign in.");
        a.bedrock = bedrock;
        a.status = "ready";
    } else {
        return Reply::message(400, "There is no such kind of account.");
    }
    ++nextId;
    accounts.push_back(a);
    return Reply::json(201, json{{"account", row(a)}});
}

Reply AccountsState::setLabel(const std::string& id, const json& body) {
    SimAccount* a = find(id);
    if (!a) return Reply::message(404, "There is no such account.");
    if (!body.contains("label") || !body["label"].is_string()) return Reply::message(400, "Give a \"label\".");
    std::string label = trimmed(body["label"].get<std::string>());
    if (label.empty() || characters(label) > 40) return Reply::message(400, "A label is 1 to 40 characters.");
    a->label = label;
    return Reply::done();
}

Reply AccountsState::remove(const std::string& id, const json& body) {
    SimAccount* a = find(id);
    if (!a) return Reply::message(404, "There is no such account.");
    bool anyway = body.contains("anyway") && body["anyway"].is_boolean() && body["anyway"].get<bool>();
    if (a->threadComing && !anyway) {
        a->threadComing = false;
        a->threads = 1;
    }
    if (a->threads > 0 && !anyway)
        return Reply::refusal(409, "in_use",
                              a->threads == 1 ? "A running thread uses this account."
                                              : std::to_string(a->threads) + " running threads use this account.");
    chain.erase(std::remove(chain.begin(), chain.end(), id), chain.end());
    accounts.erase(std::remove_if(accounts.begin(), accounts.end(), [&](const SimAccount& x) { return x.id == id; }),
                   accounts.end());
    return Reply::done();
}

Reply AccountsState::setKey(const std::string& id, const json& body) {
    SimAccount* a = find(id);
    if (!a) return Reply::message(404, "There is no such account.");
    bool keys = (body.contains("accessKeyId") && body["accessKeyId"].is_string()) ||
                (body.contains("accessKeyID") && body["accessKeyID"].is_string());
    bool key = body.contains("key") && body["key"].is_string() && !trimmed(body["key"].get<std::string>()).empty();
    if (!key && !keys) return Reply::message(400, "That key is empty.");
    a->status = "ready";
    return Reply::done();
}

void AccountsState::settle(TimePoint now) {
    for (auto& a : accounts)
        if (a.signedInAt && now >= *a.signedInAt) {
            a.signedInAt.reset();
            a.status = "ready";
        }
}

Reply AccountsState::login(const std::string& id, TimePoint now) {
    SimAccount* a = find(id);
    if (!a) return Reply::message(404, "There is no such account.");
    if (a->kind != "login") return Reply::message(400, "Only a login signs in.");
    // A harmless stand-in for a vendor's sign-in: it says what it would sign in, and where.
    json command = {{"argv", json::array({"/bin/sh", "-c", "printf 'Signed in to %s in %s.\\n' \"$1\" \"${ORVAN_ACCOUNT_HOME:-the default login}\"",
                                         "orvan-sign-in", a->label})}};
    json env = json::object();
    if (!a->isDefault && !a->home.empty()) env["ORVAN_ACCOUNT_HOME"] = a->home;
    command["env"] = env;
    a->signedInAt = now + std::chrono::seconds(signInSeconds);
    return Reply::json(200, command);
}

Reply AccountsState::portable(const std::string& id, bool start) {
    SimAccount* a = find(id);
    if (!a) return Reply::message(404, "There is no such account.");
    if (a->provider != "claude" || a->kind != "login") return Reply::message(400, "Only a Claude login makes a token.");
    if (start) a->portableLeft = portablePolls;
    if (a->portableLeft < 0) return Reply::json(200, json{{"state", "failed"}, {"message", "No token is being made."}});
    if (a->portableLeft == 0 || a->portable) {
        a->portable = true;
        return Reply::json(200, json{{"state", "ready"}});
    }
    if (!start) --a->portableLeft;
    return Reply::json(200, json{{"state", "waiting"}});
}

Reply AccountsState::setBedrock(const std::string& id, const json& body) {
    SimAccount* a = find(id);
    if (!a) return Reply::message(404, "There is no such account.");
    if (a->kind != "bedrock" || !a->bedrock) return Reply::message(400, "That account does not use Amazon Bedrock.");
    if (!body.contains("region") || !body["region"].is_string() || body["region"].get<std::string>().empty())
        return Reply::message(400, "Give a region.");
    (*a->bedrock)["region"] = body["region"];
    (*a->bedrock)["model"] = body.contains("model") && body["model"].is_string() ? body["model"] : json("");
    return Reply::done();
}

Reply AccountsState::bedrockModels(const json& body) {
    std::string region = body.contains("region") && body["region"].is_string() ? body["region"].get<std::string>() : "";
    if (region.empty()) return Reply::message(400, "Give a region.");
    if (body.contains("account")) {
        SimAccount* a = body["account"].is_string() ? find(body["account"].get<std::string>()) : nullptr;
        if (!a || a->kind != "bedrock") return Reply::message(404, "There is no such Bedrock account.");
    }
    // A region where Claude is not enabled lists nothing.
    if (region == "eu-north-1") return Reply::json(200, json{{"models", json::array()}});
    return Reply::json(200, json{{"models", json::array({
                                      {{"id", "us.anthropic.claude-sonnet-4-5-20250929-v1:0"}, {"name", "Claude Sonnet 4.5"}},
                                      {{"id", "us.anthropic.claude-opus-4-1-20250805-v1:0"}, {"name", "Claude Opus 4.1"}},
                                      {{"id", "anthropic.claude-3-haiku-20240307-v1:0"}},
                                      // A row an older bridge sends without an id: left out.
                                      {{"name", "No id"}},
                                  })}});
}

Reply AccountsState::setChain(const json& body) {
    if (!body.contains("chain") || !body["chain"].is_array() || !body.contains("autoSwitch") ||
        !body["autoSwitch"].is_boolean())
        return Reply::message(400, "Give a \"chain\" and \"autoSwitch\".");
    std::vector<std::string> next;
    for (const auto& id : body["chain"])
        if (id.is_string()) next.push_back(id.get<std::string>());
    chain = next;
    autoSwitch = body["autoSwitch"].get<bool>();
    return Reply::json(200, list());
}

Reply AccountsState::limits(const json* body) {
    if (body) {
        if (!body->contains("autoResume") || !(*body)["autoResume"].is_boolean())
            return Reply::message(400, "Give \"autoResume\" as true or false.");
        autoResume = (*body)["autoResume"].get<bool>();
    }
    return Reply::json(200, json{{"autoResume", autoResume}});
}

} // namespace orvan::sim
