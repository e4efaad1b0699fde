// The computers' section as the text view draws it: which card has which controls, the sandbox
// line's words, and the sudo question that hands the password on and keeps none of it.
#include "computers/ComputersSection.h"
#include "computers/HostSandboxRow.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "ui/TextCommands.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using test::Reply;

const char* kList = R"({"bridge":"1.8.2","ssh":[],"hosts":[
    {"target":"lab","name":"GPU lab","computerId":"1","os":"linux","docker":"ready","version":"1.7.9","older":true},
    {"target":"build","name":"Build server","computerId":"2","os":"linux","docker":"missing","user":"rosa"},
    {"target":"bsd","name":"File server","computerId":"3","os":"freebsd","docker":"unsupported"},
    {"target":"win","name":"Windows desktop","computerId":"4","os":"windows","terminalOnly":true,"older":true}]})";

class SectionTest : public testing::Test {
protected:
    SectionTest() {
        api_.on("GET", "/companion/hosts", Reply::json(200, kList));
        api_.on("POST", "/companion/hosts/check",
                Reply::json(200, R"({"sandbox":{"image":"failed","download":850000000,"agents":{"codex":false}}})"));
        settle(model_.refresh());
    }
    void settle(Task<void> task) {
        auto started = test::start(std::move(task));
        while (!started.done() && clock_.step()) {}
    }
    void drain() { while (clock_.step()) {} }
    // The card of one computer, as text.
    std::string card(const std::string& target) {
        render();
        std::string text;
        for (const auto& child : tree_->children)
            if (child.identity == "host:" + target) text = ui::TextRenderer().frame(child).text;
        return text;
    }
    std::string render() {
        tree_ = std::make_unique<ui::Node>(ComputersSection::build(model_, state_, [] {}));
        frame_ = ui::TextRenderer({.numbered = true}).frame(*tree_);
        return frame_.text;
    }
    ui::Outcome command(const std::string& line) {
        render();
        auto parsed = ui::parseCommand(line);
        EXPECT_TRUE(parsed.command) << parsed.error;
        return ui::perform(frame_.controls, *parsed.command);
    }

    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    Hosts model_{api_, clock_, {{"ORVAN_DIR", "/nowhere"}}};
    ComputersViewState state_;
    std::unique_ptr<ui::Node> tree_;
    ui::TextFrame frame_;
};

TEST_F(SectionTest, EachCardOffersWhatItsComputerCanDo) {
    settle(model_.check(model_.hosts[0]));
    // Nothing is installed on a Terminal only computer: it can only be removed.
    struct Shown { const char* target; const char* words; bool shown; };
    for (const auto& c : {Shown{"lab", "[Update bridge]", true}, Shown{"lab", "Its bridge is 1.7.9. This Mac has 1.8.2.", true},
                          Shown{"lab", "[Try getting the sandbox desktop there again]", true},
                          Shown{"lab", "The sandbox desktop could not be made there.", true},
                          Shown{"lab", "[Turn on desktop mode for its agents]", true}, Shown{"lab", "[Check]", true},
                          Shown{"build", "[Install Docker]", true},
                          Shown{"build", "Sandboxes need Docker, which isn't installed there.", true},
                          Shown{"bsd", "[Check]", false}, Shown{"bsd", "Docker]", false}, Shown{"win", "[Update bridge]", false},
                          Shown{"win", "Sandboxes", false}, Shown{"win", "Windows · win · Terminal only", true},
                          Shown{"win", "[Remove]", true}}) {
        const std::string text = card(c.target);
        EXPECT_EQ(text.find(c.words) != std::string::npos, c.shown) << c.words << "\n" << text;
    }

    // A long operation there disables its buttons and shows a spinner.
    model_.working.insert("lab");
    EXPECT_NE(card("lab").find("[Check] (disabled)"), std::string::npos) << card("lab");
    EXPECT_NE(card("lab").find("[Update bridge] (disabled)"), std::string::npos);
}

TEST_F(SectionTest, SandboxLineFollowsDockerAndTheImage) {
    CompanionHost h = model_.hosts[0];
    HostSandbox reading;
    struct Case { std::optional<std::string> docker, image, note; bool reading; const char* line; };
    const std::vector<Case> cases{
        {"ready", "downloading", std::nullopt, true, "Downloading the sandbox desktop… 50%"},
        {"ready", "building", std::nullopt, true, "Building the sandbox desktop on GPU lab…"},
        {"ready", "ready", std::nullopt, true,
         "Sandboxes: Docker and the sandbox desktop are ready; a sandbox starts in seconds."},
        {"ready", "failed", "No disk space.", true, "No disk space."},
        {"ready", "missing", std::nullopt, true,
         "Sandboxes: Docker is ready. Get the sandbox desktop now and a sandbox starts in seconds; otherwise the first "
         "sandbox gets it."},
        {"ready", std::nullopt, std::nullopt, false, "Sandboxes: Docker is ready."},
        {"denied", "ready", std::nullopt, true, "Docker is installed, but this user can't use it yet."},
    };
    for (const auto& c : cases) {
        h.docker = c.docker;
        reading.image = c.image;
        reading.note = c.note;
        reading.progress = 0.5;
        EXPECT_EQ(HostSandboxRow::status(h, c.reading ? &reading : nullptr), c.line) << c.line;
    }
}

TEST_F(SectionTest, SudoQuestionSendsThePasswordOnceAndKeepsNone) {
    api_.queue("POST", "/companion/hosts/docker", Reply::json(401, R"({"message":"sudo needs a password there."})"));
    api_.on("POST", "/companion/hosts/docker", Reply::json(200, R"({"steps":["Installed"]})"));
    ASSERT_TRUE(command("press \"Install Docker\"").accepted);
    drain();
    ASSERT_TRUE(model_.sudoFor);
    const std::string frame = render();
    EXPECT_NE(frame.find("sudo on Build server"), std::string::npos) << frame;
    EXPECT_NE(frame.find("Type rosa's password for sudo."), std::string::npos) << frame;

    // An empty field sends nothing and the question stays.
    ASSERT_TRUE(command("press \"Install Docker\"").accepted);
    EXPECT_TRUE(model_.sudoFor);
    EXPECT_EQ(api_.count("/companion/hosts/docker"), 1u);

    ASSERT_TRUE(command("type Password pa55 word").accepted);
    EXPECT_EQ(render().find("pa55"), std::string::npos);
    ASSERT_TRUE(command("submit Password").accepted);
    EXPECT_FALSE(model_.sudoFor);
    EXPECT_EQ(state_.sudoPassword, "");
    drain();
    auto sent = api_.requestsTo("/companion/hosts/docker");
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(*json::parse(*sent[1].body), (Json{{"target", "build"}, {"password", "pa55 word"}}));

    // Cancel puts the question away and sends nothing more.
    api_.queue("POST", "/companion/hosts/docker", Reply::json(401, "{}"));
    ASSERT_TRUE(command("press \"Install Docker\"").accepted);
    drain();
    ASSERT_TRUE(model_.sudoFor);
    ASSERT_TRUE(command("type Password typed-then-cancelled").accepted);
    ASSERT_TRUE(command("press Cancel").accepted);
    EXPECT_FALSE(model_.sudoFor);
    EXPECT_EQ(state_.sudoPassword, "");
    EXPECT_EQ(api_.count("/companion/hosts/docker"), 3u);
}

TEST_F(SectionTest, RemoveAsksFirst) {
    ASSERT_TRUE(command("press \"Update bridge\"").accepted);
    EXPECT_NE(render().find("Update the bridge on GPU lab?"), std::string::npos);
    ASSERT_TRUE(command("press Cancel").accepted);
    EXPECT_EQ(api_.count("/companion/hosts/update"), 0u);
    std::string number;
    render();
    for (const auto& control : frame_.controls)
        if (control.node->title == "Remove" && control.number && number.empty()) number = std::to_string(control.number);
    ASSERT_TRUE(command("press " + number).accepted);
    EXPECT_NE(render().find("Remove this computer?"), std::string::npos);
    EXPECT_EQ(api_.count("/companion/hosts/remove"), 0u);
    ASSERT_TRUE(command("press Remove").accepted);
    drain();
    EXPECT_EQ(api_.count("/companion/hosts/remove"), 1u);
}

} // namespace
} // namespace orvan
