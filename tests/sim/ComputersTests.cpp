// The computers' family as the simulator serves it: the five seeded computers, long calls that
// answer only after their work with its steps, a Docker install behind one sudo password, an image
// build that moves through its stages, and the failures a companion must word.

#include "SimProcess.h"

#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

using namespace std::chrono_literals;

json hostNamed(const json& list, const std::string& target) {
    for (const auto& h : list["hosts"])
        if (h["target"] == target) return h;
    return json();
}

double secondsFor(const std::function<void()>& call) {
    auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(SimComputers, ListsTheSeededComputersAndChecksThemAfterAPause) {
    SimProcess sim;
    ASSERT_TRUE(sim.ready());
    json list = body(sim.get("/companion/hosts"));
    ASSERT_EQ(list["hosts"].size(), 5u);
    EXPECT_EQ(list["ssh"], (json{"build", "lab", "pi", "nas"}));
    EXPECT_EQ(hostNamed(list, "build")["docker"], "missing");
    EXPECT_EQ(hostNamed(list, "lab")["older"], true);
    EXPECT_EQ(hostNamed(list, "mini")["os"], "darwin");
    EXPECT_FALSE(hostNamed(list, "mini").contains("version"));
    EXPECT_EQ(hostNamed(list, "win")["terminalOnly"], true);

    // The other computer is reached first: the answer waits for it, and the list then knows more.
    json checked;
    double took = secondsFor([&] { checked = body(sim.post("/companion/hosts/check", {{"target", "mini"}})); });
    EXPECT_GE(took, 1.2);
    EXPECT_EQ(checked["docker"], "unsupported");
    EXPECT_EQ(hostNamed(body(sim.get("/companion/hosts")), "mini")["version"], "1.8.2");
    EXPECT_EQ(body(sim.post("/companion/hosts/check", {{"target", "lab"}}))["sandbox"]["image"], "missing");
    EXPECT_EQ(body(sim.post("/companion/hosts/check", {{"target", "bsd"}}))["note"],
              "FreeBSD has no Docker; its shells and agents still work.");

    EXPECT_EQ(sim.post("/companion/hosts/check", {{"target", "nowhere"}})->status, 404);
    EXPECT_EQ(sim.post("/companion/hosts/check", {{"target", 7}})->status, 404);
    EXPECT_EQ(sim.get("/companion/hosts/check")->status, 405);
    EXPECT_EQ(sim.post("/companion/hosts", json::object())->status, 405);

    // A computer that stops answering fails every operation on it from then on.
    EXPECT_EQ(sim.post("/companion/hosts/check", {{"target", "lab"}, {"simulateSilence", true}})->status, 502);
    EXPECT_EQ(body(sim.post("/companion/hosts/update", {{"target", "lab"}}))["message"],
              "GPU lab did not answer over SSH: the connection timed out.");
}

TEST(SimComputers, DockerInstallTakesOnlyTheRightSudoPasswordThenTheImageIsBuilt) {
    SimProcess sim;
    ASSERT_TRUE(sim.ready());
    auto install = [&](std::optional<std::string> password) {
        json request = {{"target", "build"}};
        if (password) request["password"] = *password;
        return sim.post("/companion/hosts/docker", request);
    };
    EXPECT_EQ(install(std::nullopt)->status, 401);
    EXPECT_EQ(body(install("wrong"))["message"], "sudo refused that password.");
    int status = 0;
    json done;
    EXPECT_GE(secondsFor([&] {
        auto answer = install("tiger-lily-42");
        status = answer ? answer->status : 0;
        done = body(answer);
    }), 2.5);
    ASSERT_EQ(status, 200);
    EXPECT_EQ(done["steps"][0], "Installed docker.io with apt");
    EXPECT_EQ(hostNamed(body(sim.get("/companion/hosts")), "build")["docker"], "ready");
    // The password is nowhere in what the simulator printed.
    EXPECT_EQ(readFile(sim.folder() / "stderr").find("tiger-lily"), std::string::npos);

    json started = body(sim.post("/companion/hosts/sandbox", {{"target", "build"}, {"action", "build"}}));
    EXPECT_EQ(started["sandbox"]["image"], "downloading");
    std::vector<std::string> seen;
    ASSERT_TRUE(eventually([&] {
        json now = body(sim.post("/companion/hosts/sandbox", {{"target", "build"}, {"action", "status"}}));
        std::string image = now["sandbox"].value("image", "?");
        if (seen.empty() || seen.back() != image) seen.push_back(image);
        std::this_thread::sleep_for(100ms);
        return image == "ready";
    }, 20s));
    EXPECT_EQ(seen, (std::vector<std::string>{"downloading", "loading", "chrome", "ready"}));
    json tools = body(sim.post("/companion/hosts/sandbox", {{"target", "build"}, {"action", "tools"}}));
    EXPECT_EQ(tools["sandbox"]["agents"], (json{{"claude", true}, {"codex", true}}));
    EXPECT_EQ(sim.post("/companion/hosts/sandbox", {{"target", "build"}, {"action", "paint"}})->status, 400);
    EXPECT_EQ(sim.post("/companion/hosts/sandbox", {{"target", "mini"}, {"action", "build"}})->status, 409);
}

TEST(SimComputers, TestTrustAddUpdateRemoveAndABrokenRow) {
    SimProcess sim;
    ASSERT_TRUE(sim.ready());
    json first = body(sim.post("/companion/hosts/test", {{"address", "pi"}, {"auth", "auto"}}));
    EXPECT_EQ(first["confirm"], true);
    const std::string print = first["fingerprint"];
    json found = body(sim.post("/companion/hosts/test", {{"address", "pi"}, {"fingerprint", print}}));
    EXPECT_FALSE(found.contains("confirm"));
    EXPECT_EQ(sim.post("/companion/hosts/test", {{"address", "pi"}, {"fingerprint", "SHA256:other"}})->status, 409);

    json added = body(sim.post("/companion/hosts/add", {{"address", "pi"}, {"name", " Pi "}, {"fingerprint", print},
                                                        {"user", "rosa"}, {"port", 0}, {"terminalOnly", false}}));
    EXPECT_EQ(added["host"]["name"], "Pi");
    EXPECT_EQ(added["steps"].size(), 4u);
    json list = body(sim.get("/companion/hosts"));
    EXPECT_EQ(list["hosts"].size(), 6u);

    json updated = body(sim.post("/companion/hosts/update", {{"target", "lab"}}));
    EXPECT_EQ(updated["steps"][0], "Copied the bridge 1.8.2 to GPU lab");
    EXPECT_FALSE(hostNamed(body(sim.get("/companion/hosts")), "lab").contains("older"));
    EXPECT_EQ(sim.post("/companion/hosts/update", {{"target", "win"}})->status, 409);

    EXPECT_EQ(sim.post("/companion/hosts/remove", {{"target", "pi"}})->status, 204);
    EXPECT_EQ(sim.post("/companion/hosts/remove", {{"target", "pi"}})->status, 404);
    EXPECT_EQ(body(sim.get("/companion/hosts"))["hosts"].size(), 5u);

    // A well-formed list with one key of the wrong type, for the companion to refuse whole.
    ASSERT_EQ(sim.post("/_sim/wrong-type", {{"path", "/companion/hosts"}})->status, 204);
    EXPECT_EQ(body(sim.get("/companion/hosts"))["ssh"], "pi");

    SimProcess broken({}, {{"ORVAN_SIM_HOSTS", "badrow"}});
    ASSERT_TRUE(broken.ready());
    json rows = body(broken.get("/companion/hosts"))["hosts"];
    EXPECT_EQ(rows.back()["port"], "22") << "one row with a port as text";
}

} // namespace
} // namespace orvan::simtest
