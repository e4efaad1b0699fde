#include "accounts/AccountHome.h"
#include "accounts/AccountProvider.h"
#include "accounts/AccountWords.h"
#include "accounts/ReadinessWords.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

CompanionAccount row(Json j) {
    if (!j.contains("id")) j["id"] = "a1";
    return *CompanionAccount::decode(j);
}

TimePoint at(const char* text) { return *AccountWords::date(text); }

TEST(AccountProviders, NamesAndMarksForKnownAndUnknownProviders) {
    struct Case { const char* provider; const char* kind; const char* name; const char* mark; };
    for (auto c : {Case{"claude", "login", "Claude", "mark-claude"}, Case{"CODEX", "apikey", "Codex", "mark-codex"},
                   Case{"claude", "bedrock", "Claude", "mark-bedrock"}, Case{"ollama", "bedrock", "Ollama", "mark-bedrock"},
                   Case{"ollama", "login", "Ollama", ""}, Case{"\xC3\xA9lan", "", "\xC3\x89lan", ""},
                   Case{"", "", "Agent", ""}}) {
        EXPECT_EQ(AccountProviders::name(std::string(c.provider)), c.name) << c.provider;
        EXPECT_EQ(AccountProviders::mark(c.provider, c.kind).value_or(""), c.mark) << c.provider << c.kind;
    }
    EXPECT_FALSE(AccountProviders::takesNewLogin(AccountProvider::cursor));
    EXPECT_EQ(AccountProviders::defaultHome(AccountProvider::gemini), "~/.gemini");
}

TEST(AccountWords, RowWords) {
    std::vector<std::string> chain = {"b", "a1"};
    struct Case { Json j; const char* detail; const char* model; const char* key; };
    std::vector<Case> cases = {
        {{{"provider", "claude"}, {"kind", "login"}}, "Claude · Sign-in · Fallback 2", "", "Replace key…"},
        {{{"provider", "codex"}, {"kind", "apikey"}, {"status", "missing_key"}, {"id", "z"}},
         "Codex · API key · Not in fallback", "", "Add key…"},
        {{{"provider", "grok"}, {"kind", "token"}}, "Grok · Sign-in token · Fallback 2", "", "Replace key…"},
        {{{"provider", "claude"}, {"kind", "bedrock"}, {"bedrock", {{"region", " eu-west-1 "}, {"model", " opus "}, {"auth", "keys"}}},
          {"status", "missing_key"}},
         "Claude · Amazon Bedrock · eu-west-1 · Fallback 2", "Model: opus", "Add access keys…"},
        {{{"provider", "claude"}, {"kind", "bedrock"}, {"bedrock", {{"region", "  "}, {"auth", "keys"}}}},
         "Claude · Amazon Bedrock · Fallback 2", "Model: Claude Code's default", "Replace access keys…"},
        {{{"provider", "claude"}, {"kind", "bedrock"}}, "Claude · Amazon Bedrock · Fallback 2",
         "Model: Claude Code's default", "Replace key…"},
    };
    for (const auto& c : cases) {
        auto a = row(c.j);
        EXPECT_EQ(AccountWords::detail(a, chain), c.detail) << c.j.dump();
        EXPECT_EQ(AccountWords::bedrockModel(a), c.model) << c.j.dump();
        EXPECT_EQ(AccountWords::keyButton(a), c.key) << c.j.dump();
    }
}

TEST(AccountWords, LimitedTimesInTheLocalesForms) {
    const TimePoint now = at("2026-11-23T10:00:00Z");
    struct Case { const char* locale; const char* until; const char* label; };
    for (auto c : {Case{"en_US", "2026-11-23T15:30:00Z", "Limited until 3:30\xE2\x80\xAFPM"},
                   Case{"de_DE", "2026-11-23T15:30:00Z", "Limited until 15:30"},
                   Case{"en_US", "2026-11-25T09:05:00Z", "Limited until Wed 9:05\xE2\x80\xAF" "AM"},
                   Case{"en_US", "2026-11-30T09:05:00Z", "Limited until Nov 30, 9:05\xE2\x80\xAF" "AM"},
                   Case{"en_US", "2026-11-22T09:05:00Z", "Limited until Nov 22, 9:05\xE2\x80\xAF" "AM"},
                   Case{"en_US", "soon", "Limited"}}) {
        AccountWords::Place place{c.locale, "UTC"};
        EXPECT_EQ(AccountWords::status("limited", c.until, "login", now, place), c.label) << c.locale << c.until;
    }
    // The calendar day is the user's: 01:00 in Berlin on the 24th is not "today" there at 22:00 UTC on the 23rd.
    AccountWords::Place berlin{"de_DE", "Europe/Berlin"};
    EXPECT_EQ(AccountWords::time(at("2026-11-24T00:30:00Z"), at("2026-11-23T22:00:00Z"), berlin), "Di., 01:30");
}

TEST(AccountWords, LimitedWordsChangeWhenTheDayOrTheWeekdayFormComes) {
    AccountWords::Place utc{"en_US", "UTC"};
    struct Case { const char* now; const char* until; const char* changes; };
    for (auto c : {Case{"2026-11-23T10:00:00Z", "2026-11-23T15:00:00Z", "2026-11-24T00:00:00Z"},
                   Case{"2026-11-23T10:00:00Z", "2026-11-25T15:00:00Z", "2026-11-25T00:00:00Z"},
                   Case{"2026-11-23T10:00:00Z", "2026-12-02T15:00:00Z", "2026-11-26T15:00:01Z"},
                   Case{"2026-11-23T10:00:00Z", "2026-11-20T15:00:00Z", ""}}) {
        auto at = AccountWords::statusChangesAt("limited", c.until, *AccountWords::date(c.now), utc);
        EXPECT_EQ(at ? RFC3339::string(*at) : "", c.changes) << c.until;
        if (at) {
            auto before = AccountWords::status("limited", c.until, "login", *at - std::chrono::seconds(1), utc);
            EXPECT_NE(before, AccountWords::status("limited", c.until, "login", *at, utc)) << c.until;
        }
    }
    EXPECT_FALSE(AccountWords::statusChangesAt("ready", "2026-11-23T15:00:00Z", *AccountWords::date("2026-11-23T10:00:00Z"), utc));
}

TEST(AccountWords, StatusLabelsAndTheirLimit) {
    const TimePoint now = at("2026-11-23T10:00:00Z");
    AccountWords::Place place{"en_US", "UTC"};
    struct Case { std::string status; const char* kind; std::string label; };
    std::string sixty(60, 'x'), sixtyOne(61, 'x');
    for (const auto& c : {Case{"ready", "login", "Ready"}, Case{"missing_key", "bedrock", "No AWS credentials yet"},
                          Case{"missing_key", "apikey", "No key yet"}, Case{"", "login", "Not checked yet"},
                          Case{"rate_limited", "login", "Rate limited"}, Case{"_Needs_sign-in_", "login", "Unknown status"},
                          Case{"NOT_INSTALLED", "login", "Unknown status"}, Case{sixty, "login", "X" + sixty.substr(1)},
                          Case{sixtyOne, "login", "X" + sixty.substr(1) + "…"}})
        EXPECT_EQ(AccountWords::status(c.status, "", c.kind, now, place), c.label) << c.status;
}

TEST(AccountWords, RemovalSentences) {
    const std::string home = "/home/o", folder = "/home/o/.local/share/Orvan/accounts";
    struct Case { Json j; std::string sentence; };
    std::vector<Case> cases = {
        {{{"kind", "token"}, {"threads", 1}},
         "Forgets this account. Its token is deleted from the Keychain. A running thread uses it; once it is removed, "
         "that thread cannot resume on it."},
        {{{"kind", "bedrock"}}, "Forgets this account. Its AWS credentials are deleted from the Keychain."},
        {{{"kind", "bedrock"}, {"bedrock", {{"auth", "profile"}}}, {"threads", 3}},
         "Forgets this account. The AWS profile stays in this Mac's AWS settings. 3 running threads use it; once it "
         "is removed, they cannot resume on it."},
        {{{"kind", "apikey"}}, "Forgets this account. Its API key is deleted from the Keychain."},
        {{{"kind", "login"}, {"home", folder + "/c1"}}, "Forgets this account. Its sign-in folder is deleted."},
        {{{"kind", "login"}, {"home", folder + "/c1"}, {"made", false}},
         "Forgets this account. The login in ~/.local/share/Orvan/accounts/c1 stays on this Mac."},
        {{{"kind", "login"}, {"home", "/srv/claude"}, {"made", true}, {"portable", true}},
         "Forgets this account. Its sign-in folder is deleted. Its token for other computers is deleted too."},
        {{{"provider", "codex"}, {"default", true}},
         "Forgets this account. The login in Default login (~/.codex) stays on this Mac."},
        {{{"provider", "zed"}, {"default", true}}, "Forgets this account. The login in Default login (the CLI's own) stays on this Mac."},
        {{{"provider", "claude"}, {"default", true}, {"home", "/home/o/.claude-2"}},
         "Forgets this account. The login in Default login (~/.claude-2) stays on this Mac."},
    };
    for (const auto& c : cases) EXPECT_EQ(AccountWords::removal(row(c.j), folder, home), c.sentence) << c.j.dump();
}

TEST(AccountHome, TildeAndTheBridgeFolder) {
    EXPECT_EQ(AccountHome::tilde("/home/o", "/home/o/"), "~");
    EXPECT_EQ(AccountHome::tilde("/home/o/x", "/home/o"), "~/x");
    EXPECT_EQ(AccountHome::tilde("/home/other", "/home/o"), "/home/other");
    EXPECT_EQ(AccountHome::tilde("/home/o/x", ""), "/home/o/x");
    EXPECT_EQ(AccountHome::bridgeFolder({{"ORVAN_DIR", "/d//orvan/./x/"}}, "/home/o"), "/d/orvan/x");
    EXPECT_EQ(AccountHome::bridgeFolder({{"TULM_MOBILE_DIR", "/old"}}, "/home/o"), "/old");
    EXPECT_EQ(AccountHome::bridgeFolder({}, "/home/o/"), "/home/o/.local/share/Orvan");
    EXPECT_EQ(AccountHome::bridgeFolder({{"XDG_DATA_HOME", "/data"}}, "/home/o"), "/data/Orvan");
}

TEST(AccountWords, LocaleFromTheEnvironment) {
    EXPECT_EQ(AccountWords::placeFrom({{"LANG", "de_DE.UTF-8"}}).locale, "de_DE");
    EXPECT_EQ(AccountWords::placeFrom({{"LANG", "de_DE.UTF-8"}, {"LC_TIME", "fr_FR@euro"}}).locale, "fr_FR");
    EXPECT_EQ(AccountWords::placeFrom({{"LC_ALL", "C"}, {"LC_TIME", "fr_FR"}}).locale, "en_US");
    EXPECT_EQ(AccountWords::placeFrom({}).locale, "en_US");
}

} // namespace
} // namespace orvan
