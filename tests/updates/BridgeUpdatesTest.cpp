// The update check, the refusal and the install's early refusals in virtual time, as the owner sees
// them in the Updates section, the alert and the menu.
#include "bridge/Bridge.h"
#include "bridge/MenuDesk.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeProcesses.h"
#include "fakes/FakeWeb.h"
#include "fakes/TempFolder.h"
#include "foundation/Files.h"
#include "ui/TextRenderer.h"
#include "updates/UpdateCheck.h"
#include "updates/UpdateContext.h"
#include "updates/UpdateFeed.h"
#include "updates/UpdateStore.h"
#include "updates/UpdateWords.h"
#include "updates/UpdatesSection.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;

const char* feed = "https://dl.example.org/linux-x86_64/companion/latest.json";

std::string release(const std::string& version, const std::string& extra = "") {
    return R"({"version":")" + version + R"(","url":"https://dl.example.org/a.tgz","size":5,"sha256":")" +
           std::string(64, 'c') + "\"" + extra + "}";
}

const ui::Node* find(const ui::Node& node, const std::string& key) {
    if (node.identity == key) return &node;
    for (const auto& child : node.children)
        if (auto* found = find(child, key)) return found;
    return nullptr;
}

class BridgeUpdatesTest : public testing::Test {
protected:
    void SetUp() override {
        setup_.environment = {{"HOME", temp_.path().string()}, {"XDG_DATA_HOME", (temp_.path() / "data").string()},
                              {"ORVAN_DIR", (temp_.path() / "bridge").string()}, {"PATH", "/usr/bin:/bin"}};
        context_.web = &web_;
        context_.tools = &tools_;
        context_.downloadsBase = "https://dl.example.org/linux-x86_64/";
        context_.currentVersion = "1.2";
        context_.system = "2.36.0";
        context_.running = temp_.path() / "elsewhere" / "orvan-companion";
        context_.temporary = temp_.path();
        setup_.updates = &context_;
        api_.on("GET", "/healthz", test::Reply::json(200, "ok"));
        api_.on("GET", "/companion/status", test::Reply::json(200, R"({"name":"Studio"})"));
        bridge_ = std::make_unique<Bridge>(api_, clock_, processes_, setup_);
    }
    void check(bool manual) { test::start(bridge_->checkForUpdate(manual)); }
    std::string section() { return ui::TextRenderer::plain(UpdatesSection::build(*bridge_)); }

    test::TempFolder temp_;
    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    test::FakeProcesses processes_;
    test::FakeWeb web_{clock_};
    test::FakeTools tools_;
    UpdateContext context_;
    BridgeSetup setup_;
    std::unique_ptr<Bridge> bridge_;
};

TEST_F(BridgeUpdatesTest, AutomaticChecksAfterEightSecondsThenEveryFourHoursWithTheFeedsHeaders) {
    web_.answers[feed] = test::FakeWeb::http(200, release("1.2"));
    bridge_->start();
    clock_.advance(7s);
    EXPECT_TRUE(web_.asked.empty());
    clock_.advance(1s);
    ASSERT_EQ(web_.asked.size(), 1u);
    EXPECT_EQ(web_.asked[0].url, feed);
    EXPECT_EQ(web_.asked[0].timeout, 30s);
    EXPECT_EQ(web_.asked[0].headers, (std::vector<std::pair<std::string, std::string>>{{"Accept", "application/json"}}));
    EXPECT_EQ(bridge_->updateNote, UpdateWords::latestQuietly);
    clock_.advance(4h - 1s);
    EXPECT_EQ(web_.asked.size(), 1u);
    clock_.advance(1s);
    EXPECT_EQ(web_.asked.size(), 2u);
}

TEST_F(BridgeUpdatesTest, EachAnswerOfTheFeedSetsTheFieldsAsTheOwnerSeesThem) {
    struct Case {
        const char* what;
        WebAnswer answer;
        bool manual;
        std::string note, ready;
        bool prompt;
    } cases[] = {
        {"newer", test::FakeWeb::http(200, release("1.3")), false, "Version 1.3 is ready.", "1.3", true},
        {"current, manual", test::FakeWeb::http(200, release("1.2.0")), true, "This is the latest version.", "", false},
        {"system too old", test::FakeWeb::http(200, release("1.3", R"(,"minimumMacOS":"9.1")")), false,
         "Version 1.3 needs macOS 9.1 or later. This Mac stays on this version.", "", false},
        {"404", test::FakeWeb::http(404, "gone"), true, UpdateManifest::unreadable, "", false},
        {"500", test::FakeWeb::http(500), true, UpdateFeed::unreachable, "", false},
        {"bad description", test::FakeWeb::http(200, release("1.3", R"(,"size":0)")), false, UpdateManifest::unreadable, "", false},
        {"no server", WebAnswer{std::string("refused"), 0, {}}, false, UpdateFeed::unreachable, "", false},
    };
    for (const auto& c : cases) {
        SetUp();
        web_.answers[feed] = c.answer;
        check(c.manual);
        EXPECT_FALSE(bridge_->updateBusy) << c.what;
        EXPECT_EQ(bridge_->updateNote, c.note) << c.what;
        EXPECT_EQ(bridge_->updateReady, c.ready) << c.what;
        EXPECT_EQ(bridge_->readyRelease.has_value(), !c.ready.empty()) << c.what;
        EXPECT_EQ(bridge_->updatePrompt, c.prompt) << c.what;
        EXPECT_NE(section().find(c.note), std::string::npos) << c.what;
        EXPECT_EQ(section().find("[Update]") != std::string::npos, !c.ready.empty()) << c.what;
    }
}

TEST_F(BridgeUpdatesTest, NotNowIsKeptSoAutomaticChecksStayQuietButManualOnesAskAgain) {
    web_.answers[feed] = test::FakeWeb::http(200, release("1.3"));
    check(false);
    ui::Node alert = UpdatesSection::alert(*bridge_);
    EXPECT_NE(ui::TextRenderer::plain(alert).find(
                  "Version 1.3 replaces this copy. Phones disconnect for a moment, then the companion reopens."),
              std::string::npos);
    find(alert, "update.later")->onPress();
    EXPECT_FALSE(bridge_->updatePrompt);
    EXPECT_EQ(bridge_->updateReady, "1.3"); // still installable from the section
    EXPECT_EQ(UpdateStore::dismissed(setup_.environment), "1.3");
    EXPECT_TRUE(UpdatesSection::alert(*bridge_).isAbsent);

    check(false);
    EXPECT_FALSE(bridge_->updateBusy);
    EXPECT_EQ(web_.asked.size(), 2u);
    EXPECT_FALSE(bridge_->updatePrompt);
    EXPECT_EQ(bridge_->updateNote, "Version 1.3 is ready.");
    // An automatic check that fails leaves the ready release and its words alone; a manual one says so.
    web_.answers.clear();
    check(false);
    EXPECT_EQ(bridge_->updateNote, UpdateWords::checkingQuietly);
    EXPECT_EQ(bridge_->updateReady, "1.3");

    web_.answers[feed] = test::FakeWeb::http(200, release("1.3"));
    ui::Node menu = MenuDesk::build(*bridge_, {});
    ASSERT_NE(find(menu, "updates.check"), nullptr);
    EXPECT_EQ(find(menu, "updates.check")->title, "Check for updates");
    find(menu, "updates.check")->onPress();
    EXPECT_TRUE(bridge_->updatePrompt);
}

TEST_F(BridgeUpdatesTest, ChecksDoNotOverlapAndTheButtonsWaitForTheCheck) {
    web_.answers[feed] = test::FakeWeb::http(200, release("1.3"));
    web_.delay = 5s;
    check(true);
    EXPECT_TRUE(bridge_->updateBusy);
    EXPECT_EQ(bridge_->updateNote, "Checking for updates…");
    EXPECT_FALSE(find(UpdatesSection::build(*bridge_), "updates.check")->isEnabled);
    check(false);
    clock_.advance(5s);
    EXPECT_EQ(web_.asked.size(), 1u);
    EXPECT_TRUE(find(UpdatesSection::build(*bridge_), "updates.check")->isEnabled);
}

TEST_F(BridgeUpdatesTest, InstallWithoutAnInstalledCopyOrFromThePackageSaysSoAndTouchesNothing) {
    web_.answers[feed] = test::FakeWeb::http(200, release("1.3"));
    check(true);
    test::start(bridge_->installUpdate());
    EXPECT_EQ(bridge_->updateNote, UpdateWords::noTarget);
    EXPECT_FALSE(bridge_->updatePrompt);
    EXPECT_FALSE(bridge_->updateBusy);

    // A copy in place that dpkg lists.
    auto bundle = temp_.path() / "opt" / "orvan-companion";
    ASSERT_TRUE(Files::write(bundle / "Info.json", R"({"CFBundleIdentifier":")" ORVAN_BUNDLE_ID R"("})"));
    context_.running = bundle;
    context_.dpkgInfo = temp_.path() / "dpkg";
    ASSERT_TRUE(Files::write(context_.dpkgInfo / "orvan-companion.list", "/.\n" + (bundle / "Info.json").string() + "\n"));
    test::start(bridge_->installUpdate());
    EXPECT_EQ(bridge_->updateNote, UpdateWords::packaged);
    EXPECT_TRUE(tools_.calls.empty());
    // And a check tells that copy where the newer version comes from, without asking or a button.
    check(true);
    EXPECT_EQ(bridge_->updateNote,
              "Version 1.3 is ready. This copy came from the Debian package, so the package manager installs it.");
    EXPECT_FALSE(bridge_->updatePrompt);
    EXPECT_EQ(section().find("[Update]"), std::string::npos);
    EXPECT_FALSE(bridge_->readyRelease);

    // Unlisted, in place, but this copy has no release key: refused before any download.
    std::filesystem::remove(context_.dpkgInfo / "orvan-companion.list");
    check(true);
    ASSERT_EQ(bridge_->updateReady, "1.3");
    test::start(bridge_->installUpdate());
    EXPECT_EQ(bridge_->updateNote, UpdateCheck::unsignedCopy);
    EXPECT_FALSE(bridge_->updateBusy);
    for (const auto& entry : std::filesystem::directory_iterator(temp_.path()))
        EXPECT_EQ(entry.path().filename().string().find("orvan-companion-update-"), std::string::npos);
}

} // namespace
} // namespace orvan
