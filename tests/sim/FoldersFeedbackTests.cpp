// The folder lists and the feedback hand-over as the simulator serves them: what is added and
// removed, the access report, the relay's moods, and the reports read back as they arrived.

#include "SimProcess.h"

#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

using SimFolders = SimTest;
using SimFeedback = SimTest;

json pictures(const char* data) { return json::array({json{{"type", "image/jpeg"}, {"data", data}}}); }

json report(json images = json::array()) {
    return {{"kind", "bug"}, {"text", "It froze"}, {"diagnostics", "Orvan Companion 1.0"}, {"device", "Mac"},
            {"images", std::move(images)}};
}

TEST_F(SimFolders, AddsRemovesAndRefusesWhatIsNoFolder) {
    const json before = body(sim.get("/companion/acp/projects"))["projects"];
    ASSERT_FALSE(before.empty());
    EXPECT_EQ(sim.post("/companion/acp/projects", {{"path", "/srv/work/site/"}})->status, 204);
    EXPECT_EQ(sim.post("/companion/acp/projects", {{"path", "/srv/work/site"}})->status, 409);
    for (const json& bad : {json{{"path", "relative"}}, json{{"path", 3}}, json::object()})
        EXPECT_EQ(sim.post("/companion/acp/projects", bad)->status, 400) << bad;
    json listed = body(sim.get("/companion/acp/projects"))["projects"];
    ASSERT_EQ(listed.size(), before.size() + 1);
    EXPECT_EQ(listed.back()["name"], "site");
    EXPECT_EQ(listed.back()["path"], "/srv/work/site");
    EXPECT_EQ(sim.post("/companion/acp/projects/remove", {{"id", listed.back()["id"]}})->status, 204);
    EXPECT_EQ(sim.post("/companion/acp/projects/remove", {{"id", listed.back()["id"]}})->status, 404);
    EXPECT_EQ(body(sim.get("/companion/acp/projects"))["projects"], before);

    const json folders = body(sim.get("/companion/folders"))["folders"];
    ASSERT_EQ(folders.size(), 3u);
    for (const auto& row : folders) EXPECT_TRUE(row["state"] == "allowed" || row["state"] == "missing") << row;
}

TEST_F(SimFeedback, FilesReportsAndAnswersEachRelayMood) {
    auto filed = sim.post("/companion/feedback", report(pictures("/9j/4AAQ")));
    ASSERT_EQ(filed->status, 200);
    EXPECT_EQ(body(filed)["ok"], true);
    EXPECT_EQ(sim.post("/companion/feedback", report(pictures("not base64!")))->status, 400);
    json noText = report();
    noText["text"] = "";
    EXPECT_EQ(sim.post("/companion/feedback", noText)->status, 400);
    const struct {
        const char* relay;
        int status;
        const char* error;
    } moods[] = {{"unpaired", 401, nullptr}, {"off", 503, "feedback_off"}, {"none", 503, "no_relay"}};
    for (const auto& mood : moods) {
        ASSERT_EQ(sim.post("/_sim/feedback", {{"relay", mood.relay}})->status, 204);
        auto refused = sim.post("/companion/feedback", report());
        EXPECT_EQ(refused->status, mood.status) << mood.relay;
        EXPECT_TRUE(body(refused)["message"].is_string());
        if (mood.error) {
            EXPECT_EQ(body(refused)["error"], mood.error);
        }
    }
    EXPECT_EQ(sim.post("/_sim/feedback", {{"relay", "sideways"}})->status, 400);
    const json kept = body(sim.get("/companion/feedback"))["reports"];
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept[0], report(pictures("/9j/4AAQ")));
}

} // namespace
} // namespace orvan::simtest
