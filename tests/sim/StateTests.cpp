// What a write changes is there in the very next read, and refusals carry the words the companion
// tells apart.

#include "SimProcess.h"

#include <functional>
#include <gtest/gtest.h>
#include <thread>

namespace orvan::simtest {
namespace {

using nlohmann::json;

const std::string owner = "9F2C4E1A-7B3D-4C21-A8E5-3D6F0B7C9A12";
const std::string guest = "C81D5A73-2E9F-4B6A-9C0D-5E7F1A2B3C48";

struct Step {
    std::string path;
    json body;
    int status;
    std::string error = {}; // the refusal's "error" word, when there is one
};

// The row with this id in a status (its "phones") or in a list of devices.
json phone(const json& status, const std::string& id) {
    for (const auto& row : status.is_array() ? status : status.value("phones", json::array()))
        if (row.value("id", "") == id) return row;
    return nullptr;
}

struct Story {
    const char* name;
    const char* seed;
    std::vector<Step> steps;
    std::function<void(const json& status, const json& devices)> check;
};

void PrintTo(const Story& story, std::ostream* out) { *out << story.name; }

class SimStory : public testing::TestWithParam<Story> {};

TEST_P(SimStory, EndsInTheNextRead) {
    const auto& story = GetParam();
    SimProcess sim({"--seed", story.seed});
    ASSERT_TRUE(sim.ready()) << sim.errors();
    for (const auto& step : story.steps) {
        auto answer = sim.post(step.path, step.body);
        ASSERT_TRUE(answer) << step.path;
        EXPECT_EQ(answer->status, step.status) << step.path << " " << step.body << ": " << answer->body;
        if (!step.error.empty()) {
            json refusal = json::parse(answer->body, nullptr, false);
            EXPECT_EQ(refusal.value("error", ""), step.error) << answer->body;
            EXPECT_FALSE(refusal.value("message", "").empty()) << answer->body;
        }
    }
    auto devices = sim.get("/local/devices");
    ASSERT_TRUE(devices);
    story.check(sim.status(), json::parse(devices->body, nullptr, false));
}

INSTANTIATE_TEST_SUITE_P(
    Writes, SimStory,
    testing::Values(
        Story{"RenameTrims", "demo", {{"/companion/name", {{"name", "  Studio Mac\n"}}, 204}},
              [](const json& s, const json&) { EXPECT_EQ(s["name"], "Studio Mac"); }},
        Story{"RemoteOffChangesTheLine", "demo", {{"/companion/remote", {{"on", false}}, 204}},
              [](const json& s, const json&) {
                  EXPECT_EQ(s["on"], false);
                  EXPECT_NE(s["line"], "Remote control is on for 2 phones.");
              }},
        Story{"SidebarMoves", "demo", {{"/companion/sidebar", {{"position", "right"}}, 204}},
              [](const json& s, const json&) { EXPECT_EQ(s["sidebar"], "right"); }},
        Story{"SidebarStaysWhileTulmIsClosed", "demo",
              {{"/_sim/set", {{"tulm", "closed"}}, 204}, {"/companion/sidebar", {{"position", "right"}}, 409}},
              [](const json& s, const json&) {
                  EXPECT_EQ(s["sidebar"], "left");
                  EXPECT_EQ(s["tulm"], "closed");
              }},
        Story{"DiagnosticsAnswered", "empty", {{"/companion/diagnostics", {{"allowed", true}}, 204}},
              [](const json& s, const json&) {
                  EXPECT_EQ(s["diagnostics"], true);
                  EXPECT_EQ(s["diagnosticsAnswered"], true);
              }},
        Story{"PromotedPhoneBecomesOwnerWithATime", "demo",
              {{"/_sim/phone", {{"id", "m1"}, {"name", "Ana’s iPhone"}}, 200},
               {"/companion/phone/role", {{"id", "m1"}, {"role", "owner"}}, 204}},
              [](const json& s, const json&) {
                  EXPECT_EQ(phone(s, "m1")["role"], "owner");
                  EXPECT_TRUE(phone(s, "m1").contains("ownerSince"));
                  EXPECT_EQ(s["line"], "Remote control is on for 3 phones.");
              }},
        Story{"OwnerWithAnotherOwnerCanStepDown", "demo",
              {{"/_sim/phone", {{"id", "o2"}, {"role", "owner"}}, 200},
               {"/companion/phone/role", {{"id", owner}, {"role", "member"}}, 204}},
              [](const json& s, const json&) {
                  EXPECT_EQ(phone(s, owner)["role"], "member");
                  EXPECT_FALSE(phone(s, owner).contains("ownerSince"));
              }},
        Story{"LastOwnerStays", "demo",
              {{"/companion/phone/role", {{"id", owner}, {"role", "member"}}, 409, "last_owner"}},
              [](const json& s, const json&) { EXPECT_EQ(phone(s, owner)["role"], "owner"); }},
        Story{"NoRoleChangeWhileSomeoneWatches", "demo",
              {{"/_sim/phone", {{"id", "m1"}}, 200},
               {"/_sim/watcher", {{"name", "Ana"}}, 204},
               {"/companion/phone/role", {{"id", "m1"}, {"role", "owner"}}, 409, "screen_shared"}},
              [](const json& s, const json&) { EXPECT_EQ(phone(s, "m1")["role"], "member"); }},
        Story{"RoleOfAGoneDevice", "demo",
              {{"/companion/phone/role", {{"id", "gone"}, {"role", "owner"}}, 404, "not_found"}},
              [](const json& s, const json&) { EXPECT_EQ(s["phones"].size(), 2u); }},
        Story{"RemovedPhoneIsGoneEverywhere", "demo",
              {{"/companion/phone", {{"id", owner}}, 204}, {"/companion/phone", {{"id", owner}}, 404, "not_found"}},
              [](const json& s, const json& d) {
                  EXPECT_TRUE(phone(s, owner).is_null());
                  EXPECT_TRUE(phone(d["devices"], owner).is_null());
                  EXPECT_EQ(s["line"], "Remote control is on for 1 phone.");
              }},
        Story{"GuestExtendedToTheTimeSent", "demo",
              {{"/local/devices/extend", {{"id", guest}, {"ends", "2031-05-06T07:08:09.250+02:00"}}, 204},
               {"/local/devices/extend", {{"id", "gone"}, {"ends", "2031-05-06T07:08:09Z"}}, 404}},
              [](const json& s, const json& d) {
                  EXPECT_EQ(phone(s, guest)["guest"]["ends"], "2031-05-06T05:08:09Z");
                  EXPECT_EQ(phone(d["devices"], guest)["guest"]["ends"], "2031-05-06T05:08:09Z");
              }},
        Story{"LeanStatusKeepsScopesInDevicesOnly", "demo", {{"/_sim/set", {{"leanStatus", true}}, 204}},
              [](const json& s, const json& d) {
                  EXPECT_EQ(phone(s, guest)["role"], "guest");
                  EXPECT_FALSE(phone(s, guest).contains("guest"));
                  EXPECT_EQ(phone(d["devices"], guest)["guest"]["mode"], "watch");
              }},
        Story{"ScreenOffEndsEveryViewer", "demo",
              {{"/_sim/watcher", {{"name", "Ana"}, {"control", true}}, 204}, {"/companion/screen", {{"on", false}}, 204}},
              [](const json& s, const json&) {
                  EXPECT_EQ(s["screen"]["on"], false);
                  EXPECT_EQ(s["screen"]["watching"], json::array());
                  EXPECT_FALSE(s["screen"].contains("control"));
              }},
        Story{"StopEndsViewersButSharingStaysOn", "demo",
              {{"/_sim/watcher", {{"name", "Ana"}}, 204},
               {"/_sim/watcher", {{"name", "Ben"}, {"control", true}}, 204},
               {"/companion/screen/stop", json(nullptr), 204}},
              [](const json& s, const json&) {
                  EXPECT_EQ(s["screen"]["on"], true);
                  EXPECT_EQ(s["screen"]["watching"], json::array());
                  EXPECT_FALSE(s["screen"].contains("control"));
              }},
        Story{"NobodyWatchesWhileSharingIsOff", "empty",
              {{"/_sim/watcher", {{"name", "Ana"}}, 409},
               {"/_sim/set", {{"available", false}}, 204},
               {"/companion/screen", {{"on", true}}, 409}},
              [](const json& s, const json&) { EXPECT_EQ(s["screen"]["on"], false); }},
        Story{"ResetToAnEmptyMac", "demo", {{"/_sim/seed", {{"seed", "empty"}}, 204}},
              [](const json& s, const json& d) {
                  EXPECT_EQ(s["phones"], json::array());
                  EXPECT_EQ(d["devices"], json::array());
                  EXPECT_EQ(s["line"], "Remote control is off. Approved phones reach this Mac on the same Wi-Fi only.");
              }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SimSeed, DemoIsALivedInMac) {
    SimProcess sim({"--seed", "demo"});
    ASSERT_TRUE(sim.ready());
    json s = sim.status();
    EXPECT_EQ(s["on"], true);
    EXPECT_FALSE(s["name"].get<std::string>().empty());
    ASSERT_EQ(s["phones"].size(), 2u);
    EXPECT_EQ(phone(s, owner)["role"], "owner");
    EXPECT_TRUE(phone(s, owner).contains("ownerSince"));
    EXPECT_EQ(phone(s, guest)["role"], "guest");
    std::string ends = phone(s, guest)["guest"]["ends"];
    EXPECT_GT(ends, phone(s, owner)["ownerSince"].get<std::string>()) << "a guest's end lies ahead";
    EXPECT_EQ(s["sidebar"], "left");
    EXPECT_EQ(s["tulm"], "up");
    EXPECT_EQ(s["screen"]["available"], true);
}

TEST(SimSeed, EmptyHasNoOwnerAndNoPhone) {
    SimProcess sim({"--seed", "empty"});
    ASSERT_TRUE(sim.ready());
    json s = sim.status();
    EXPECT_EQ(s["phones"], json::array());
    EXPECT_EQ(s["line"], "Remote control is off. Approved phones reach this Mac on the same Wi-Fi only.");
}

TEST(SimWatcher, LeavesWhenItsTimeIsUpAndNotBefore) {
    SimProcess sim({"--seed", "demo"});
    ASSERT_TRUE(sim.ready());
    ASSERT_EQ(sim.post("/_sim/watcher", {{"name", "Ana"}, {"seconds", 0.5}, {"control", true}})->status, 204);
    ASSERT_EQ(sim.post("/_sim/watcher", {{"name", "Ben"}})->status, 204);
    json screen = sim.status()["screen"];
    EXPECT_EQ(screen["watching"], json({"Ana", "Ben"}));
    EXPECT_EQ(screen["control"], "Ana");
    // Polled with a bound, never a fixed sleep: Ana goes, and her control with her; Ben stays.
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (sim.status()["screen"]["watching"].size() == 2 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    screen = sim.status()["screen"];
    EXPECT_EQ(screen["watching"], json({"Ben"}));
    EXPECT_FALSE(screen.contains("control"));
}

} // namespace
} // namespace orvan::simtest
