// Direct-thread folders and the files-access stage: decoding, the bridge's answers in virtual
// time, and the two sections driven the way the text view drives them.
#include "access/FilesAccessModel.h"
#include "access/FilesSection.h"
#include "access/Folders.h"
#include "access/FoldersSection.h"
#include "access/ThreadFolders.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeDesktop.h"
#include "fakes/TempFolder.h"
#include "ui/TextCommands.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using test::Reply;
using Stage = FilesAccess::Stage;

struct Signer final : CodeIdentity {
    std::optional<std::string> signer;
    std::string bundle() const override { return "com.quillmere.orvan.companion"; }
    std::optional<std::string> team() const override { return signer; }
    std::optional<std::string> requirement() const override { return std::nullopt; }
    std::vector<std::string> earlier() const override { return {}; }
};

// Draws a tree and works one command on it, as the text view does.
struct Drawn {
    ui::Node tree;
    ui::TextFrame frame;
    explicit Drawn(ui::Node node) : tree(std::move(node)), frame(ui::TextRenderer({.numbered = true}).frame(tree)) {}
    std::string run(const std::string& line) { return ui::perform(frame.controls, *ui::parseCommand(line).command).answer; }
};

TEST(ThreadFoldersTest, ListTitleAndRemovalWords) {
    const struct {
        std::string body;
        std::optional<std::vector<ThreadFolder>> list;
    } cases[] = {
        {R"({"projects":[{"id":"a","name":"App","path":"/h/app"},{"name":"no id"},3,{"id":"b","name":7,"path":"/h/b/"}]})",
         std::vector<ThreadFolder>{{"a", "App", "/h/app"}, {"b", "", "/h/b/"}}},
        {R"({})", std::vector<ThreadFolder>{}},
        {R"({"projects":{}})", std::nullopt},
        {"[]", std::nullopt},
        {"nonsense", std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(ThreadFolders::list(c.body), c.list) << c.body;
    EXPECT_EQ(ThreadFolders::title({"b", "", "/h/b/"}), "b");
    EXPECT_EQ(ThreadFolders::title({"a", "App", "/h/app"}), "App");
    EXPECT_EQ(ThreadFolders::removal({"a", "App", "/h/app"}, "/h"),
              "Your iPhone stops offering App for new direct threads. The folder and its files stay, and so do the "
              "threads already in it.");
}

TEST(FilesAccessTest, StageRowsButtonAndNoteTables) {
    const FilesAsked asked{"TEAM123456", "com.quillmere.orvan.companion"};
    EXPECT_EQ(FilesAccess::stage("TEAM123456", asked.bundle, std::nullopt), Stage::notAsked);
    EXPECT_EQ(FilesAccess::stage("TEAM123456", asked.bundle, asked), Stage::asked);
    EXPECT_EQ(FilesAccess::stage(std::nullopt, asked.bundle, asked), Stage::askAgain);
    EXPECT_EQ(FilesAccess::stage("TEAM123456", "other.bundle", asked), Stage::askAgain);
    EXPECT_EQ(FilesAccess::stage(std::nullopt, "b", FilesAsked{"", "b"}), Stage::asked);

    using Report = std::optional<std::vector<FolderAccess>>;
    const Report allAllowed = FilesAccess::touched("/home/o");
    const Report mixed = std::vector<FolderAccess>{
        {"Downloads", "/home/o/Downloads", "allowed"}, {"Desktop", "", "refused"}, {"Documents", "", "missing"}};
    const Report odd = std::vector<FolderAccess>{{"Downloads", "", "weird"}};
    using B = FilesAccess::Button;
    const struct {
        Stage stage;
        Report answer;
        std::vector<std::string> states;
        B button;
        std::string note;
    } cases[] = {
        {Stage::notAsked, mixed, {"Not asked", "Not asked", "Not asked"}, B::ask, FilesAccess::about},
        {Stage::asked, allAllowed, {"Allowed", "Allowed", "Allowed"}, B::none, FilesAccess::allowed},
        {Stage::asked, mixed, {"Allowed", "Not allowed", "Not on this Mac"}, B::openSettings, FilesAccess::refusedNote},
        {Stage::asked, odd, {"Not known", "Not known", "Not known"}, B::none, FilesAccess::refusedNote},
        {Stage::askAgain, mixed, {"Allowed", "Not allowed", "Not on this Mac"}, B::askAgain, FilesAccess::againNote},
    };
    for (const auto& c : cases) {
        std::vector<std::string> states;
        for (const auto& row : FilesAccess::rows(c.stage, c.answer)) states.push_back(row.state);
        EXPECT_EQ(states, c.states);
        EXPECT_EQ(FilesAccess::button(c.stage, c.answer), c.button);
        EXPECT_EQ(FilesAccess::note(c.stage, c.answer), c.note);
    }
    EXPECT_EQ(allAllowed->at(2).path, "/home/o/Documents");
    EXPECT_EQ(FilesAccess::list(R"({"folders":[{"name":"Desktop","state":"allowed"},"x"]})"),
              Report(std::vector<FolderAccess>{{"Desktop", "", "allowed"}}));
}

class FoldersModelTest : public testing::Test {
protected:
    test::TempFolder temp_;
    test::FakeClock clock_;
    test::FakeBridge bridge_{clock_};
    Environment environment_{{"ORVAN_DIR", temp_.path().string()}};
};

TEST_F(FoldersModelTest, RefreshAddAndRemoveSayWhatFailed) {
    Folders folders(bridge_, environment_);
    bridge_.queue("GET", ThreadFolders::path, Reply::json(503, "{}"));
    test::start(folders.refresh());
    EXPECT_EQ(folders.note, "This Mac's bridge does not run direct threads.");
    EXPECT_FALSE(folders.loaded);
    bridge_.on("GET", ThreadFolders::path, Reply::json(200, R"({"projects":[{"id":"p1","path":"/w/site"}]})"));
    bridge_.on("POST", ThreadFolders::path, Reply::json(400, R"({"message":"That path is not a folder."})"));
    bridge_.on("POST", ThreadFolders::removePath, Reply::failure());
    test::start(folders.add("/nope"));
    auto posted = [&](const std::string& path) {
        for (const auto& r : bridge_.requestsTo(path))
            if (r.method == "POST") return Json::parse(*r.body);
        return Json();
    };
    EXPECT_EQ(posted(ThreadFolders::path), Json::parse(R"({"path":"/nope"})"));
    EXPECT_EQ(folders.note, "That path is not a folder.");
    EXPECT_TRUE(folders.loaded);
    ASSERT_EQ(folders.list.size(), 1u);
    test::start(folders.remove("p1"));
    EXPECT_EQ(posted(ThreadFolders::removePath), Json::parse(R"({"id":"p1"})"));
    EXPECT_EQ(folders.note, "That folder was not removed.");
    EXPECT_FALSE(folders.busy);
    // A later read that fails keeps the last good list.
    bridge_.queue("GET", ThreadFolders::path, Reply::json(200, "garbage"));
    test::start(folders.refresh());
    EXPECT_EQ(folders.list.size(), 1u);
}

TEST_F(FoldersModelTest, SectionAddsATypedPathAndAsksBeforeRemoving) {
    Folders folders(bridge_, environment_);
    std::vector<std::string> paths;
    bridge_.on("POST", ThreadFolders::path, [&](const HttpRequest& r) {
        paths.push_back(Json::parse(*r.body)["path"]);
        return Reply::empty(204);
    });
    bridge_.on("POST", ThreadFolders::removePath, Reply::empty(204));
    bridge_.on("GET", ThreadFolders::path, Reply::json(200, R"({"projects":[{"id":"p1","name":"Site","path":"/w/site"}]})"));
    AccessViewState state;
    NoFilePicker none;
    Drawn typed(FoldersSection::build(folders, &none, state, "/w", {}));
    typed.run("type \"Folder path\" /w/site");
    EXPECT_EQ(state.typedFolder, "/w/site");
    Drawn add(FoldersSection::build(folders, &none, state, "/w", {}));
    add.run("press \"Add a folder…\"");
    EXPECT_EQ(paths, std::vector<std::string>{"/w/site"});
    EXPECT_TRUE(state.typedFolder.empty());

    test::FakeFilePicker picker;
    picker.answers.push_back(std::filesystem::path("/w/other"));
    Drawn chooser(FoldersSection::build(folders, &picker, state, "/w", {}));
    EXPECT_EQ(chooser.frame.text.find(ThreadFolders::pathField), std::string::npos);
    chooser.run("press \"Add a folder…\"");
    ASSERT_EQ(picker.asked.size(), 1u);
    EXPECT_EQ(picker.asked[0].kind, FileChoice::Kind::folder);
    EXPECT_EQ(picker.asked[0].message, "Choose a folder your iPhone can start a direct thread in.");
    EXPECT_EQ(paths.back(), "/w/other");

    Drawn listed(FoldersSection::build(folders, &picker, state, "/w", {}));
    listed.run("press Remove");
    ASSERT_TRUE(state.removing);
    EXPECT_EQ(bridge_.count(ThreadFolders::removePath), 0u);
    Drawn asking(FoldersSection::build(folders, &picker, state, "/w", {}));
    EXPECT_NE(asking.frame.text.find("Remove this folder?"), std::string::npos);
    asking.run("press Cancel");
    EXPECT_FALSE(state.removing);
    EXPECT_EQ(bridge_.count(ThreadFolders::removePath), 0u);
}

TEST_F(FoldersModelTest, FilesAccessAsksEachFolderThenRemembersWhoAsked) {
    auto defaults = UserDefaults::at(temp_.path() / "defaults.json");
    Signer signer;
    signer.signer = "TEAM123456";
    test::FakeDesktop desktop;
    FilesAccessModel model(bridge_, {environment_, defaults, &signer, &desktop, "/home/o"});
    test::start(model.load());
    EXPECT_EQ(model.stage, Stage::notAsked);
    EXPECT_EQ(bridge_.count(FilesAccess::path), 0u);

    // An older bridge has no report: what was opened here stands in.
    bridge_.queue("GET", FilesAccess::path, Reply::json(404, "{}").after(std::chrono::seconds(3)));
    auto asking = test::start(model.ask());
    EXPECT_EQ(model.note, FilesAccess::asking);
    EXPECT_TRUE(model.busy);
    clock_.advance(std::chrono::seconds(3));
    ASSERT_TRUE(asking.done());
    EXPECT_EQ(desktop.opened, (std::vector<std::string>{"folder /home/o/Downloads", "folder /home/o/Desktop",
                                                         "folder /home/o/Documents"}));
    EXPECT_EQ(model.stage, Stage::asked);
    EXPECT_EQ(model.answer, FilesAccess::touched("/home/o"));
    EXPECT_FALSE(model.busy);
    EXPECT_EQ(FilesAsked::load(*defaults), (FilesAsked{"TEAM123456", "com.quillmere.orvan.companion"}));

    // Another signer: ask again, still reading the report; a failed read changes nothing.
    signer.signer.reset();
    bridge_.on("GET", FilesAccess::path, Reply::json(200, R"({"folders":[{"name":"Desktop","state":"refused"}]})"));
    FilesAccessModel next(bridge_, {environment_, defaults, &signer, &desktop, "/home/o"});
    test::start(next.load());
    EXPECT_EQ(next.stage, Stage::askAgain);
    ASSERT_TRUE(next.answer);
    EXPECT_EQ(next.answer->at(0).state, "refused");
    bridge_.queue("GET", FilesAccess::path, Reply::failure());
    test::start(next.check());
    EXPECT_EQ(next.answer->at(0).state, "refused");

    AccessViewState state;
    Drawn section(FilesSection::build(next, state, {}));
    EXPECT_NE(section.frame.text.find("Ask again"), std::string::npos);
    section.run("press \"Full Disk Access…\"");
    Drawn confirm(FilesSection::build(next, state, {}));
    confirm.run("press \"Open System Settings\"");
    EXPECT_EQ(desktop.opened.back(), std::string("url ") + FilesAccess::fullDisk);
    EXPECT_FALSE(state.confirmingFullDisk);
}

} // namespace
} // namespace orvan
