// What a computer's row says, what a test or an add sends, and how strictly the list is read.
#include "computers/CompanionHost.h"
#include "computers/ComputerForm.h"
#include "computers/HostAnswers.h"
#include "computers/HostBridge.h"
#include "computers/HostDocker.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

TEST(ComputerFormTest, BodyTrimsParsesThePortAndSendsSecretsOnlyWhereTheyBelong) {
    using SignIn = ComputerForm::SignIn;
    // Each case's body is a fresh form's with these keys changed or added.
    const Json fresh = Json::parse(R"({"address":"","auth":"auto","name":"","port":22,"terminalOnly":false,"user":"rosa"})");
    struct Case { const char* name; std::function<void(ComputerForm&)> fill; const char* changed; };
    const std::vector<Case> cases{
        {"fresh", [](ComputerForm&) {}, "{}"},
        {"trimmed, port with blanks",
         [](ComputerForm& f) { f.name = "  Build  "; f.address = "\tbox.local\n"; f.port = " 2222 "; f.user = " rosa "; },
         R"({"address":"box.local","name":"Build","port":2222})"},
        {"port abc is 0", [](ComputerForm& f) { f.port = "abc"; }, R"({"port":0})"},
        {"empty port is 0", [](ComputerForm& f) { f.port = ""; }, R"({"port":0})"},
        {"an overflowing port is 0", [](ComputerForm& f) { f.port = "99999999999"; }, R"({"port":0})"},
        {"auto sends no secret even if one was typed", [](ComputerForm& f) { f.secret = "pw"; f.fingerprint = "SHA256:x "; },
         R"({"fingerprint":"SHA256:x "})"},
        {"key: trimmed path, passphrase kept as typed",
         [](ComputerForm& f) { f.signIn = SignIn::key; f.key = " ~/.ssh/lab "; f.secret = " pass phrase "; },
         R"({"auth":"key","key":"~/.ssh/lab","secret":" pass phrase "})"},
        {"key without passphrase", [](ComputerForm& f) { f.signIn = SignIn::key; },
         R"({"auth":"key","key":"~/.ssh/id_ed25519"})"},
        {"password, terminal only",
         [](ComputerForm& f) { f.signIn = SignIn::password; f.secret = "hunter2"; f.terminalOnly = true; },
         R"({"auth":"password","secret":"hunter2","terminalOnly":true})"},
    };
    for (const auto& c : cases) {
        ComputerForm form = ComputerForm::startingAs("rosa");
        c.fill(form);
        Json body = fresh;
        body.merge_patch(Json::parse(c.changed));
        EXPECT_EQ(form.body(), body) << c.name;
    }
}

TEST(CompanionHostTest, LineSaysSystemProcessorWhereAndTerminal) {
    struct Case { const char* host; const char* line; };
    const std::vector<Case> cases{
        {R"({"target":"box","name":"n","computerId":"c"})", "Linux · box"},
        {R"({"target":"box","name":"n","computerId":"c","os":"plan9","arch":"x86_64","address":"10.0.0.2","port":22,"user":"rosa"})",
         "Linux x86_64 · rosa@10.0.0.2"},
        {R"({"target":"box","name":"n","computerId":"c","os":"darwin","arch":"","address":"mini.local","port":2222,"user":""})",
         "macOS · mini.local:2222"},
        {R"({"target":"box","name":"n","computerId":"c","os":"freebsd","address":"","port":2222,"user":"rosa"})",
         "FreeBSD · box"},
        {R"({"target":"box","name":"n","computerId":"c","os":"other","address":"h","port":0})", "Another system · h"},
        {R"({"target":"win","name":"n","computerId":"c","os":"windows","arch":"x86_64","address":"h","terminalOnly":true})",
         "Windows x86_64 · h · Terminal only"},
    };
    for (const auto& c : cases) {
        auto host = decodeJson<CompanionHost>(c.host);
        ASSERT_TRUE(host) << c.host;
        EXPECT_EQ(host->line(), c.line) << c.host;
    }
}

TEST(CompanionHostTest, OneWrongTypeOrMissingIdentityFailsTheWholeList) {
    const char* good = R"({"target":"a","name":"A","computerId":"1"})";
    EXPECT_TRUE(decodeJson<HostsList>(std::string(R"({"ssh":[],"hosts":[)") + good + "]}"));
    for (const char* bad : {R"({"target":"b","name":"B","computerId":"2","port":"22"})",
                            R"({"target":"b","name":"B"})", R"({"target":"b","name":"B","computerId":"2","older":1})"})
        EXPECT_FALSE(decodeJson<HostsList>(std::string(R"({"ssh":[],"hosts":[)") + good + "," + bad + "]}")) << bad;
    EXPECT_FALSE(decodeJson<HostsList>(std::string(R"({"hosts":[)") + good + "]}")) << "ssh is required";
}

TEST(HostWordsTest, DockerAndBridgeLines) {
    using O = std::optional<std::string>;
    EXPECT_EQ(HostDocker::line(O("unsupported"), O("darwin")), "Sandboxes on a Mac run under its own Orvan Companion.");
    EXPECT_EQ(HostDocker::line(O("unsupported"), std::nullopt), "Sandboxes need Linux or macOS; this system has no Docker.");
    EXPECT_EQ(HostDocker::line(O("starting"), O("linux")), "Sandboxes: not checked yet.");
    EXPECT_EQ(HostBridge::line(" 1.7.9 ", true, "1.8.2", false), "Its bridge is 1.7.9. This Mac has 1.8.2.");
    EXPECT_EQ(HostBridge::line("", true, "", false), "Its bridge is an older version.");
    EXPECT_EQ(HostBridge::line("1.8.2", false, "1.8.2", false), "Bridge 1.8.2");
    EXPECT_EQ(HostBridge::line(" ", false, "1.8.2", false), std::nullopt);
    EXPECT_EQ(HostBridge::line("1.7.9", true, "1.8.2", true), std::nullopt);
}

} // namespace
} // namespace orvan
