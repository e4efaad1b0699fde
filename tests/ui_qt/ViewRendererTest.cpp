#include "QtTestApp.h"

#include "ui/qt/ViewRenderer.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace orvan;
using orvan::testing::pressKey;
using orvan::testing::settle;
using orvan::testing::typeText;

namespace {

class Renderer : public ::testing::Test {
protected:
    void SetUp() override {
        orvan::testing::qtApp();
        window = std::make_unique<QWidget>();
        auto* layout = new QVBoxLayout(window.get());
        container = new QWidget(window.get());
        layout->addWidget(container);
        dispatcher = std::make_shared<ui::qt::ActionDispatcher>();
        renderer = std::make_unique<ui::qt::ViewRenderer>(container, dispatcher);
        window->resize(600, 400);
        window->show();
        QApplication::setActiveWindow(window.get());
        settle();
    }
    void TearDown() override {
        renderer.reset();
        window.reset();
        settle();
    }

    template <class T> std::vector<T*> visible() const {
        std::vector<T*> found;
        for (T* widget : window->findChildren<T*>())
            if (widget->isVisible()) found.push_back(widget);
        return found;
    }

    std::unique_ptr<QWidget> window;
    QWidget* container = nullptr;
    std::shared_ptr<ui::qt::ActionDispatcher> dispatcher;
    std::unique_ptr<ui::qt::ViewRenderer> renderer;
};

// A rename row as the main window draws it, with a model that may lag behind the keyboard or
// replace the draft on its own.
struct FieldCase {
    const char* name;
    bool modelFollowsTyping; // the view state takes each on-change at once
    std::string modelSetsTo; // after typing, the model replaces the draft ("" for no change)
    std::string expectText;
    bool expectSelectionKept;
};

class FieldSurvives : public Renderer, public ::testing::WithParamInterface<FieldCase> {};

TEST_P(FieldSurvives, ReRendersWhileTyping) {
    const FieldCase& c = GetParam();
    std::string draft = "Studio";
    int changes = 0;
    auto typed = [&](const std::string& text) { ++changes, draft = c.modelFollowsTyping ? text : draft; };
    auto view = [&] {
        return ui::section("Name", {ui::row("", {ui::field("rename", "", draft, typed).placeholder("Name this Mac"),
                                                 ui::button("Save", [] {}), ui::button("Cancel", [] {})}),
                                    ui::text("Your iPhone uses this name.")});
    };
    renderer->render(view());
    auto* edit = qobject_cast<QLineEdit*>(renderer->widgetForKey("rename"));
    ASSERT_NE(edit, nullptr);
    edit->setFocus(Qt::OtherFocusReason);
    ASSERT_TRUE(edit->hasFocus());
    edit->end(false);
    typeText(edit, " Mac");
    EXPECT_EQ(changes, 4);
    edit->setSelection(2, 3);

    if (!c.modelSetsTo.empty()) draft = c.modelSetsTo;
    for (int poll = 0; poll < 5; ++poll) renderer->render(view());
    settle();

    EXPECT_EQ(renderer->widgetForKey("rename"), edit) << "the field was rebuilt";
    EXPECT_TRUE(edit->hasFocus());
    EXPECT_EQ(edit->text().toStdString(), c.expectText);
    if (c.expectSelectionKept) {
        EXPECT_EQ(edit->selectionStart(), 2);
        EXPECT_EQ(edit->selectedText(), QStringLiteral("udi"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Models, FieldSurvives,
    ::testing::Values(FieldCase{"ModelFollows", true, "", "Studio Mac", true}, FieldCase{"ModelLagsBehind", false, "", "Studio Mac", true},
                      FieldCase{"ModelClearsTheDraft", true, "Office", "Office", false}),
    [](const ::testing::TestParamInfo<FieldCase>& info) { return std::string(info.param.name); });

// A model that lags shows its older drafts one by one while the user has already typed further;
// none of those echoes may replace what is in the field.
TEST_F(Renderer, LaggingEchoesDoNotRewindTheField) {
    std::string draft;
    std::vector<std::string> queued;
    auto view = [&] { return ui::field("name", "Name", draft, [&](const std::string& t) { queued.push_back(t); }); };
    renderer->render(view());
    auto* edit = qobject_cast<QLineEdit*>(renderer->widgetForKey("name"));
    ASSERT_NE(edit, nullptr);
    edit->setFocus(Qt::OtherFocusReason);
    typeText(edit, "abc");
    ASSERT_EQ(queued.size(), 3u);
    for (const auto& echo : queued) {
        draft = echo;
        renderer->render(view());
        EXPECT_EQ(edit->text(), QStringLiteral("abc")) << "after the echo of " << echo;
        EXPECT_EQ(edit->cursorPosition(), 3);
    }
}

struct Reorder {
    const char* name;
    std::vector<std::string> before;
    std::vector<std::string> after;
};

class KeyedRows : public Renderer, public ::testing::WithParamInterface<Reorder> {};

TEST_P(KeyedRows, KeepTheirWidgets) {
    const Reorder& c = GetParam();
    auto view = [](const std::vector<std::string>& ids) {
        ui::Nodes rows;
        for (const auto& id : ids)
            rows.push_back(ui::row("Phone " + id, "member", {ui::button("Remove", [] {})}).key(id));
        return ui::section("Phones", std::move(rows));
    };
    renderer->render(view(c.before));
    std::map<std::string, QPointer<QWidget>> first;
    for (const auto& id : c.before) first[id] = renderer->widgetForKey(id);
    renderer->render(view(c.after));
    settle();

    for (std::size_t i = 0; i < c.after.size(); ++i) {
        QWidget* now = renderer->widgetForKey(c.after[i]);
        ASSERT_NE(now, nullptr);
        if (first.count(c.after[i])) EXPECT_EQ(now, first[c.after[i]]) << c.after[i] << " was rebuilt";
        EXPECT_EQ(now->parentWidget()->layout()->indexOf(now), static_cast<int>(i)) << c.after[i] << " stands in the wrong place";
        EXPECT_TRUE(now->isVisible());
        ASSERT_NE(now->findChild<QLabel*>(), nullptr);
        EXPECT_EQ(now->findChild<QLabel*>()->text().toStdString(), "Phone " + c.after[i]);
    }
    // Rows that left the tree are gone, not hidden somewhere.
    for (auto& [id, widget] : first) {
        const bool stays = std::find(c.after.begin(), c.after.end(), id) != c.after.end();
        EXPECT_EQ(!widget.isNull(), stays) << id;
        if (!stays) EXPECT_EQ(renderer->widgetForKey(id), nullptr) << id;
    }

    // Tab moves through the rows in their new order.
    std::vector<QWidget*> buttons;
    for (const auto& id : c.after) buttons.push_back(renderer->widgetForKey(id)->findChild<QPushButton*>());
    for (std::size_t i = 1; i < buttons.size(); ++i) {
        QWidget* next = buttons[i - 1]->nextInFocusChain();
        while (next && !(next->focusPolicy() & Qt::TabFocus)) next = next->nextInFocusChain();
        EXPECT_EQ(next, buttons[i]) << "after " << c.after[i - 1];
    }
}

INSTANTIATE_TEST_SUITE_P(Lists, KeyedRows,
                         ::testing::Values(Reorder{"Reversed", {"a", "b", "c"}, {"c", "b", "a"}},
                                           Reorder{"Rotated", {"a", "b", "c", "d"}, {"b", "c", "d", "a"}},
                                           Reorder{"OneRemoved", {"a", "b", "c"}, {"a", "c"}}, Reorder{"OneAddedInFront", {"a", "b"}, {"z", "a", "b"}},
                                           Reorder{"Replaced", {"a", "b"}, {"x", "y"}}),
                         [](const ::testing::TestParamInfo<Reorder>& info) { return std::string(info.param.name); });

TEST_F(Renderer, ButtonFollowsTheTreeAndCallsTheLatestClosure) {
    const struct {
        bool enabled;
        std::string help, title;
    } states[] = {{true, "Looks for a newer version now.", "Check now"}, {false, "Busy checking.", "Check now"},
                  {true, "", "Checking & more"}, {false, "", "Check now"}, {true, "", "Go"}};
    QPushButton* first = nullptr;
    std::vector<std::string> calls;
    for (const auto& s : states) {
        renderer->render(ui::button(s.title, [&] { calls.push_back(s.title); }).enabled(s.enabled).help(s.help).key("check"));
        auto* button = qobject_cast<QPushButton*>(renderer->widgetForKey("check"));
        ASSERT_NE(button, nullptr);
        EXPECT_EQ(button, first = first ? first : button);
        EXPECT_EQ(button->isEnabled(), s.enabled);
        EXPECT_EQ(button->toolTip().toStdString(), s.help);
        EXPECT_EQ(button->accessibleDescription().toStdString(), s.help);
        // A literal '&' is shown, not taken as a mnemonic.
        EXPECT_EQ(button->text().replace("&&", "&").toStdString(), s.title);
    }
    first->click();
    EXPECT_EQ(calls, std::vector<std::string>{"Go"});
}

// The answer pressed, "Escape", or "" when the model moves on while the box is open.
struct ConfirmCase {
    const char* name;
    std::string press;
    std::vector<std::string> expected;
};

class Confirmation : public Renderer, public ::testing::WithParamInterface<ConfirmCase> {};

TEST_P(Confirmation, ButtonsCallTheirClosures) {
    const ConfirmCase& c = GetParam();
    std::vector<std::string> calls;
    bool asking = true;
    auto answer = [&](const char* what) { return [&, what] { calls.push_back(what); asking = false; }; };
    auto view = [&] {
        return ui::section("Phones", {ui::row("Ann's iPhone", {ui::button("Remove", [&] { asking = true; })}),
                                      ui::when(asking, ui::confirmation("Remove this iPhone?", "It can join again with a new invite.",
                                                                        {ui::button("Remove", answer("remove")).role(ui::Role::Destructive),
                                                                         ui::button("Cancel", answer("cancel")).role(ui::Role::Cancel)}))});
    };
    renderer->render(view());
    renderer->render(view()); // a poll in between does not open a second box
    settle();
    auto boxes = visible<QMessageBox>();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0]->text(), QStringLiteral("Remove this iPhone?"));
    EXPECT_EQ(boxes[0]->informativeText(), QStringLiteral("It can join again with a new invite."));
    if (c.press == "Escape") pressKey(boxes[0], Qt::Key_Escape);
    if (c.press.empty()) asking = false;
    for (auto* button : boxes[0]->buttons())
        if (button->text().toStdString() == c.press) button->click();
    settle();
    EXPECT_EQ(calls, c.expected);
    renderer->render(view());
    settle();
    EXPECT_TRUE(visible<QMessageBox>().empty());
    EXPECT_EQ(calls, c.expected);
}

INSTANTIATE_TEST_SUITE_P(Answers, Confirmation,
                         ::testing::Values(ConfirmCase{"Remove", "Remove", {"remove"}}, ConfirmCase{"Cancel", "Cancel", {"cancel"}},
                                           ConfirmCase{"Escape", "Escape", {"cancel"}}, ConfirmCase{"ModelMovesOn", "", {}}),
                         [](const ::testing::TestParamInfo<ConfirmCase>& info) { return std::string(info.param.name); });

TEST_F(Renderer, SwitchReportsTheUsersChoiceAndFollowsTheModel) {
    bool on = false;
    std::vector<bool> asked;
    bool modelAgrees = true;
    auto view = [&] {
        return ui::toggle("Remote control", on, [&](bool wanted) { asked.push_back(wanted), on = modelAgrees ? wanted : on; })
            .key("remote");
    };
    renderer->render(view());
    auto* box = qobject_cast<QCheckBox*>(renderer->widgetForKey("remote"));
    ASSERT_NE(box, nullptr);
    box->click();
    renderer->render(view());
    EXPECT_EQ(asked, std::vector<bool>{true});
    EXPECT_TRUE(box->isChecked());

    modelAgrees = false;
    box->click();
    EXPECT_FALSE(box->isChecked()); // what the user did, until the tree says otherwise
    renderer->render(view());
    EXPECT_EQ(asked, (std::vector<bool>{true, false}));
    EXPECT_TRUE(box->isChecked()) << "a refused switch must return to the model's state";
}

class Picker : public Renderer, public ::testing::WithParamInterface<ui::PickerStyle> {};

TEST_P(Picker, ChoiceCallsWithItsValueAndSelectionFollows) {
    std::string side = "left";
    std::vector<std::string> chosen;
    auto view = [&] {
        return ui::picker("Sidebar", {{"Left", "left"}, {"Right", "right"}}, side,
                          [&](const std::string& value) { chosen.push_back(value); })
            .label("Tulm's sidebar")
            .pickerAs(GetParam())
            .help("Which side of the Tulm desktop window its session sidebar sits on.")
            .key("side");
    };
    renderer->render(view());
    QWidget* holder = renderer->widgetForKey("side");
    ASSERT_NE(holder, nullptr);
    auto current = [&]() -> std::string {
        if (auto* combo = holder->findChild<QComboBox*>()) return combo->currentText().toStdString();
        for (auto* option : holder->findChildren<QAbstractButton*>())
            if (option->isChecked()) return option->text().toStdString();
        return "";
    };
    EXPECT_EQ(current(), "Left");

    if (auto* combo = holder->findChild<QComboBox*>()) combo->setCurrentIndex(1), emit combo->activated(1);
    for (auto* option : holder->findChildren<QAbstractButton*>())
        if (option->text() == QStringLiteral("Right")) option->click();
    EXPECT_EQ(chosen, std::vector<std::string>{"right"});

    side = "right";
    renderer->render(view());
    EXPECT_EQ(current(), "Right");
    EXPECT_EQ(renderer->widgetForKey("side"), holder);
}

INSTANTIATE_TEST_SUITE_P(Styles, Picker,
                         ::testing::Values(ui::PickerStyle::Segmented, ui::PickerStyle::Menu, ui::PickerStyle::Radio));

TEST_F(Renderer, SecureTextReachesNoDescription) {
    const std::string secret = "sk-live-123456";
    renderer->render(ui::section("Keys", {ui::secureField("key", "API key", secret, [](const std::string&) {})
                                              .help("Paste the key")}));
    auto* edit = qobject_cast<QLineEdit*>(renderer->widgetForKey("key"));
    ASSERT_NE(edit, nullptr);
    EXPECT_EQ(edit->echoMode(), QLineEdit::Password);
    EXPECT_NE(edit->displayText().toStdString(), secret);
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        for (const QString& words : {widget->toolTip(), widget->accessibleName(), widget->accessibleDescription(),
                                     widget->windowTitle(), widget->statusTip(), widget->whatsThis()})
            EXPECT_FALSE(words.contains(QStringLiteral("sk-live"))) << widget->metaObject()->className();
        if (auto* label = qobject_cast<QLabel*>(widget)) EXPECT_FALSE(label->text().contains(QStringLiteral("sk-live")));
    }
}

TEST_F(Renderer, SheetIsModalAndEscapeDismissesIt) {
    bool showing = true;
    int dismissed = 0;
    auto view = [&] {
        return ui::vstack({ui::text("Phones"), ui::when(showing, ui::sheet("Invite someone",
                                                                            {ui::text("Scan this code"), ui::button("Done", [&] { showing = false; })},
                                                                            [&] { ++dismissed, showing = false; }))});
    };
    renderer->render(view());
    settle();
    auto dialogs = visible<QDialog>();
    ASSERT_EQ(dialogs.size(), 1u);
    QDialog* sheet = dialogs[0];
    EXPECT_TRUE(sheet->isModal() || sheet->windowModality() != Qt::NonModal);
    EXPECT_EQ(sheet->windowTitle(), QStringLiteral("Invite someone"));
    ASSERT_NE(sheet->findChild<QPushButton*>(), nullptr);
    EXPECT_EQ(sheet->findChild<QPushButton*>()->text(), QStringLiteral("Done"));

    pressKey(sheet, Qt::Key_Escape);
    settle();
    EXPECT_EQ(dismissed, 1);
    renderer->render(view());
    settle();
    EXPECT_TRUE(visible<QDialog>().empty());

    // Closed by the model (its own button), the sheet goes without a dismissal.
    showing = true;
    renderer->render(view());
    settle();
    ASSERT_EQ(visible<QDialog>().size(), 1u);
    visible<QDialog>()[0]->findChild<QPushButton*>()->click();
    renderer->render(view());
    settle();
    EXPECT_TRUE(visible<QDialog>().empty());
    EXPECT_EQ(dismissed, 1);
}

// A closure that arrives while a render pass runs waits for the pass to end.
TEST(ActionDispatcher, HoldsActionsUntilTheRenderEnds) {
    auto dispatcher = std::make_shared<ui::qt::ActionDispatcher>();
    std::vector<std::string> log;
    dispatcher->setAfterAction([&] { log.push_back("render asked"); });
    dispatcher->beginRender();
    dispatcher->beginRender();
    dispatcher->run([&] { log.push_back("action"); });
    dispatcher->endRender();
    EXPECT_TRUE(log.empty());
    dispatcher->endRender();
    EXPECT_EQ(log, (std::vector<std::string>{"action", "render asked"}));
}

TEST_F(Renderer, KindChangeRebuildsButUnkeyedSiblingsStay) {
    bool busy = false;
    auto view = [&] {
        return ui::vstack({ui::text("Updates"), busy ? ui::spinner("Checking") : ui::button("Check now", [] {}),
                           ui::text("A newer release asks on its own.")});
    };
    renderer->render(view());
    auto* stack = renderer->rootWidget();
    const auto before = stack->findChildren<QLabel*>(Qt::FindDirectChildrenOnly);
    ASSERT_EQ(before.size(), 2);
    busy = true;
    renderer->render(view());
    settle();
    EXPECT_EQ(stack->findChildren<QLabel*>(Qt::FindDirectChildrenOnly), before);
    EXPECT_EQ(stack->findChildren<QPushButton*>().size(), 0u);
    EXPECT_EQ(renderer->rootWidget(), stack);
}

} // namespace
