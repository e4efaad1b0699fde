// Join requests and the first owner's setup code as the simulator serves them: an answer that
// doesn't carry the code and fingerprint of the request as it stands is refused, and the setup
// code lives until its owner takes it or it is cancelled, refusing in each of the bridge's ways.

#include "SimProcess.h"

#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

using SimJoins = SimTest;
using SimOwnerSetup = SimTest;

TEST_F(SimJoins, AnAnswerMustCarryTheRequestAsItStandsNow) {
    const std::string invite = body(sim.post("/local/invite", json{{"name", "Ann"}, {"role", "member"}, {"kind", "link"}}))["id"];
    json asked = body(sim.post("/_sim/follow", json{{"id", invite}, {"name", "Ann's phone"}}));
    ASSERT_TRUE(asked.contains("code")) << asked.dump();
    json joins = body(sim.get("/local/joins"))["joins"];
    ASSERT_EQ(joins.size(), 1u);
    const std::string id = joins[0]["id"];
    const json shown{{"code", joins[0]["code"]}, {"fp", joins[0]["fp"]}};
    EXPECT_EQ(joins[0]["code"], asked["code"]);
    EXPECT_EQ(joins[0]["fp"].get<std::string>().size(), 16u);

    ASSERT_EQ(sim.post("/_sim/join-code", json{{"code", "0042"}})->status, 200);
    auto stale = sim.post("/local/joins/" + id + "/approve", shown);
    ASSERT_EQ(stale->status, 409);
    EXPECT_EQ(body(stale)["error"], "join_changed");
    EXPECT_EQ(sim.post("/local/joins/" + id + "/approve", json{{"code", "0042"}, {"fp", "0000000000000000"}})->status, 409);
    EXPECT_EQ(sim.post("/local/joins/nobody/approve", json{{"code", "0042"}, {"fp", shown["fp"]}})->status, 404);

    ASSERT_EQ(sim.post("/local/joins/" + id + "/approve", json{{"code", "0042"}, {"fp", shown["fp"]}})->status, 204);
    EXPECT_TRUE(body(sim.get("/local/joins"))["joins"].empty());
    json phones = body(sim.get("/companion/status"))["phones"];
    EXPECT_TRUE(std::any_of(phones.begin(), phones.end(), [](const json& p) { return p.value("name", "") == "Ann's phone"; }))
        << phones.dump();

    const std::string second = body(sim.post("/local/invite", json{{"role", "member"}, {"kind", "link"}}))["id"];
    sim.post("/_sim/follow", json{{"id", second}});
    json waiting = body(sim.get("/local/joins"))["joins"][0];
    ASSERT_EQ(sim.post("/local/joins/" + waiting["id"].get<std::string>() + "/deny",
                       json{{"code", waiting["code"]}, {"fp", waiting["fp"]}})->status, 204);
    EXPECT_TRUE(body(sim.get("/local/joins"))["joins"].empty());
    EXPECT_EQ(body(sim.get("/companion/status"))["phones"].size(), phones.size()) << "a denial lets nobody in";
}

TEST_F(SimOwnerSetup, ACodeLivesUntilTakenOrCancelledAndEachRefusalHasItsWord) {
    // The seeded Mac has an owner: no setup.
    EXPECT_EQ(body(sim.get("/local/owner-setup"))["available"], false);
    EXPECT_EQ(body(sim.post("/local/owner-setup"))["error"], "owner_exists");
    ASSERT_EQ(sim.post("/_sim/seed", json{{"seed", "empty"}})->status, 204);
    EXPECT_EQ(body(sim.get("/local/owner-setup")), (json{{"available", true}, {"live", false}}));
    EXPECT_EQ(sim.get("/local/owner-setup.png")->status, 404);

    struct Refusal {
        const char* refuse;
        int status;
        const char* error;
    } refusals[] = {{"busy", 503, "busy"}, {"too_many", 429, "too_many"}, {"host", 409, "host"},
                    {"owner_exists", 409, "owner_exists"}, {"screen_shared", 409, "screen_shared"}, {"failed", 500, ""}};
    for (const auto& r : refusals) {
        ASSERT_EQ(sim.post("/_sim/owner-setup", json{{"refuse", r.refuse}})->status, 204);
        auto made = sim.post("/local/owner-setup");
        EXPECT_EQ(made->status, r.status) << r.refuse;
        EXPECT_EQ(body(made).value("error", ""), r.error) << r.refuse;
        EXPECT_FALSE(body(made).value("message", "").empty()) << r.refuse;
    }
    sim.post("/_sim/owner-setup", json{{"refuse", nullptr}, {"cancelFails", 1}});

    json made = body(sim.post("/local/owner-setup"));
    ASSERT_TRUE(made.contains("expires")) << made.dump();
    EXPECT_EQ(body(sim.get("/local/owner-setup"))["live"], true);
    auto picture = sim.get("/local/owner-setup.png");
    ASSERT_EQ(picture->status, 200);
    EXPECT_EQ(picture->body.rfind("\x89PNG", 0), 0u);
    EXPECT_EQ(sim.post("/local/owner-setup/cancel")->status, 500) << "the failure asked for";
    ASSERT_EQ(sim.post("/local/owner-setup/cancel")->status, 204);
    EXPECT_EQ(body(sim.get("/local/owner-setup"))["live"], false);
    EXPECT_EQ(sim.post("/_sim/owner-setup", json{{"take", true}})->status, 404) << "a cancelled code can't be taken";

    sim.post("/local/owner-setup");
    ASSERT_EQ(sim.post("/_sim/owner-setup", json{{"take", true}})->status, 200);
    EXPECT_EQ(body(sim.get("/local/owner-setup")), (json{{"available", false}, {"live", false}}));
    json phones = body(sim.get("/companion/status"))["phones"];
    ASSERT_EQ(phones.size(), 1u);
    EXPECT_EQ(phones[0]["role"], "owner");
}

} // namespace
} // namespace orvan::simtest
