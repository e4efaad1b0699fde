// The accounts family as the simulator serves it: rows the companion must read leniently, a label
// rule by characters, a second word for an account in use, and a slow usage read that asks the
// vendors afresh at most once in half a minute.

#include "SimProcess.h"

#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

using SimAccounts = SimTest;

std::vector<json> ids(const json& list) {
    std::vector<json> out;
    for (const auto& row : list["accounts"]) out.push_back(row.contains("id") ? row["id"] : json());
    return out;
}

TEST_F(SimAccounts, ListsRowsWithTheFailuresACompanionMustStepOver) {
    json list = sim.read("/companion/accounts");
    ASSERT_TRUE(list.is_object());
    EXPECT_EQ(ids(list), (std::vector<json>{"acc-work", "acc-ci", "acc-grok", "acc-aws", json(), 17}));
    EXPECT_TRUE(list["chain"].is_array());
    EXPECT_TRUE(list["found"][0]["default"].get<bool>());
    EXPECT_FALSE(list["found"][1]["home"].get<std::string>().empty());
    EXPECT_FALSE(list["found"][2].contains("home")) << "a found login without a home that the companion drops";
    EXPECT_EQ(list["awsProfiles"].size(), 2u);
    EXPECT_EQ(list["accounts"][2]["status"], "limited");
    EXPECT_TRUE(list["accounts"][2].contains("until"));
}

TEST_F(SimAccounts, RenamesByCharactersAndRefusesAnAccountInUseUntilAsked) {
    std::string tone = "\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD"; // thumbs up, skin tone: one character
    std::string forty;
    for (int i = 0; i < 40; ++i) forty += tone;
    EXPECT_EQ(sim.post("/companion/accounts/acc-work/label", {{"label", forty}})->status, 204);
    EXPECT_EQ(sim.post("/companion/accounts/acc-work/label", {{"label", forty + "x"}})->status, 400);
    EXPECT_EQ(sim.post("/companion/accounts/acc-work/label", {{"label", "  "}})->status, 400);
    EXPECT_EQ(sim.post("/companion/accounts/nobody/label", {{"label", "x"}})->status, 404);
    EXPECT_EQ(body(sim.get("/companion/accounts"))["accounts"][0]["label"], forty);

    auto refused = sim.post("/companion/accounts/acc-ci/remove", {{"anyway", false}});
    ASSERT_EQ(refused->status, 409);
    EXPECT_EQ(body(refused)["error"], "in_use");
    EXPECT_FALSE(body(refused)["message"].get<std::string>().empty());
    EXPECT_EQ(sim.post("/companion/accounts/acc-ci/remove", {{"anyway", true}})->status, 204);
    // A thread that started after the list was read: refused once, then listed, then removed when asked again.
    EXPECT_EQ(sim.post("/companion/accounts/acc-grok/remove", {{"anyway", false}})->status, 409);
    EXPECT_EQ(body(sim.get("/companion/accounts"))["accounts"][1]["threads"], 1);
    EXPECT_EQ(sim.post("/companion/accounts/acc-work/remove", json::object())->status, 204);
    json list = body(sim.get("/companion/accounts"));
    EXPECT_EQ(ids(list).front(), "acc-grok");
    EXPECT_EQ(sim.post("/companion/accounts/acc-aws/remove", {{"anyway", true}})->status, 204);
    EXPECT_EQ(list["chain"], json::array());

    EXPECT_EQ(sim.post("/companion/accounts/acc-grok/key", {{"key", " "}})->status, 400);
    EXPECT_EQ(sim.post("/companion/accounts/acc-grok/key", {{"key", "sk-1"}})->status, 204);
    EXPECT_EQ(sim.client().Post("/companion/accounts/acc-grok/label", sim.keyed(), "[]", "application/json")->status, 400);
    EXPECT_EQ(sim.get("/companion/accounts/acc-grok/label")->status, 405);
    EXPECT_EQ(sim.post("/companion/accounts/acc-grok/portable/x")->status, 404);
}

TEST_F(SimAccounts, UsageCarriesMetersTalliesAndDays) {
    json usage = sim.read("/companion/accounts/usage");
    ASSERT_TRUE(usage.is_object());
    const json& work = usage["accounts"][0];
    EXPECT_EQ(work["id"], "acc-work");
    EXPECT_EQ(work["meters"].size(), 3u);
    EXPECT_TRUE(work["meters"][2]["usedPercent"].is_string()) << "one meter the companion must drop alone";
    EXPECT_EQ(work["days"].size(), 7u);
    EXPECT_TRUE(usage["accounts"][3]["tallies"].is_array());
    EXPECT_EQ(usage["accounts"].back()["id"], "acc-work") << "a duplicate id the companion drops";
    EXPECT_EQ(usage["defaults"][0]["id"], "codex|default");

    // The count of reads comes with the list, so counting does not itself read.
    sim.get("/companion/accounts/usage?fresh=1");
    json counts = body(sim.get("/companion/accounts"))["simulator"];
    EXPECT_EQ(counts["usageReads"], 2);
    EXPECT_EQ(counts["freshAsked"], 1) << "the query reaches the route";
    EXPECT_EQ(counts["vendorReads"], 1) << "a fresh read within half a minute of the last one reads no vendor";
}

// Each way an account is added, and what the rows look like afterwards.
TEST_F(SimAccounts, AddsByEachWayAndRefusesWhatABridgeWouldRefuse) {
    struct Case { json body; int status; const char* statusAfter; };
    const std::vector<Case> cases = {
        {{{"provider", "claude"}, {"label", "Key"}, {"kind", "apikey"}, {"home", ""}}, 201, "missing_key"},
        {{{"provider", "claude"}, {"label", "Fresh"}, {"kind", "login"}, {"home", ""}}, 201, "needs_login"},
        {{{"provider", "codex"}, {"label", "Adopted"}, {"kind", "login"}, {"home", "default"}}, 201, "ready"},
        {{{"provider", "codex"}, {"label", "Again"}, {"kind", "login"}, {"home", "default"}}, 404, nullptr},
        {{{"provider", "claude"}, {"label", "AWS"}, {"kind", "bedrock"}, {"region", "us-east-1"}, {"auth", "keys"},
          {"accessKeyId", "AKIA"}, {"secretAccessKey", "s"}}, 201, "ready"},
        {{{"provider", "claude"}, {"label", "AWS"}, {"kind", "bedrock"}, {"region", "us-east-1"}, {"auth", "profile"},
          {"profile", "nope"}}, 400, nullptr},
        {{{"provider", "claude"}, {"label", std::string(41, 'x')}, {"kind", "apikey"}}, 400, nullptr},
    };
    for (const auto& c : cases) {
        auto answer = sim.post("/companion/accounts", c.body);
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, c.status) << c.body.dump();
        if (c.statusAfter) {
            EXPECT_EQ(body(answer)["account"]["status"], c.statusAfter) << c.body.dump();
        }
    }
    json list = body(sim.get("/companion/accounts"));
    EXPECT_EQ(list["found"].size(), 2u) << "the adopted login is no longer found";
    for (const auto& row : list["accounts"]) EXPECT_FALSE(row.dump().find("AKIA") != std::string::npos);
    EXPECT_EQ(sim.post("/companion/accounts/acc-new-1/key", {{"key", "sk-1"}})->status, 204);
    EXPECT_EQ(body(sim.get("/companion/accounts"))["accounts"][4]["status"], "ready");
}

TEST_F(SimAccounts, ChainLimitsSignInTokensAndBedrockModels) {
    auto saved = sim.post("/companion/accounts/chain", {{"chain", {"acc-ci", "acc-work", 7}}, {"autoSwitch", false}});
    ASSERT_EQ(saved->status, 200);
    EXPECT_EQ(body(saved)["chain"], json({"acc-ci", "acc-work"}));
    EXPECT_EQ(body(saved)["autoSwitch"], false);
    EXPECT_EQ(sim.post("/companion/accounts/chain", {{"chain", "acc-ci"}})->status, 400);

    EXPECT_EQ(body(sim.get("/companion/limits"))["autoResume"], false);
    EXPECT_EQ(body(sim.post("/companion/limits", {{"autoResume", true}}))["autoResume"], true);
    EXPECT_EQ(body(sim.get("/companion/limits"))["autoResume"], true);
    EXPECT_EQ(sim.post("/companion/limits", {{"autoResume", "on"}})->status, 400);

    auto login = body(sim.post("/companion/accounts/acc-work/login", json::object()));
    ASSERT_TRUE(login["argv"].is_array());
    const std::string home = login["env"]["ORVAN_ACCOUNT_HOME"];
    EXPECT_EQ(home.find("/accounts/claude-work"), home.size() - 21);
    EXPECT_EQ(sim.post("/companion/accounts/acc-ci/login", json::object())->status, 400);

    ASSERT_EQ(sim.post("/companion/accounts", {{"provider", "claude"}, {"label", "T"}, {"kind", "login"}, {"home", ""}})->status, 201);
    EXPECT_EQ(body(sim.get("/companion/accounts/acc-new-1/portable"))["state"], "failed") << "nothing asked yet";
    EXPECT_EQ(body(sim.post("/companion/accounts/acc-new-1/portable", json::object()))["state"], "waiting");
    // Two more reads still wait; the third finds it ready.
    for (const char* state : {"waiting", "waiting", "ready"})
        EXPECT_EQ(body(sim.get("/companion/accounts/acc-new-1/portable"))["state"], state);
    EXPECT_EQ(body(sim.get("/companion/accounts"))["accounts"][4]["portable"], true);

    auto models = body(sim.post("/companion/bedrock/models", {{"account", "acc-aws"}, {"region", "us-east-1"}}));
    EXPECT_EQ(models["models"].size(), 4u);
    EXPECT_TRUE(body(sim.post("/companion/bedrock/models", {{"region", "eu-north-1"}, {"auth", "profile"}}))["models"].empty());
    EXPECT_EQ(sim.post("/companion/bedrock/models", {{"account", "acc-ci"}, {"region", "us-east-1"}})->status, 404);
    EXPECT_EQ(sim.post("/companion/accounts/acc-aws/bedrock", {{"region", "eu-west-3"}, {"model", ""}})->status, 204);
    EXPECT_EQ(body(sim.get("/companion/accounts"))["accounts"][3]["bedrock"]["region"], "eu-west-3");
}

} // namespace
} // namespace orvan::simtest
