// The tunnel family as the simulator serves it: a domain tunnel that starts and then comes up, or is
// refused for a bad token; a quick tunnel that gets an address; a tailnet address; and an older
// bridge that has none of it.

#include "SimProcess.h"

#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

using SimTunnel = SimTest;

TEST_F(SimTunnel, ADomainStartsThenComesUpAndItsTokenNeverComesBack) {
    json first = body(sim.get("/local/tunnel"));
    EXPECT_EQ(first["status"], "");
    EXPECT_EQ(first["token"], false);
    EXPECT_FALSE(first["tailscale"].empty());
    EXPECT_EQ(first["origin"], "http://127.0.0.1:8788");

    EXPECT_EQ(sim.post("/local/tunnel", {{"hostname", "mac.example.com"}})->status, 400) << "no token yet";
    EXPECT_EQ(sim.post("/local/tunnel", {{"hostname", "no host"}, {"token", "abc"}})->status, 400);
    EXPECT_EQ(sim.post("/local/tunnel", {{"hostname", "mac.example.com"}, {"token", "goodTOKEN"}})->status, 204);
    auto read = sim.get("/local/tunnel");
    EXPECT_EQ(body(read)["status"], "starting");
    EXPECT_EQ(body(read)["token"], true);
    EXPECT_EQ(read->body.find("goodTOKEN"), std::string::npos);
    EXPECT_TRUE(eventually([&] { return body(sim.get("/local/tunnel"))["status"] == "up"; }));

    EXPECT_EQ(sim.post("/local/tunnel", {{"hostname", "mac.example.com"}, {"token", "badTOKEN"}})->status, 204);
    json refused = body(sim.get("/local/tunnel"));
    EXPECT_EQ(refused["status"], "refused");
    EXPECT_FALSE(refused["reason"].get<std::string>().empty());

    EXPECT_EQ(sim.post("/local/tunnel", {{"hostname", ""}, {"token", ""}})->status, 204);
    json removed = body(sim.get("/local/tunnel"));
    EXPECT_EQ(removed["hostname"], "");
    EXPECT_EQ(removed["token"], false);
}

TEST_F(SimTunnel, AQuickTunnelGetsAnAddressAndAnOlderBridgeKnowsNone) {
    EXPECT_EQ(sim.post("/local/tunnel", {{"quick", "yes"}})->status, 400);
    EXPECT_EQ(sim.post("/local/tunnel", {{"quick", true}})->status, 204);
    EXPECT_EQ(body(sim.get("/local/tunnel"))["quickStatus"], "starting");
    EXPECT_TRUE(eventually([&] { return body(sim.get("/local/tunnel"))["quickStatus"] == "up"; }));
    json up = body(sim.get("/local/tunnel"));
    EXPECT_EQ(up["quickURL"].get<std::string>().rfind("https://", 0), 0u);
    EXPECT_FALSE(up["quickReason"].get<std::string>().empty());

    SimProcess older({"--fail", "/local/tunnel=404"});
    ASSERT_TRUE(older.ready());
    EXPECT_EQ(older.get("/local/tunnel")->status, 404);
}

} // namespace
} // namespace orvan::simtest
