// The computers' family as the simulator serves it, where the program's own test does not reach:
// trusting a host key before a test signs in, adding and removing, the sudo password it refuses,
// the refusals a companion must word, and the broken lists it must let go whole. The seeded
// computers, the long calls' steps and the image build are seen through the real program.

#include "SimProcess.h"

#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

TEST(SimComputers, TrustAddRemoveAndTheRefusals) {
    SimProcess sim;
    ASSERT_TRUE(sim.ready());
    json first = body(sim.post("/companion/hosts/test", {{"address", "pi"}, {"auth", "auto"}}));
    EXPECT_EQ(first["confirm"], true);
    const std::string print = first["fingerprint"];
    EXPECT_FALSE(body(sim.post("/companion/hosts/test", {{"address", "pi"}, {"fingerprint", print}})).contains("confirm"));
    EXPECT_EQ(sim.post("/companion/hosts/test", {{"address", "pi"}, {"fingerprint", "SHA256:other"}})->status, 409);
    EXPECT_EQ(sim.post("/companion/hosts/add", {{"address", "pi"}})->status, 409) << "an untrusted key adds nothing";

    json added = body(sim.post("/companion/hosts/add", {{"address", "pi"}, {"name", " Pi "}, {"fingerprint", print},
                                                        {"user", "rosa"}, {"port", 0}, {"terminalOnly", false}}));
    EXPECT_EQ(added["host"]["name"], "Pi");
    EXPECT_EQ(added["steps"].size(), 4u);
    EXPECT_EQ(body(sim.get("/companion/hosts"))["hosts"].size(), 6u);
    EXPECT_EQ(sim.post("/companion/hosts/remove", {{"target", "pi"}})->status, 204);
    EXPECT_EQ(sim.post("/companion/hosts/remove", {{"target", "pi"}})->status, 404);

    EXPECT_EQ(body(sim.post("/companion/hosts/docker", {{"target", "build"}, {"password", "wrong"}}))["message"],
              "sudo refused that password.");
    EXPECT_EQ(sim.post("/companion/hosts/docker", {{"target", "mini"}})->status, 400);
    EXPECT_EQ(sim.post("/companion/hosts/sandbox", {{"target", "mini"}, {"action", "build"}})->status, 409);
    EXPECT_EQ(sim.post("/companion/hosts/update", {{"target", "win"}})->status, 409);
    EXPECT_EQ(sim.post("/companion/hosts/check", {{"target", 7}})->status, 404);
    EXPECT_EQ(sim.get("/companion/hosts/check")->status, 405);
    EXPECT_EQ(sim.post("/companion/hosts", json::object())->status, 405);
    EXPECT_EQ(sim.get("/companion/hosts/nothing")->status, 404);
}

TEST(SimComputers, ListsACompanionMustRefuseWhole) {
    SimProcess sim({}, {{"ORVAN_SIM_HOSTS", "badrow"}});
    ASSERT_TRUE(sim.ready());
    EXPECT_EQ(body(sim.get("/companion/hosts"))["hosts"].back()["port"], "22") << "one row with a port as text";
    ASSERT_EQ(sim.post("/_sim/wrong-type", {{"path", "/companion/hosts"}})->status, 204);
    EXPECT_EQ(body(sim.get("/companion/hosts"))["ssh"], "pi");
}

} // namespace
} // namespace orvan::simtest
