// The sign-in and remote desktop families as the simulator serves them, where the program's own
// tests do not reach: a pasted code refused and taken, a failing and a cancelled sign-in, the
// calls a companion must word, and an RDP certificate that is not the trusted one.

#include "SimProcess.h"

#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

using SimSignIn = SimTest;
using SimRemotes = SimTest;

json call(SimProcess& sim, const std::string& verb, const std::string& tool, json extra = json::object()) {
    extra["target"] = "build";
    extra["tool"] = tool;
    return body(sim.post("/companion/hosts/signin" + verb, extra));
}

TEST_F(SimSignIn, PastedCodesFailuresCancelsAndRefusals) {
    json listed = body(sim.post("/companion/hosts/signin/tools", {{"target", "build"}}));
    ASSERT_EQ(listed["tools"].size(), 5u);
    EXPECT_TRUE(listed["signIns"].empty());

    json codex = call(sim, "", "codex");
    EXPECT_EQ(codex["state"], "waiting-for-code");
    EXPECT_EQ(codex["paste"], true);
    EXPECT_EQ(sim.post("/companion/hosts/signin/code", {{"target", "build"}, {"tool", "codex"}, {"code", "nope"}})->status, 400);
    EXPECT_EQ(call(sim, "/code", "codex", {{"code", "cdx-5521-orchid"}})["state"], "verifying");
    EXPECT_TRUE(eventually([&] { return call(sim, "/state", "codex")["label"] == "Codex on build"; }, 5s));

    EXPECT_EQ(call(sim, "", "gemini")["state"], "show-link");
    EXPECT_TRUE(eventually([&] { return call(sim, "/state", "gemini")["state"] == "failed"; }, 6s));
    EXPECT_EQ(call(sim, "", "grok")["state"], "show-link");
    EXPECT_EQ(body(sim.post("/companion/hosts/signin/tools", {{"target", "build"}}))["signIns"].size(), 1u)
        << "only the sign-in still under way is listed";
    EXPECT_EQ(call(sim, "/cancel", "grok")["state"], "canceled");
    EXPECT_EQ(call(sim, "/state", "claude")["state"], "none");

    EXPECT_EQ(sim.post("/companion/hosts/signin", {{"target", "build"}, {"tool", "cursor"}})->status, 409);
    EXPECT_EQ(sim.post("/companion/hosts/signin", {{"target", "win"}, {"tool", "claude"}})->status, 409);
    EXPECT_EQ(sim.post("/companion/hosts/signin", {{"target", "nowhere"}, {"tool", "claude"}})->status, 404);
    EXPECT_EQ(sim.post("/companion/hosts/signin", {{"target", "build"}, {"tool", "vi"}})->status, 400);
    EXPECT_EQ(sim.get("/companion/hosts/signin/state")->status, 405);
    EXPECT_EQ(sim.post("/companion/hosts/signin/other", json::object())->status, 404);
}

TEST_F(SimRemotes, CertificatesPasswordsAndRemoval) {
    const json rdp{{"name", ""}, {"protocol", "rdp"}, {"host", "office.local"}, {"port", 3389}, {"user", "rosa"},
                   {"password", "orchid-88"}};
    json first = body(sim.post("/companion/remotes/test", rdp));
    ASSERT_EQ(first["confirm"], true);
    json other = rdp;
    other["fingerprint"] = "00:11";
    EXPECT_EQ(body(sim.post("/companion/remotes/test", other))["error"], "certificate");
    EXPECT_EQ(sim.post("/companion/remotes/add", rdp)->status, 409) << "an untrusted certificate adds nothing";
    json trusted = rdp;
    trusted["fingerprint"] = first["fingerprint"];
    trusted["password"] = "wrong";
    EXPECT_EQ(body(sim.post("/companion/remotes/test", trusted))["ok"], false);
    trusted["password"] = "orchid-88";
    EXPECT_EQ(sim.post("/companion/remotes/add", trusted)->status, 200);
    json rows = body(sim.get("/companion/remotes"))["remotes"];
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1]["name"], "office.local");
    EXPECT_EQ(rows[1].dump().find("orchid"), std::string::npos) << "a password is never echoed";

    json vnc{{"name", "Pi"}, {"protocol", "vnc"}, {"host", "pi.invalid"}, {"port", 5900}};
    EXPECT_EQ(body(sim.post("/companion/remotes/test", vnc))["message"], "Nothing answered at pi.invalid:5900.");
    vnc["port"] = 0;
    EXPECT_EQ(sim.post("/companion/remotes/test", vnc)->status, 400);
    EXPECT_EQ(sim.post("/companion/remotes/remove", {{"id", rows[1]["id"]}})->status, 204);
    EXPECT_EQ(sim.post("/companion/remotes/remove", {{"id", rows[1]["id"]}})->status, 404);
    EXPECT_EQ(sim.post("/companion/remotes", json::object())->status, 405);
}

} // namespace
} // namespace orvan::simtest
