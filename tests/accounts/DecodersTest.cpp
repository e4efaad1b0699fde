#include "accounts/AccountsList.h"
#include "accounts/AccountsListing.h"
#include "accounts/CreatedAccount.h"
#include "accounts/UsageList.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

std::vector<std::string> ids(const std::vector<CompanionAccount>& rows) {
    std::vector<std::string> out;
    for (const auto& r : rows) out.push_back(r.id);
    return out;
}

TEST(AccountsListDecoding, KeepsEveryGoodRow) {
    struct Case {
        const char* name;
        const char* body;
        std::vector<std::string> accounts;
        std::vector<std::string> found; // FoundLogin ids
        std::vector<std::string> chain;
    };
    const Case cases[] = {
        {"bad row among good", R"({"accounts":[{"id":"a"},{"label":"no id"},{"id":"c"}]})", {"a", "c"}, {}, {}},
        {"id of the wrong type", R"({"accounts":[{"id":7},{"id":"b"}]})", {"b"}, {}, {}},
        {"accounts as a string", R"({"accounts":"a,b","chain":["b"]})", {}, {}, {"b"}},
        {"chain with a number in it", R"({"chain":["a",3,"b"]})", {}, {}, {"a", "b"}},
        {"found logins with and without home",
         R"({"found":[{"provider":"claude","default":true},{"provider":"codex"},
                      {"provider":"codex","home":"/h/.codex-work"},{"home":"/x"}]})",
         {}, {"claude|default", "codex|/h/.codex-work"}, {}},
        {"empty object", "{}", {}, {}, {}},
    };
    for (const auto& c : cases) {
        auto list = decodeJson<AccountsList>(c.body);
        ASSERT_TRUE(list) << c.name;
        EXPECT_EQ(ids(list->accounts), c.accounts) << c.name;
        std::vector<std::string> found;
        for (const auto& f : list->found) found.push_back(f.id());
        EXPECT_EQ(found, c.found) << c.name;
        EXPECT_EQ(list->chain, c.chain) << c.name;
    }
}

TEST(CompanionAccountDecoding, EachBadValueFallsBackAloneAndKeepsTheRow) {
    auto list = decodeJson<AccountsList>(R"({"accounts":[{"id":"x","provider":5,"label":"Work","kind":"apikey",
        "status":["ready"],"default":"yes","home":"/h","made":"no","portable":true,"bedrock":"us-east-1",
        "usage":{"meter":{"name":"5h","usedPercent":"50"},"week":{"turns":3,"tokens":-4}},"threads":2.5}]})");
    ASSERT_TRUE(list);
    ASSERT_EQ(list->accounts.size(), 1u);
    const auto& a = list->accounts[0];
    EXPECT_EQ(a.provider, "");
    EXPECT_EQ(a.label, "Work");
    EXPECT_EQ(a.status, "");
    EXPECT_FALSE(a.isDefault);
    EXPECT_FALSE(a.made.has_value());
    EXPECT_TRUE(a.portable);
    EXPECT_FALSE(a.bedrock.has_value());
    ASSERT_TRUE(a.usage.has_value());
    EXPECT_FALSE(a.usage->meter.has_value());
    EXPECT_EQ(a.usage->week.turns, 3);
    EXPECT_EQ(a.usage->week.tokens, 0);
    EXPECT_EQ(a.threads, 0);
}

TEST(CompanionAccountDecoding, KindDecidesThePredicates) {
    struct Row { const char* kind; const char* auth; bool login; bool keyed; };
    for (auto r : {Row{"login", nullptr, true, false}, Row{"", nullptr, true, false}, Row{"odd", nullptr, true, false},
                   Row{"apikey", nullptr, false, false}, Row{"token", nullptr, false, false},
                   Row{"bedrock", nullptr, false, true}, Row{"bedrock", "keys", false, true},
                   Row{"bedrock", "profile", false, false}}) {
        Json j = {{"id", "a"}, {"kind", r.kind}};
        if (r.auth) j["bedrock"] = {{"auth", r.auth}};
        auto a = CompanionAccount::decode(j);
        ASSERT_TRUE(a);
        EXPECT_EQ(a->isLogin(), r.login) << r.kind;
        EXPECT_EQ(a->bedrockKeyed(), r.keyed) << r.kind << (r.auth ? r.auth : "");
    }
}

TEST(CreatedAccountDecoding, WrappedOrBare) {
    EXPECT_EQ(decodeJson<CreatedAccount>(R"({"account":{"id":"n1"}})")->account.id, "n1");
    EXPECT_EQ(decodeJson<CreatedAccount>(R"({"id":"n2","label":"Bare"})")->account.id, "n2");
    EXPECT_FALSE(decodeJson<CreatedAccount>(R"({"account":{"label":"no id"}})"));
    EXPECT_FALSE(decodeJson<CreatedAccount>("[]"));
}

TEST(UsageDecoding, BadMetersTalliesAndDaysFallAlone) {
    auto list = decodeJson<UsageList>(R"({"accounts":[{"id":"a","plan":"  Max  ","meters":[
            {"name":"5h","usedPercent":"50"},{"name":"week","usedPercent":41.5,"resetsAt":" "},
            {"name":"nan","usedPercent":null},{"usedPercent":"Infinity"},{"name":"opus","usedPercent":7}],
          "tallies":[{"span":"7d","inputTokens":-3,"outputTokens":12},{"model":"m"},{"span":"30d","model":"sonnet"}],
          "today":{"turns":-2,"tokens":100,"costUSD":-1},"week":{"costUSD":"2"},
          "days":[{"day":"2026-11-22","turns":4,"limits":[{"at":""},{"at":"2026-11-22T10:00:00Z","text":"hit"}]},
                  {"turns":1}]}]})");
    ASSERT_TRUE(list);
    ASSERT_EQ(list->accounts.size(), 1u);
    const auto& u = list->accounts[0];
    EXPECT_EQ(u.plan, "Max");
    EXPECT_EQ(u.kind, "login");
    ASSERT_EQ(u.meters.size(), 2u);
    EXPECT_EQ(u.meters[0].name, "week");
    EXPECT_FALSE(u.meters[0].resetsAt.has_value());
    EXPECT_EQ(u.meters[1].name, "opus");
    ASSERT_EQ(u.tallies.size(), 2u);
    EXPECT_EQ(u.tallies[0].name, "All models");
    EXPECT_EQ(u.tallies[0].inputTokens, 0);
    EXPECT_EQ(u.tallies[1].name, "sonnet");
    EXPECT_EQ(u.talliesFor("30d").size(), 1u);
    EXPECT_EQ(u.today.turns, 0);
    EXPECT_EQ(u.today.tokens, 100);
    EXPECT_EQ(u.today.costUSD, 0.0);
    EXPECT_FALSE(u.week.costUSD.has_value());
    ASSERT_EQ(u.days.size(), 1u);
    EXPECT_EQ(u.days[0].counts.turns, 4);
    ASSERT_EQ(u.days[0].limits.size(), 1u);
    EXPECT_EQ(u.days[0].limits[0].text, "hit");
}

TEST(UsageDecoding, ANonFiniteMeterFails) {
    for (double bad : {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                       std::numeric_limits<double>::quiet_NaN()})
        EXPECT_FALSE(PlanMeter::decode(Json{{"name", "5h"}, {"usedPercent", bad}})) << bad;
    EXPECT_EQ(PlanMeter::decode(Json{{"usedPercent", 100}})->name, "");
}

TEST(UsageDecoding, FirstRowOfAnIdStandsAndLookupPrefersAccounts) {
    auto list = decodeJson<UsageList>(R"({"accounts":[{"id":"a","plan":"first"},{"id":"a","plan":"second"},{"plan":"x"}],
        "defaults":[{"id":"a","plan":"default"},{"id":"d","provider":"codex"}]})");
    ASSERT_TRUE(list);
    ASSERT_EQ(list->accounts.size(), 1u);
    EXPECT_EQ(list->usage("a").plan, "first");
    EXPECT_EQ(list->usage("d").provider, "codex");
    EXPECT_EQ(list->usage("none").id, "");
    EXPECT_FALSE(decodeJson<UsageList>(R"("usage")"));
    EXPECT_TRUE(decodeJson<UsageList>(R"({"accounts":{"id":"a"}})")->accounts.empty());
}

TEST(AccountsListing, AccountsFirstThenUsageOnlyRows) {
    auto accounts = decodeJson<AccountsList>(R"({"accounts":[{"id":"b","provider":"codex"},{"id":"a"}]})")->accounts;
    auto usage = decodeJson<UsageList>(
        R"({"accounts":[{"id":"a","plan":"Pro"},{"id":"z","provider":"claude"}],"defaults":[{"id":"b"},{"id":"y"}]})");
    auto rows = AccountsListing::rows(accounts, usage);
    std::vector<std::string> order;
    for (const auto& r : rows) order.push_back(r.id + (r.account ? "" : "*"));
    EXPECT_EQ(order, (std::vector<std::string>{"b", "a", "z*", "y*"}));
    EXPECT_EQ(rows[1].usage.plan, "Pro");
    EXPECT_EQ(rows[0].usage.id, "b");
    EXPECT_EQ(rows[2].provider, "claude");
    EXPECT_EQ(AccountsListing::rows(accounts, std::nullopt)[0].usage.id, "");
}

} // namespace
} // namespace orvan
