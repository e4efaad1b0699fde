// The invite family as the simulator serves it: checked drafts, a QR picture per invite, an older
// bridge that answers nothing about what it made, cancellation by an escaped id, and the phones
// that take invites up: one by itself after a QR code, one by asking to join after a link.

#include "SimProcess.h"

#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

using SimInvites = SimTest;

json guestDraft(json guest) { return json{{"name", "Bo"}, {"role", "guest"}, {"kind", "link"}, {"guest", guest}}; }

TEST_F(SimInvites, DraftsAreCheckedAndMadeInvitesListUntilCancelled) {
    json good{{"projects", {"orvan-site"}}, {"sessions", json::array()}, {"mode", "watch"}, {"ends", "2099-01-01T00:00:00Z"}};
    auto with = [&](const char* key, json value) {
        json g = good;
        g[key] = value;
        return guestDraft(g);
    };
    for (const json& bad : {json{{"role", "owner"}, {"kind", "qr"}}, json{{"role", "member"}, {"kind", "nfc"}},
                            json{{"role", "member"}, {"kind", "qr"}, {"name", std::string(41, 'x')}},
                            guestDraft(nullptr), with("projects", json::array()), with("projects", {"nowhere"}),
                            with("mode", "drive"), with("ends", "2001-01-01T00:00:00Z"), with("ends", "soon")})
        EXPECT_EQ(sim.post("/local/invite", bad)->status, 400) << bad.dump();
    EXPECT_EQ(sim.post("/local/invite", json{{"role", "member"}, {"kind", "qr"}, {"name", std::string(40, 'x')}})->status, 200);

    json made = body(sim.post("/local/invite", guestDraft(good)));
    ASSERT_TRUE(made.contains("id")) << made.dump();
    const std::string id = made["id"];
    EXPECT_EQ(made["kind"], "link");
    EXPECT_EQ(made["link"].get<std::string>().rfind("https://join.orvan.example/i/" + id + "#v1.", 0), 0u);

    json listed = body(sim.get("/local/invites"))["invites"];
    ASSERT_EQ(listed.size(), 2u);
    EXPECT_EQ(listed[1]["guest"]["projects"], json({"orvan-site"}));
    EXPECT_FALSE(listed[1].contains("link")) << "the list never hands a link out again";

    EXPECT_EQ(sim.post("/local/invites/" + id + "/cancel", json::object())->status, 204);
    EXPECT_EQ(sim.post("/local/invites/" + id + "/cancel", json::object())->status, 404);
    EXPECT_EQ(sim.post("/local/invites/a%2Fb/cancel", json::object())->status, 404);
    EXPECT_EQ(body(sim.get("/local/invites"))["invites"].size(), 1u);

    json scope = body(sim.get("/local/scope"));
    EXPECT_EQ(scope["projects"].size(), 3u);
    EXPECT_EQ(scope["sessions"][1]["name"], "");
}

TEST_F(SimInvites, AQrCodeIsAPictureItsPhoneJoinsAndALinkLeavesAJoinRequest) {
    ASSERT_EQ(sim.post("/_sim/invites", {{"joinAfter", 1}})->status, 204);
    json made = body(sim.post("/local/invite", {{"name", "Sam"}, {"role", "member"}, {"kind", "qr"}}));
    auto png = sim.get("/local/invite.png?id=" + made["id"].get<std::string>());
    ASSERT_TRUE(png);
    EXPECT_EQ(png->status, 200);
    EXPECT_EQ(png->body.rfind("\x89PNG\r\n\x1a\n", 0), 0u);
    EXPECT_EQ(sim.get("/local/invite.png?id=unknown")->status, 404);
    auto joined = [&] {
        const json status = body(sim.get("/companion/status"));
        for (const auto& p : status["phones"])
            if (p.value("name", "") == "Sam") return true;
        return false;
    };
    EXPECT_FALSE(joined());
    EXPECT_TRUE(eventually(joined));
    EXPECT_EQ(sim.get("/local/invite.png?id=" + made["id"].get<std::string>())->status, 404) << "used up";

    json link = body(sim.post("/local/invite", {{"role", "member"}, {"kind", "link"}}));
    EXPECT_EQ(sim.post("/_sim/follow", {{"id", made["id"]}})->status, 404) << "a QR code can't be followed";
    json follow = body(sim.post("/_sim/follow", {{"id", link["id"]}, {"name", "Ada"}}));
    EXPECT_EQ(follow["code"].get<std::string>().size(), 4u);
    EXPECT_EQ(sim.post("/_sim/follow", {{"id", link["id"]}})->status, 404) << "a link works once";
}

TEST_F(SimInvites, AnOlderBridgeAnswersNothingAboutTheInviteButDrawsAMembersCode) {
    ASSERT_EQ(sim.post("/_sim/invites", {{"older", true}})->status, 204);
    auto made = sim.post("/local/invite", {{"role", "member"}, {"kind", "qr"}});
    EXPECT_EQ(made->status, 204);
    EXPECT_TRUE(made->body.empty());
    auto png = sim.get("/local/invite.png");
    EXPECT_EQ(png->status, 200);
    EXPECT_EQ(png->body.rfind("\x89PNG", 0), 0u);
    ASSERT_EQ(sim.post("/_sim/invites", {{"link", "http://plain.example/i#v1.x"}, {"older", false}})->status, 204);
    EXPECT_EQ(body(sim.post("/local/invite", {{"role", "member"}, {"kind", "link"}}))["link"], "http://plain.example/i#v1.x");
}

} // namespace
} // namespace orvan::simtest
