// The simulator's road after an add: what is there, installing agents with sudo asked for the
// tools they need, copying accounts with the question before a sign-in there is replaced, and a
// failure at each step.

#include "SimProcess.h"

#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

using SimAddComputer = SimTest;

json add(const SimProcess& sim, const std::string& address) {
    const std::string print = body(sim.post("/companion/hosts/test", {{"address", address}}))["fingerprint"];
    return body(sim.post("/companion/hosts/add", {{"address", address}, {"fingerprint", print}, {"user", "ann"}}));
}

TEST_F(SimAddComputer, AgentsAskSudoForTheirToolsAndAccountsAskBeforeReplacing) {
    ASSERT_EQ(add(sim, "kiln")["host"]["target"], "kiln");
    EXPECT_EQ(body(sim.post("/companion/hosts/agents/look", {{"target", "kiln"}})),
              (json{{"os", "linux"}, {"agents", {"claude"}}, {"node", false}}));

    const json agents = {{"target", "kiln"}, {"agents", {"node", "codex"}}};
    auto asked = sim.post("/companion/hosts/agents", agents);
    ASSERT_TRUE(asked);
    EXPECT_EQ(asked->status, 401);
    EXPECT_EQ(body(asked)["packages"], json({"curl"}));
    json wrong = agents;
    wrong["password"] = "nope";
    EXPECT_EQ(body(sim.post("/companion/hosts/agents", wrong))["message"], "sudo refused that password.");
    json right = agents;
    right["password"] = "tiger-lily-42";
    EXPECT_EQ(body(sim.post("/companion/hosts/agents", right))["steps"],
              json({"Installed curl with apt", "Installed Node.js 22.11.0 into ~/.local/node", "Installed Codex"}));
    EXPECT_EQ(body(sim.post("/companion/hosts/agents/look", {{"target", "kiln"}}))["agents"], json({"claude", "codex"}));

    // The Claude login finds Claude's own sign-in there; the key goes at once.
    auto copied = sim.post("/companion/hosts/accounts", {{"target", "kiln"}, {"accounts", {"acc-work", "acc-ci"}}});
    ASSERT_TRUE(copied);
    EXPECT_EQ(copied->status, 409);
    EXPECT_EQ(body(copied)["results"], json::parse(R"([{"id":"acc-work","copied":false,"code":"replaces_login"},
        {"id":"acc-ci","copied":true}])"));
    auto replaced = sim.post("/companion/hosts/accounts", {{"target", "kiln"}, {"accounts", {"acc-work"}}, {"replace", true}});
    ASSERT_TRUE(replaced);
    EXPECT_EQ(replaced->status, 200);
    EXPECT_EQ(body(replaced)["results"][0]["copied"], true);
}

TEST_F(SimAddComputer, EachStepCanFail) {
    auto failedAdd = add(sim, "failadd.example");
    EXPECT_EQ(failedAdd["steps"].size(), 2u);
    EXPECT_FALSE(failedAdd.contains("host"));

    ASSERT_TRUE(add(sim, "failinstall.example").contains("host"));
    auto install = sim.post("/companion/hosts/agents", {{"target", "failinstall.example"}, {"agents", {"grok"}},
                                                        {"password", "tiger-lily-42"}});
    ASSERT_TRUE(install);
    EXPECT_EQ(install->status, 502);
    EXPECT_EQ(body(install)["message"], "Not every agent installed there.");

    ASSERT_TRUE(add(sim, "failcopy.example").contains("host"));
    auto copy = sim.post("/companion/hosts/accounts", {{"target", "failcopy.example"}, {"accounts", {"acc-ci"}}});
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->status, 502);
    EXPECT_EQ(sim.post("/companion/hosts/agents", {{"target", "nowhere"}, {"agents", json::array()}})->status, 404);
    EXPECT_EQ(sim.post("/companion/hosts/agents", {{"target", "failcopy.example"}, {"agents", "codex"}})->status, 400);
}

} // namespace
} // namespace orvan::simtest
