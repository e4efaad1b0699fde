// The remote desktops: a row's line, what a test or an add sends, the model against a scripted
// bridge, and the add sheet's road through a test and an RDP certificate's trust, as the text
// view drives it.
#include "computers/AddRemoteSheet.h"
#include "computers/RemoteDesktopsSection.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "ui/TextCommands.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

CompanionRemote remote(const std::string& protocol, int port, std::optional<std::string> user) {
    CompanionRemote r;
    r.id = "r";
    r.name = "Pi";
    r.protocol = protocol;
    r.host = "pi.local";
    r.port = port;
    r.user = std::move(user);
    return r;
}

using namespace std::chrono_literals;
using test::Reply;

TEST(RemoteRecordsTest, LinesAndBodies) {
    struct Line { std::string protocol; int port; std::optional<std::string> user; std::string line; };
    const std::vector<Line> lines{{"vnc", 5900, std::nullopt, "VNC · pi.local"}, {"vnc", 5901, "", "VNC · pi.local:5901"},
                                  {"rdp", 5900, "rosa", "RDP · rosa at pi.local:5900"}, {"rdp", 3389, "rosa", "RDP · rosa at pi.local"},
                                  {"spice", 5900, std::nullopt, "SPICE · pi.local"}};
    for (const auto& c : lines)
        EXPECT_EQ((remote(c.protocol, c.port, c.user).line()), c.line) << c.line;
    EXPECT_FALSE(decodeJson<RemotesList>(R"({"remotes":[{"id":"r","name":"n","protocol":"vnc","host":"h","port":"5900"}]})"));

    RemoteForm form;
    form.host = " pi.local ";
    form.user = "ignored for VNC";
    form.password = " pass ";
    EXPECT_EQ(form.body(), *json::parse(R"({"name":"","protocol":"vnc","host":"pi.local","port":5900,"password":" pass "})"));
    form.proto = "rdp";
    form.port = " 3390 ";
    form.user = " rosa ";
    form.domain = " ";
    form.password.clear();
    form.fingerprint = "aa:bb";
    EXPECT_EQ(form.body(),
              *json::parse(R"({"name":"","protocol":"rdp","host":"pi.local","port":3390,"user":"rosa","fingerprint":"aa:bb"})"));
    form.port.clear();
    form.domain = "CORP";
    EXPECT_EQ(form.body()["port"], 3389);
    EXPECT_EQ(form.body()["domain"], "CORP");
    form.user = " ";
    EXPECT_FALSE(form.ready()) << "RDP needs a user";
    form.proto = "vnc";
    EXPECT_TRUE(form.ready()) << "VNC needs only a host";
}

class RemotesTest : public testing::Test {
protected:
    RemotesTest() {
        api_.on("GET", "/companion/remotes",
                Reply::json(200, R"({"remotes":[{"id":"r-1","name":"Living room Mac","protocol":"vnc","host":"mini.local","port":5900}]})"));
        settle(model_.refresh());
    }
    void settle(Task<void> task) {
        auto started = test::start(std::move(task));
        while (!started.done() && clock_.step()) {}
    }
    std::string render() {
        tree_ = std::make_unique<ui::Node>(RemoteDesktopsSection::build(model_, state_, [] {}));
        frame_ = ui::TextRenderer({.numbered = true}).frame(*tree_);
        return frame_.text;
    }
    bool saw(const std::string& words) { return render().find(words) != std::string::npos; }
    ui::Outcome command(const std::string& line) {
        render();
        auto parsed = ui::parseCommand(line);
        EXPECT_TRUE(parsed.command) << parsed.error;
        auto outcome = ui::perform(frame_.controls, *parsed.command);
        while (clock_.step()) {}
        return outcome;
    }
    Json lastBody(const std::string& path) const { return *json::parse(*api_.requestsTo(path).back().body); }

    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    Remotes model_{api_, {{"ORVAN_DIR", "/nowhere"}}};
    RemotesViewState state_;
    std::unique_ptr<ui::Node> tree_;
    ui::TextFrame frame_;
};

TEST_F(RemotesTest, TestsSayWhyAndOnlyAGoodTestAdds) {
    struct Case { Reply reply; std::string note; };
    const std::vector<Case> cases{
        {Reply::json(200, R"({"ok":false,"message":"The VNC password was not accepted."})"), "The VNC password was not accepted."},
        {Reply::json(200, R"({"ok":false})"), "It could not be reached."},
        {Reply::json(502, R"({"message":"No route."})"), "No route."},
        {Reply::json(200, R"({"ok":"yes"})"), "It could not be reached."},
        {Reply::failure(), "The bridge did not answer."},
    };
    RemoteForm form;
    form.host = "pi.local";
    for (const auto& c : cases) {
        api_.on("POST", "/companion/remotes/test", c.reply);
        settle(model_.test(form));
        EXPECT_EQ(model_.note, c.note);
        EXPECT_FALSE(model_.found);
        EXPECT_FALSE(model_.busy);
    }
    EXPECT_EQ(api_.requestsTo("/companion/remotes/test").back().timeout, std::chrono::seconds(1200));

    api_.on("POST", "/companion/remotes/add", Reply::json(500, "{}"));
    auto added = test::start(model_.add(form));
    EXPECT_FALSE(added.value());
    EXPECT_EQ(model_.note, "It was not added.");
    // A removal that fails says nothing; the list that follows tells.
    api_.on("POST", "/companion/remotes/remove", Reply::json(500, R"({"message":"Keychain locked."})"));
    settle(model_.remove(model_.list[0]));
    EXPECT_EQ(model_.note, "It was not added.");
    EXPECT_EQ(model_.list.size(), 1u);
    EXPECT_EQ(api_.count("/companion/remotes"), 2u);
}

TEST_F(RemotesTest, AnRdpDesktopIsAddedOnlyOnceItsCertificateIsTrusted) {
    EXPECT_TRUE(saw("Living room Mac")) << render();
    command("press \"Add a remote desktop…\"");
    ASSERT_TRUE(saw("Add a remote desktop")) << render();
    EXPECT_TRUE(saw("[Test] (disabled)")) << render();
    command("choose Protocol RDP");
    command("type Host office.local");
    EXPECT_TRUE(saw("[Test] (disabled)")) << "RDP needs a user";
    command("type User rosa");
    command("type Password orchid-88");
    EXPECT_TRUE(saw("Empty uses 3389, the usual port for RDP")) << render();

    for (int i = 0; i < 2; ++i)
        api_.queue("POST", "/companion/remotes/test", Reply::json(200, R"({"ok":true,"confirm":true,"fingerprint":"aa:bb:cc"})"));
    api_.on("POST", "/companion/remotes/test", Reply::json(200, R"({"ok":true,"name":"office","w":2560,"h":1440})"));
    command("press Test");
    EXPECT_TRUE(saw("Check the server's certificate:")) << render();
    EXPECT_TRUE(saw("aa:bb:cc"));
    EXPECT_TRUE(saw("[Add] (disabled)"));
    EXPECT_FALSE(lastBody("/companion/remotes/test").contains("fingerprint"));

    // Another host makes the found certificate someone else's.
    command("type Host other.local");
    EXPECT_FALSE(saw("Check the server's certificate:"));
    command("type Host office.local");
    command("press Test");
    command("press \"Trust this certificate\"");
    EXPECT_EQ(lastBody("/companion/remotes/test")["fingerprint"], "aa:bb:cc");
    EXPECT_TRUE(saw("Reached it, with the certificate you trusted.")) << render();

    api_.on("POST", "/companion/remotes/add", Reply::json(200, R"({"id":"r-2"})").after(1s));
    api_.on("GET", "/companion/remotes", Reply::json(200, R"({"remotes":[
        {"id":"r-1","name":"Living room Mac","protocol":"vnc","host":"mini.local","port":5900},
        {"id":"r-2","name":"office.local","protocol":"rdp","host":"office.local","port":3389,"user":"rosa","secret":true}]})")
                                             .after(1s));
    command("press Add");
    const Json sent = lastBody("/companion/remotes/add");
    EXPECT_EQ(sent["password"], "orchid-88");
    EXPECT_EQ(sent["port"], 3389);
    EXPECT_FALSE(state_.adding) << "the sheet closed by itself";
    EXPECT_EQ(state_.form.password, "") << "nothing of the password stays";
    EXPECT_TRUE(saw("RDP · rosa at office.local")) << render();

    command("press 1");
    EXPECT_TRUE(saw("Remove this remote desktop?")) << render();
}

TEST_F(RemotesTest, AVncTestSaysWhatItReached) {
    RemoteForm form;
    const std::vector<std::pair<std::string, std::string>> cases{
        {R"({"ok":true,"name":"raspberrypi","w":1920,"h":1080,"security":"vnc"})",
         "Reached raspberrypi, 1920×1080, signed in with its password."},
        {R"({"ok":true,"name":"","security":"none"})", "Reached it, 0×0, with no password."},
    };
    for (const auto& [answer, words] : cases)
        EXPECT_EQ(AddRemoteSheet::reached(form, *decodeJson<RemoteFound>(answer)), words);
}

} // namespace
} // namespace orvan
