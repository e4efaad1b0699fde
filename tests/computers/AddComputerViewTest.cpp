// The add sheet as the text view draws it: the key file chosen where a chooser exists and typed
// where none does, and Node.js held ticked while a chosen agent needs it.
#include "computers/AddComputerSheet.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeDesktop.h"
#include "ui/TextCommands.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using test::Reply;

class AddComputerViewTest : public testing::Test {
protected:
    std::string render(FilePicker* files) {
        tree_ = std::make_unique<ui::Node>(AddComputerSheetView::build(sheet_, files, "/home/ann", [] {}));
        frame_ = ui::TextRenderer({.numbered = true}).frame(*tree_);
        return frame_.text;
    }
    ui::Outcome command(FilePicker* files, const std::string& line) {
        render(files);
        auto parsed = ui::parseCommand(line);
        EXPECT_TRUE(parsed.command) << parsed.error;
        return ui::perform(frame_.controls, *parsed.command);
    }
    void settle() { while (clock_.step()) {} }

    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    Hosts hosts_{api_, clock_, Environment{{"ORVAN_DIR", "/nowhere"}}};
    Accounts accounts_{api_, clock_, AccountsSetup{{{"ORVAN_DIR", "/nowhere"}}, "/home/ann"}};
    std::shared_ptr<AddComputerSheet> sheet_ =
        std::make_shared<AddComputerSheet>(hosts_, accounts_, ComputerForm::startingAs("ann"), [] {});
    std::unique_ptr<ui::Node> tree_;
    ui::TextFrame frame_;
};

TEST_F(AddComputerViewTest, TheKeyFileIsChosenWhereAChooserExistsAndTypedWhereNoneDoes) {
    test::FakeFilePicker picker;
    picker.answers = {std::filesystem::path("/home/ann/.ssh/id_lab"), std::nullopt};
    EXPECT_TRUE(command(&picker, "choose \"Sign in with\" key").accepted);
    EXPECT_TRUE(command(&picker, "press Choose…").accepted);
    settle();
    ASSERT_EQ(picker.asked.size(), 1u);
    EXPECT_EQ(picker.asked[0].kind, FileChoice::Kind::file);
    EXPECT_TRUE(picker.asked[0].showHidden);
    EXPECT_EQ(picker.asked[0].start, std::filesystem::path("/home/ann/.ssh"));
    EXPECT_EQ(picker.asked[0].message, "Choose the private key this computer accepts.");
    EXPECT_EQ(sheet_->form.key, "/home/ann/.ssh/id_lab");
    // Cancelled: the path stays.
    EXPECT_TRUE(command(&picker, "press Choose…").accepted);
    settle();
    EXPECT_EQ(sheet_->form.key, "/home/ann/.ssh/id_lab");

    NoFilePicker none;
    const std::string text = render(&none);
    EXPECT_EQ(text.find("Choose…"), std::string::npos) << text;
    EXPECT_TRUE(command(&none, "type \"Key file\" ~/.ssh/id_typed").accepted);
    EXPECT_EQ(sheet_->form.key, "~/.ssh/id_typed");
    EXPECT_NE(render(&none).find("Passphrase"), std::string::npos);
}

TEST_F(AddComputerViewTest, NodeIsHeldTickedWhileAChosenAgentNeedsItAndAddWaitsForTrust) {
    sheet_->form.address = "box";
    api_.queue("POST", "/companion/hosts/test", Reply::json(200, R"({"os":"linux","arch":"arm64","fingerprint":"SHA256:k",
        "agents":[],"companion":false,"confirm":true})"));
    api_.on("POST", "/companion/hosts/test", Reply::json(200, R"({"os":"linux","arch":"arm64","fingerprint":"SHA256:k",
        "agents":[],"companion":false})"));
    EXPECT_TRUE(command(nullptr, "press Test").accepted);
    settle();
    std::string text = render(nullptr);
    EXPECT_NE(text.find("[Add] (disabled)"), std::string::npos) << text;
    EXPECT_EQ(text.find("Install there"), std::string::npos) << "only the key shows until it is trusted";
    EXPECT_TRUE(command(nullptr, "press \"Trust this key\"").accepted);
    settle();
    EXPECT_TRUE(command(nullptr, "toggle \"Node.js, which Claude's and Codex's threads need\"").accepted);
    EXPECT_TRUE(command(nullptr, "toggle Gemini").accepted);
    text = render(nullptr);
    EXPECT_NE(text.find("[x] Node.js, which Claude's and Codex's threads need (disabled)"), std::string::npos) << text;
    EXPECT_TRUE(command(nullptr, "toggle Gemini").accepted);
    text = render(nullptr);
    EXPECT_NE(text.find("[x] Node.js, which Claude's and Codex's threads need"), std::string::npos)
        << "ticked by hand, it stays when nothing needs it";
    EXPECT_EQ(text.find("need (disabled)"), std::string::npos) << text;
    EXPECT_EQ(sheet_->agents, (std::set<std::string>{"node"}));
}

} // namespace
} // namespace orvan
