// What a write changes is there in the very next read, and refusals carry the words the companion
// tells apart.

#include "SimProcess.h"

#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

const char* const emptyLine = "Remote control is off. Approved phones reach this Mac on the same Wi-Fi only.";

struct Step {
    std::string path;
    json body;
    int status;
    std::string error = {}; // the refusal's "error" word, when there is one
};

const json absent = "(absent)", present = "(present)";

// The next reads as one document: "status", "devices", and each phone's row by id (the seeded ones
// as "owner" and "guest") under "phone" as the status has it and under "device" as the list has it.
json reads(const json& status, const json& devices) {
    json all = {{"status", status}, {"devices", devices}, {"phone", json::object()}, {"device", json::object()}};
    auto name = [](const std::string& id) { return id == owner ? "owner" : id == guest ? "guest" : id; };
    for (const auto& row : status.value("phones", json::array())) all["phone"][name(row.value("id", ""))] = row;
    for (const auto& row : devices.value("devices", json::array())) all["device"][name(row.value("id", ""))] = row;
    return all;
}

struct Story {
    const char* name;
    const char* seed;
    std::vector<Step> steps;
    std::vector<std::pair<std::string, json>> after; // pointers into `reads`, with `absent` and `present`
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
        EXPECT_TRUE(step.status != 204 || answer->body.empty()) << step.path << ": " << answer->body;
        if (!step.error.empty()) {
            json refusal = json::parse(answer->body, nullptr, false);
            EXPECT_EQ(refusal.value("error", ""), step.error) << answer->body;
            EXPECT_FALSE(refusal.value("message", "").empty()) << answer->body;
        }
    }
    auto devices = sim.get("/local/devices");
    ASSERT_TRUE(devices);
    const json all = reads(sim.status(), json::parse(devices->body, nullptr, false));
    for (const auto& [pointer, expected] : story.after) {
        const json::json_pointer at(pointer);
        const json found = !all.contains(at) ? absent : expected == present ? present : all[at];
        EXPECT_EQ(found, expected) << pointer;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Writes, SimStory,
    testing::Values(
        Story{"DemoIsALivedInMac", "demo", {},
              {{"/status/on", true}, {"/status/name", "Mara’s MacBook Pro"}, {"/status/phones/2", absent},
               {"/phone/owner/role", "owner"}, {"/phone/owner/ownerSince", present}, {"/phone/guest/role", "guest"},
               {"/phone/guest/guest/ends", present}, {"/status/sidebar", "left"}, {"/status/tulm", "up"},
               {"/status/screen/available", true}}},
        Story{"EmptyHasNoOwnerAndNoPhone", "empty", {}, {{"/status/phones", json::array()}, {"/status/line", emptyLine}}},
        Story{"RenameTrims", "demo", {{"/companion/name", {{"name", "  Studio Mac\n"}}, 204}},
              {{"/status/name", "Studio Mac"}}},
        Story{"RemoteOffChangesTheLine", "demo", {{"/companion/remote", {{"on", false}}, 204}},
              {{"/status/on", false}, {"/status/line", emptyLine}}},
        Story{"SidebarMoves", "demo", {{"/companion/sidebar", {{"position", "right"}}, 204}},
              {{"/status/sidebar", "right"}}},
        Story{"SidebarStaysWhileTulmIsClosed", "demo",
              {{"/_sim/set", {{"tulm", "closed"}}, 204}, {"/companion/sidebar", {{"position", "right"}}, 409}},
              {{"/status/sidebar", "left"}, {"/status/tulm", "closed"}}},
        Story{"DiagnosticsAnswered", "empty", {{"/companion/diagnostics", {{"allowed", true}}, 204}},
              {{"/status/diagnostics", true}, {"/status/diagnosticsAnswered", true}}},
        Story{"PromotedPhoneBecomesOwnerWithATime", "demo",
              {{"/_sim/phone", {{"id", "m1"}, {"name", "Ana’s iPhone"}}, 200},
               {"/companion/phone/role", {{"id", "m1"}, {"role", "owner"}}, 204}},
              {{"/phone/m1/role", "owner"}, {"/phone/m1/ownerSince", present},
               {"/status/line", "Remote control is on for 3 phones."}}},
        Story{"OwnerWithAnotherOwnerCanStepDown", "demo",
              {{"/_sim/phone", {{"id", "o2"}, {"role", "owner"}}, 200},
               {"/companion/phone/role", {{"id", owner}, {"role", "member"}}, 204}},
              {{"/phone/owner/role", "member"}, {"/phone/owner/ownerSince", absent}}},
        Story{"LastOwnerStays", "demo", {{"/companion/phone/role", {{"id", owner}, {"role", "member"}}, 409, "last_owner"}},
              {{"/phone/owner/role", "owner"}}},
        Story{"NoRoleChangeWhileSomeoneWatches", "demo",
              {{"/_sim/phone", {{"id", "m1"}}, 200},
               {"/_sim/watcher", {{"name", "Ana"}}, 204},
               {"/companion/phone/role", {{"id", "m1"}, {"role", "owner"}}, 409, "screen_shared"}},
              {{"/phone/m1/role", "member"}}},
        Story{"RoleOfAGoneDevice", "demo", {{"/companion/phone/role", {{"id", "gone"}, {"role", "owner"}}, 404, "not_found"}},
              {{"/status/phones/1", present}, {"/status/phones/2", absent}}},
        Story{"RemovedPhoneIsGoneEverywhere", "demo",
              {{"/companion/phone", {{"id", owner}}, 204}, {"/companion/phone", {{"id", owner}}, 404, "not_found"}},
              {{"/phone/owner", absent}, {"/device/owner", absent}, {"/status/line", "Remote control is on for 1 phone."}}},
        Story{"GuestExtendedToTheTimeSent", "demo",
              {{"/local/devices/extend", {{"id", guest}, {"ends", "2031-05-06T07:08:09.250+02:00"}}, 204},
               {"/local/devices/extend", {{"id", "gone"}, {"ends", "2031-05-06T07:08:09Z"}}, 404}},
              {{"/phone/guest/guest/ends", "2031-05-06T05:08:09Z"}, {"/device/guest/guest/ends", "2031-05-06T05:08:09Z"}}},
        Story{"LeanStatusKeepsScopesInDevicesOnly", "demo", {{"/_sim/set", {{"leanStatus", true}}, 204}},
              {{"/phone/guest/role", "guest"}, {"/phone/guest/guest", absent}, {"/device/guest/guest/mode", "watch"}}},
        Story{"ScreenOffEndsEveryViewer", "demo",
              {{"/_sim/watcher", {{"name", "Ana"}, {"control", true}}, 204}, {"/companion/screen", {{"on", false}}, 204}},
              {{"/status/screen/on", false}, {"/status/screen/watching", json::array()}, {"/status/screen/control", absent}}},
        Story{"StopEndsViewersButSharingStaysOn", "demo",
              {{"/_sim/watcher", {{"name", "Ana"}}, 204},
               {"/_sim/watcher", {{"name", "Ben"}, {"control", true}}, 204},
               {"/companion/screen/stop", json(nullptr), 204}},
              {{"/status/screen/on", true}, {"/status/screen/watching", json::array()}, {"/status/screen/control", absent}}},
        Story{"NobodyWatchesWhileSharingIsOff", "empty",
              {{"/_sim/watcher", {{"name", "Ana"}}, 409},
               {"/_sim/set", {{"available", false}}, 204},
               {"/companion/screen", {{"on", true}}, 409}},
              {{"/status/screen/on", false}}},
        Story{"ResetToAnEmptyMac", "demo", {{"/_sim/seed", {{"seed", "empty"}}, 204}},
              {{"/status/phones", json::array()}, {"/devices/devices", json::array()}, {"/status/line", emptyLine}}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SimWatcher, LeavesWhenItsTimeIsUpAndNotBefore) {
    SimProcess sim({"--seed", "demo"});
    ASSERT_TRUE(sim.ready());
    ASSERT_EQ(sim.post("/_sim/watcher", {{"name", "Ana"}, {"seconds", 0.5}, {"control", true}})->status, 204);
    ASSERT_EQ(sim.post("/_sim/watcher", {{"name", "Ben"}})->status, 204);
    json screen = sim.status()["screen"];
    EXPECT_EQ(screen["watching"], json({"Ana", "Ben"}));
    EXPECT_EQ(screen["control"], "Ana");
    // Ana goes, and her control with her; Ben stays.
    eventually([&] { return sim.status()["screen"]["watching"].size() != 2; });
    screen = sim.status()["screen"];
    EXPECT_EQ(screen["watching"], json({"Ben"}));
    EXPECT_FALSE(screen.contains("control"));
}

} // namespace
} // namespace orvan::simtest
