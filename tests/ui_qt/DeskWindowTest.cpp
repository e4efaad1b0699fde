// The main window as the owner uses it: the real view, drawn by the Qt renderer in a real window,
// driven with clicks and keys, over a bridge that records what it is sent.
#include "QtTestApp.h"

#include "appearance/ThemeStore.h"
#include "bridge/DeskView.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeProcesses.h"
#include "fakes/TempFolder.h"
#include "foundation/Files.h"
#include "ui/qt/WindowHost.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <gtest/gtest.h>

using namespace orvan;
using orvan::testing::keyClick;
using orvan::testing::settle;
using orvan::testing::typeText;

namespace {

struct RenameCase {
    const char* name;
    const char* finish; // "Save", "Cancel" or "Escape"
    const char* shownAfter;
    bool sent;
};

class DeskRename : public ::testing::TestWithParam<RenameCase> {
protected:
    void SetUp() override {
        orvan::testing::qtApp();
        Files::write(temp_.path() / "data" / "local.key", "sekrit\n");
        setup_.environment = {{"HOME", temp_.path().string()}, {"ORVAN_DIR", (temp_.path() / "data").string()}};
        bridge_.ready = true;
        bridge_.on = true;
        bridge_.name = "Studio";
        api_.on("POST", "/companion/name", test::Reply::empty(204));
        api_.on("GET", "/companion/status",
                test::Reply::json(200, R"({"name":"Studio Mac","on":true,"line":"Ready for your phone."})"));
        context_.changed = [this] { host_->requestRender(); };
        host_ = std::make_unique<ui::qt::WindowHost>(
            ui::qt::WindowSetup{.id = "desk", .title = "Remote control", .minimumSize = {640, 780},
                                 .defaultSize = {760, 920}, .defaults = nullptr},
            [this] { return DeskView::build(bridge_, state_, clock_.now(), context_); });
        host_->show();
        QApplication::setActiveWindow(host_->window());
        settle();
    }
    void TearDown() override {
        host_.reset();
        settle();
    }
    template <class T> T* keyed(const std::string& key) { return qobject_cast<T*>(host_->renderer().widgetForKey(key)); }
    QPushButton* button(const QString& title) {
        for (auto* b : host_->window()->findChildren<QPushButton*>())
            if (b->isVisible() && b->text() == title) return b;
        return nullptr;
    }

    test::TempFolder temp_;
    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    test::FakeProcesses processes_;
    BridgeSetup setup_;
    Bridge bridge_{api_, clock_, processes_, setup_};
    DeskState state_;
    DeskContext context_;
    std::unique_ptr<ui::qt::WindowHost> host_;
};

TEST_P(DeskRename, TypingGoesToTheNameAndSaveOrCancelClosesTheField) {
    const RenameCase& c = GetParam();
    auto* remote = keyed<QCheckBox>("remote");
    ASSERT_NE(remote, nullptr);
    remote->setFocus(Qt::TabFocusReason); // the owner came to Rename from the switch
    ASSERT_TRUE(remote->hasFocus());
    ASSERT_NE(button("Rename"), nullptr);
    button("Rename")->click();
    settle();

    auto* field = keyed<QLineEdit>("desk.name");
    ASSERT_NE(field, nullptr);
    EXPECT_TRUE(field->hasFocus()) << "the field the owner asked for takes the keys";
    EXPECT_EQ(field->selectedText().toStdString(), "Studio");
    typeText(QApplication::focusWidget(), QStringLiteral("Studio Mac"));
    EXPECT_EQ(field->text().toStdString(), "Studio Mac");
    EXPECT_TRUE(remote->isChecked()) << "the space reached the switch";
    EXPECT_EQ(api_.count("/companion/remote"), 0u);

    if (std::string(c.finish) == "Escape") keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    else if (QPushButton* finish = button(QString::fromLatin1(c.finish))) finish->click();
    else FAIL() << "no " << c.finish << " button";
    settle();

    EXPECT_EQ(keyed<QLineEdit>("desk.name"), nullptr) << "the field stays open";
    auto* row = host_->renderer().widgetForKey("name");
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->findChild<QLabel*>()->text().toStdString(), c.shownAfter);
    const auto sent = api_.requestsTo("/companion/name");
    ASSERT_EQ(sent.size(), c.sent ? 1u : 0u);
    if (c.sent) EXPECT_EQ(Json::parse(sent[0].body.value_or("")), (Json{{"name", "Studio Mac"}}));
    EXPECT_TRUE(remote->isChecked());
}

// The whole window, Appearance swatches and all: a poll with nothing new redraws nothing.
TEST_F(DeskRename, UnchangedPollsTouchNoWidget) {
    ThemeStore themes(UserDefaults::at(temp_.path() / "defaults.json"));
    context_.themes = &themes;
    host_->renderNow();
    // A first show lays out over several turns (wrapped words ask for height again); let it end.
    for (int i = 0; i < 5; ++i) settle();
    orvan::testing::WidgetChanges changes;
    for (int i = 0; i < 3; ++i) host_->renderNow();
    settle();
    EXPECT_EQ(changes.seen(), "");
}

INSTANTIATE_TEST_SUITE_P(Finish, DeskRename,
                         ::testing::Values(RenameCase{"Save", "Save", "Studio Mac", true},
                                           RenameCase{"Cancel", "Cancel", "Studio", false},
                                           RenameCase{"Escape", "Escape", "Studio", false}),
                         orvan::testing::byName<RenameCase>);

} // namespace
