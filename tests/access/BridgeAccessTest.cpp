// The bridge model's grants and sharing in virtual time: what is remembered across launches, when
// the system is asked, the bar, the section and the menu.
#include "access/AccessStore.h"
#include "bridge/Bridge.h"
#include "bridge/MenuDesk.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeProcesses.h"
#include "fakes/TempFolder.h"
#include "foundation/Files.h"
#include "screen/ScreenSection.h"
#include "ui/TextCommands.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orvan {
namespace {

using test::Reply;
using S = AccessState;

struct Grants final : PrivacyGrants {
    std::map<AccessKind, bool> given;
    std::vector<AccessKind> asked, opened;
    bool allows(AccessKind kind) override { return given[kind]; }
    bool ask(AccessKind kind) override {
        asked.push_back(kind);
        return given[kind];
    }
    bool open(AccessKind kind, std::string& why) override {
        opened.push_back(kind);
        why = "none here";
        return false;
    }
};

struct Identity final : CodeIdentity {
    std::string id = "com.quillmere.orvan.companion";
    std::optional<std::string> signer;
    std::vector<std::string> before;
    std::string bundle() const override { return id; }
    std::optional<std::string> team() const override { return signer; }
    std::optional<std::string> requirement() const override { return std::nullopt; }
    std::vector<std::string> earlier() const override { return before; }
};

struct Panel final : SharingPanel {
    std::optional<SharingBarView> shown;
    void present(const SharingBarView& view) override { shown = view; }
    void dismiss() override { shown.reset(); }
};

std::string status(const std::string& screen) {
    return R"({"name":"Studio","on":true,"line":"Ready.","screen":)" + screen + "}";
}

class BridgeAccessTest : public testing::Test {
protected:
    void SetUp() override {
        env_ = {{"HOME", root_.string()}, {"XDG_DATA_HOME", (root_ / "share").string()},
                {"ORVAN_DIR", (root_ / "bridge").string()}};
        Files::write(root_ / "bridge" / "local.key", "k\n");
        setup_.environment = env_;
        setup_.grants = &grants_;
        setup_.identity = &identity_;
        setup_.activity = &activity_;
        setup_.program = "/opt/orvan/bin/orvan-companion";
        setup_.terminate = [this] { ++terminated_; };
        setup_.openFile = [this](const std::filesystem::path& file) { openedFiles_.push_back(file); };
        api_.on("GET", "/healthz", Reply::json(200, "ok"));
        screen(R"({"available":true,"on":true})");
        api_.on("POST", "/companion/screen", Reply::empty());
        api_.on("POST", "/companion/screen/stop", Reply::empty());
    }
    void screen(const std::string& screen) { api_.on("GET", "/companion/status", Reply::json(200, status(screen))); }
    // A new launch of the program over the same files.
    Bridge& launch() {
        bridge_.reset();
        bridge_ = std::make_unique<Bridge>(api_, clock_, processes_, setup_);
        bridge_->sharingBar.attach(&panel_);
        bridge_->start();
        settle();
        return *bridge_;
    }
    void settle() {
        for (int i = 0; i < 50 && clock_.step(); ++i) {
        }
    }
    template <class T> void run(Task<T> task) {
        auto started = test::start(std::move(task));
        while (!started.done() && clock_.step()) {
        }
    }
    AccessRecord stored() const { return AccessStore::read(env_); }
    std::string section() {
        tree_ = std::make_unique<ui::Node>(ScreenSection::build(*bridge_, {}));
        frame_ = ui::TextRenderer({.numbered = true}).frame(*tree_);
        return frame_.text;
    }
    static bool has(const std::string& text, const std::string& piece) { return text.find(piece) != std::string::npos; }

    test::TempFolder temp_;
    std::filesystem::path root_ = temp_.path();
    Environment env_;
    Grants grants_;
    Identity identity_;
    AppActivity activity_;
    Panel panel_;
    int terminated_ = 0;
    std::vector<std::filesystem::path> openedFiles_;
    BridgeSetup setup_;
    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    test::FakeProcesses processes_;
    std::unique_ptr<Bridge> bridge_;
    std::unique_ptr<ui::Node> tree_;
    ui::TextFrame frame_;
};

TEST_F(BridgeAccessTest, AskedComeBackReopenThenStaleInTheNextLaunch) {
    Bridge& first = launch();
    EXPECT_EQ(first.access, (std::map<AccessKind, S>{{AccessKind::screen, S::ask}, {AccessKind::input, S::ask}}));
    first.ask(AccessKind::screen);
    EXPECT_EQ(grants_.asked, std::vector<AccessKind>{AccessKind::screen});
    // Written before the system was asked, private to the user.
    EXPECT_EQ(stored().sent, (std::map<std::string, std::string>{{"screen", first.trail.launch}}));
    struct stat info {};
    ASSERT_EQ(::stat(AccessStore::file(env_).c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600);
    EXPECT_EQ(AccessStore::file(env_), root_ / "share" / "Orvan" / "permissions.json");

    activity_.setActive(false);
    activity_.setActive(true);
    EXPECT_EQ(first.access[AccessKind::screen], S::reopen);
    EXPECT_EQ(first.access[AccessKind::input], S::ask);
    EXPECT_TRUE(has(section(), "macOS applies it once the companion reopens"));
    EXPECT_TRUE(has(frame_.text, "[Quit and reopen Orvan Companion]"));

    // The next launch still lacks it: a leftover entry.
    Bridge& second = launch();
    EXPECT_EQ(second.access[AccessKind::screen], S::stale);
    std::string text = section();
    EXPECT_TRUE(has(text, "Still not allowed after reopening.")) << text;
    EXPECT_TRUE(has(text, "tccutil reset ScreenCapture com.quillmere.orvan.companion")) << text;
    EXPECT_TRUE(has(text, "[Open Screen Recording]")) << text;
    EXPECT_TRUE(has(text, "[Copy] (disabled)")) << text;
    // Leaving and coming back doesn't turn an earlier launch's asking into a reopen.
    activity_.setActive(false);
    activity_.setActive(true);
    EXPECT_EQ(second.access[AccessKind::screen], S::stale);

    // The grant appears: allowed, and the asking is forgotten on disk too.
    grants_.given[AccessKind::screen] = true;
    run(second.refresh());
    EXPECT_EQ(second.access[AccessKind::screen], S::allowed);
    EXPECT_EQ(stored().sent, (std::map<std::string, std::string>{}));
}

TEST_F(BridgeAccessTest, TheHelpersWordCountsOnlyWhileSharingIsOn) {
    grants_.given = {{AccessKind::screen, true}, {AccessKind::input, true}};
    screen(R"({"available":true,"on":false,"permissions":{"screen":false,"input":false}})");
    Bridge& bridge = launch();
    EXPECT_EQ(bridge.access[AccessKind::screen], S::allowed);
    EXPECT_FALSE(has(section(), "Screen Recording"));

    // On, with a bridge this program didn't start: the helper's refusal is that bridge's.
    screen(R"({"available":true,"on":true,"permissions":{"screen":false,"input":true}})");
    run(bridge.refresh());
    EXPECT_FALSE(bridge.startedByUs);
    EXPECT_EQ(bridge.access[AccessKind::screen], S::elsewhere);
    EXPECT_EQ(bridge.access[AccessKind::input], S::allowed);
    std::string text = section();
    EXPECT_TRUE(has(text, "Not allowed for that bridge")) << text;
    EXPECT_TRUE(has(text, "Orvan Companion did not start the bridge sharing this screen")) << text;
    ui::perform(frame_.controls, *ui::parseCommand("press \"Open Screen Recording\"").command);
    EXPECT_EQ(grants_.opened, std::vector<AccessKind>{AccessKind::screen});
}

TEST_F(BridgeAccessTest, AChangedIdentityIsToldUntilDismissedOrEverythingIsAllowed) {
    AccessStore::write(env_, AccessRecord{CompanionMark{"tulm.companion", std::nullopt, std::nullopt}, std::nullopt});
    Bridge& bridge = launch();
    EXPECT_EQ(bridge.accessNote.rfind("This version of Orvan Companion has a new bundle ID, "
                                      "com.quillmere.orvan.companion, in place of tulm.companion.",
                                      0),
              0u);
    // Kept old until dismissed: a quit now shows the note again.
    EXPECT_EQ(stored().mark->bundle, "tulm.companion");
    EXPECT_FALSE(launch().accessNote.empty());
    EXPECT_TRUE(has(section(), "[OK]"));
    ui::perform(frame_.controls, *ui::parseCommand("press OK").command);
    EXPECT_TRUE(bridge_->accessNote.empty());
    EXPECT_EQ(stored().mark->bundle, "com.quillmere.orvan.companion");
    EXPECT_TRUE(launch().accessNote.empty());

    // A signer appears: told again, and once every grant holds the note has said its piece.
    identity_.signer = "ABCDE12345";
    Bridge& signedNow = launch();
    EXPECT_EQ(signedNow.accessNote.rfind("This version of Orvan Companion is signed differently", 0), 0u);
    grants_.given = {{AccessKind::screen, true}, {AccessKind::input, true}};
    run(signedNow.refresh());
    EXPECT_TRUE(signedNow.accessNote.empty());
    EXPECT_EQ(stored().mark->team, "ABCDE12345");
}

TEST_F(BridgeAccessTest, TurningSharingOnAsksOnlyAFirstTime) {
    screen(R"({"available":true,"on":false})");
    Bridge& bridge = launch();
    screen(R"({"available":true,"on":true})");
    run(bridge.setScreen(true));
    EXPECT_EQ(*api_.requestsTo("/companion/screen").back().body, R"({"on":true})");
    EXPECT_EQ(grants_.asked, std::vector<AccessKind>{AccessKind::screen});

    run(bridge.setScreen(false));
    EXPECT_EQ(grants_.asked.size(), 1u);
    // A leftover entry isn't asked for by turning sharing on: its own button says what to do.
    Bridge& next = launch();
    ASSERT_EQ(next.access[AccessKind::screen], S::stale);
    run(next.setScreen(true));
    EXPECT_EQ(grants_.asked.size(), 1u);
}

TEST_F(BridgeAccessTest, TheBarTheSectionAndTheMenuFollowWhoWatches) {
    Bridge& bridge = launch();
    EXPECT_FALSE(panel_.shown);
    EXPECT_TRUE(has(section(), "Nobody is watching."));
    EXPECT_FALSE(has(frame_.text, "[Stop]"));

    // A controller nobody lists as watching: the bar shows, the menu and the Stop button don't.
    screen(R"({"available":true,"on":true,"control":"Mara’s iPhone","phoneFirst":true})");
    run(bridge.refresh());
    ASSERT_TRUE(panel_.shown);
    EXPECT_EQ(panel_.shown->text, "Mara’s iPhone is controlling this Mac.");
    EXPECT_EQ(panel_.shown->detail, "Phone first: this Mac's own mouse and keyboard give way to Mara’s iPhone.");
    EXPECT_FALSE(has(section(), "[Stop]"));
    auto menu = ui::TextRenderer(ui::TextOptions{}).frame(MenuDesk::build(bridge, MenuContext{})).text;
    EXPECT_FALSE(has(menu, "Stop sharing the screen")) << menu;

    screen(R"({"available":true,"on":true,"watching":["Mara’s iPhone","Theo’s iPad"]})");
    run(bridge.refresh());
    EXPECT_EQ(panel_.shown->text, "Your screen is shared with Mara’s iPhone, Theo’s iPad.");
    EXPECT_FALSE(panel_.shown->detail);
    EXPECT_TRUE(has(section(), "Mara’s iPhone, Theo’s iPad are watching.")) << frame_.text;
    EXPECT_TRUE(has(frame_.text, "[Stop]"));
    menu = ui::TextRenderer(ui::TextOptions{}).frame(MenuDesk::build(bridge, MenuContext{})).text;
    EXPECT_TRUE(has(menu, "Your screen is shared")) << menu;
    EXPECT_TRUE(has(menu, "Stop sharing the screen")) << menu;

    // The bar's button: a POST with no body and no type, then the status that follows.
    screen(R"({"available":true,"on":true,"watching":[]})");
    panel_.shown->stop();
    settle();
    ASSERT_EQ(api_.count("/companion/screen/stop"), 1u);
    const auto stop = api_.requestsTo("/companion/screen/stop").front();
    EXPECT_EQ(stop.method, "POST");
    EXPECT_FALSE(stop.body);
    EXPECT_FALSE(stop.header("Content-Type"));
    EXPECT_FALSE(panel_.shown);
    EXPECT_TRUE(has(section(), "Nobody is watching."));

    // Gone with the model, the button does nothing.
    screen(R"({"available":true,"on":true,"watching":["Mara’s iPhone"]})");
    run(bridge.refresh());
    auto stopLater = panel_.shown->stop;
    bridge_.reset();
    stopLater();
    settle();
    EXPECT_EQ(api_.count("/companion/screen/stop"), 1u);
}

TEST_F(BridgeAccessTest, TheLogOpensOnlyWhenTheBridgeWroteOne) {
    Bridge& bridge = launch();
    bridge.openScreenLog();
    EXPECT_TRUE(openedFiles_.empty());
    Files::write(root_ / "bridge" / "screen.log", "watched\n");
    bridge.openScreenLog();
    EXPECT_EQ(openedFiles_, std::vector<std::filesystem::path>{root_ / "bridge" / "screen.log"});
}

TEST_F(BridgeAccessTest, RelaunchHandsOverOrSaysItCouldNot) {
    processes_.failLaunch = true;
    Bridge& bridge = launch();
    bridge.relaunch();
    EXPECT_EQ(bridge.relaunchNote,
              "Orvan Companion could not reopen itself. Quit it from the menu bar, then open it again.");
    EXPECT_EQ(terminated_, 0);
    EXPECT_FALSE(bridge.stopped);

    processes_.failLaunch = false;
    bridge.relaunch();
    EXPECT_TRUE(bridge.relaunchNote.empty());
    EXPECT_EQ(terminated_, 1);
    EXPECT_TRUE(bridge.stopped);
    const ChildSpec& script = processes_.launches.back().request;
    EXPECT_EQ(script.executable, "/bin/bash");
    ASSERT_EQ(script.arguments.size(), 5u); // an adopted bridge isn't waited for
    EXPECT_EQ(script.arguments[3], "/opt/orvan/bin/orvan-companion");
    EXPECT_EQ(script.arguments[4], std::to_string(::getpid()));
}

} // namespace
} // namespace orvan
