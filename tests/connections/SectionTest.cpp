#include "connections/ConnectionsSection.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "ui/TextCommands.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using test::Reply;

class SectionTest : public testing::Test {
protected:
    std::string render() {
        tree_ = std::make_unique<ui::Node>(ConnectionsSection::build(model_, state_, [] {}));
        frame_ = ui::TextRenderer({.numbered = true}).frame(*tree_);
        return frame_.text;
    }
    // Acts on the control with this title, by its number, as someone at the text view would.
    ui::Outcome act(const std::string& verb, const std::string& title, const std::string& argument = "") {
        render();
        for (const auto& control : frame_.controls)
            if (control.node->title == title && control.number) {
                auto parsed = ui::parseCommand(verb + " " + std::to_string(control.number) +
                                               (argument.empty() ? "" : " " + argument));
                EXPECT_TRUE(parsed.command) << parsed.error;
                return ui::perform(frame_.controls, *parsed.command);
            }
        ADD_FAILURE() << "no control " << title << " in\n" << frame_.text;
        return {};
    }
    void read(const char* state) {
        api_.on("GET", "/local/tunnel", Reply::json(200, state));
        settle(model_.refresh());
    }
    void settle(Task<void> task) {
        auto started = test::start(std::move(task));
        while (!started.done() && clock_.step()) {
        }
    }
    void settle() {
        while (clock_.step()) {
        }
    }
    std::vector<Json> posts() const {
        std::vector<Json> out;
        for (const auto& r : api_.requestsTo("/local/tunnel"))
            if (r.method == "POST") out.push_back(*json::parse(*r.body));
        return out;
    }
    static bool has(const std::string& text, const std::string& piece) { return text.find(piece) != std::string::npos; }

    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    Tunnel model_{api_, clock_, {{"ORVAN_DIR", "/nowhere"}}};
    ConnectionsViewState state_;
    std::unique_ptr<ui::Node> tree_;
    ui::TextFrame frame_;
};

TEST_F(SectionTest, ASavedTokenIsSentOnceThenForgottenAndNeverDrawn) {
    read(R"({"status":"","origin":"http://127.0.0.1:9100"})");
    api_.on("POST", "/local/tunnel", Reply::empty(204));
    std::string frame = render();
    EXPECT_TRUE(has(frame, "Not set up."));
    EXPECT_TRUE(has(frame, "point the tunnel at http://127.0.0.1:9100 only: never at port 9099"));
    EXPECT_FALSE(has(frame, "Remove")) << "nothing stored, nothing to remove";
    // Nothing typed yet: no complaint, but no Save either.
    EXPECT_FALSE(has(frame, "Type this Mac's hostname"));

    ASSERT_TRUE(act("type", "Hostname", "HTTPS://Mac.Example.com/").accepted);
    EXPECT_TRUE(has(render(), "Paste the Cloudflare tunnel token."));
    ASSERT_TRUE(act("type", "Cloudflare tunnel token", "sekritTOKEN42").accepted);
    frame = render();
    EXPECT_FALSE(has(frame, "sekritTOKEN42"));
    EXPECT_FALSE(has(frame, "Paste the Cloudflare tunnel token."));

    api_.on("GET", "/local/tunnel", Reply::json(200, R"({"hostname":"mac.example.com","token":true,"status":"starting"})"));
    ASSERT_TRUE(act("press", "Save").accepted);
    settle();
    ASSERT_EQ(posts().size(), 1u);
    EXPECT_EQ(posts()[0], (Json{{"hostname", "mac.example.com"}, {"token", "sekritTOKEN42"}}));
    EXPECT_TRUE(state_.token.empty());
    EXPECT_FALSE(state_.edited);
    frame = render();
    EXPECT_TRUE(has(frame, "Starting the tunnel to mac.example.com\u2026"));
    EXPECT_TRUE(has(frame, "Remove"));
    EXPECT_FALSE(has(frame, "sekritTOKEN42"));
}

TEST_F(SectionTest, ABadHostnameIsNamedAndNothingIsSent) {
    read(R"({"hostname":"old.example.com","token":true,"status":"refused","reason":"  bad token \n"})");
    std::string frame = render();
    EXPECT_TRUE(has(frame, "Cloudflare refused this tunnel token."));
    EXPECT_TRUE(has(frame, "bad token"));
    EXPECT_EQ(state_.hostname, "old.example.com");
    ASSERT_TRUE(act("type", "Hostname", "localhost").accepted);
    frame = render();
    EXPECT_TRUE(has(frame, "Type this Mac's hostname, such as orvan.example.com."));
    EXPECT_TRUE(has(frame, "[Save] (disabled)"));
    EXPECT_FALSE(ui::perform(frame_.controls, *ui::parseCommand("press Save").command).accepted);
    settle();
    EXPECT_TRUE(posts().empty());
}

TEST_F(SectionTest, RemoveAsksFirstAndTheQuickSwitchSendsItsWish) {
    read(R"({"hostname":"a.example.com","token":true,"status":"up","quick":false})");
    api_.on("POST", "/local/tunnel", Reply::json(500, "{}"));
    ASSERT_TRUE(act("press", "Remove").accepted);
    EXPECT_TRUE(has(render(), "The tunnel stops and its token leaves this Mac's Keychain."));
    ASSERT_TRUE(act("press", "Cancel").accepted);
    EXPECT_TRUE(posts().empty());
    ASSERT_TRUE(act("press", "Remove").accepted);
    // The confirmation's own Remove, not the row's.
    render();
    const ui::Control* confirm = nullptr;
    for (const auto& control : frame_.controls)
        if (control.node->title == "Remove" && control.presented) confirm = &control;
    ASSERT_TRUE(confirm);
    ASSERT_TRUE(ui::perform(frame_.controls, *ui::parseCommand("press " + std::to_string(confirm->number)).command).accepted);
    settle();
    ASSERT_EQ(posts().size(), 1u);
    EXPECT_EQ(posts()[0], (Json{{"hostname", ""}, {"token", ""}}));
    EXPECT_EQ(model_.note, "The domain was not removed.");

    ASSERT_TRUE(act("toggle", "Quick tunnel").accepted);
    settle();
    ASSERT_EQ(posts().size(), 2u);
    EXPECT_EQ(posts()[1], (Json{{"quick", true}}));
    EXPECT_TRUE(has(render(), "The quick tunnel did not turn on."));
}

TEST_F(SectionTest, AnOlderBridgeGetsOneSentenceAndNoControls) {
    api_.on("GET", "/local/tunnel", Reply::json(404, ""));
    settle(model_.refresh());
    std::string frame = render();
    EXPECT_TRUE(has(frame, "This Mac's bridge does not offer these yet. Update Orvan Companion."));
    EXPECT_FALSE(has(frame, "Hostname"));
    EXPECT_FALSE(has(frame, "Quick tunnel"));
}

} // namespace
} // namespace orvan
