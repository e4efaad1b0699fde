#include "QtTestApp.h"

#include "ui/qt/ViewRenderer.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <map>
#include <memory>

using namespace orvan;
using orvan::testing::byName;
using orvan::testing::pressKey;
using orvan::testing::settle;
using orvan::testing::typeText;

namespace {

class Renderer : public ::testing::Test {
protected:
    void SetUp() override {
        orvan::testing::qtApp();
        window = std::make_unique<QWidget>();
        auto* container = new QWidget(window.get());
        (new QVBoxLayout(window.get()))->addWidget(container);
        renderer =
            std::make_unique<ui::qt::ViewRenderer>(container, std::make_shared<ui::qt::ActionDispatcher>());
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
    std::unique_ptr<ui::qt::ViewRenderer> renderer;
};

// A rename row as the main window draws it, with a model that follows the keyboard, ignores it,
// echoes its older drafts late one by one, or replaces the draft on its own ("" for no change).
enum class Model { Follows, Ignores, EchoesLate };
struct FieldCase {
    const char* name;
    Model model;
    std::string setsTo;
    std::string expectText;
};

class FieldSurvives : public Renderer, public ::testing::WithParamInterface<FieldCase> {};

TEST_P(FieldSurvives, ReRendersWhileTyping) {
    const FieldCase& c = GetParam();
    std::string draft = "Studio";
    std::vector<std::string> echoes;
    auto typed = [&](const std::string& text) {
        echoes.push_back(text), draft = c.model == Model::Follows ? text : draft;
    };
    auto view = [&] {
        return ui::section("Name",
                           {ui::row("", {ui::field("rename", "", draft, typed).placeholder("Name this Mac"),
                                         ui::button("Save", [] {}), ui::button("Cancel", [] {})})});
    };
    renderer->render(view());
    auto* edit = qobject_cast<QLineEdit*>(renderer->widgetForKey("rename"));
    ASSERT_NE(edit, nullptr);
    edit->setFocus(Qt::OtherFocusReason);
    ASSERT_TRUE(edit->hasFocus());
    edit->end(false);
    typeText(edit, " Mac");
    ASSERT_EQ(echoes.size(), 4u);
    edit->setSelection(2, 3);

    if (!c.setsTo.empty()) draft = c.setsTo;
    const auto drafts = c.model == Model::EchoesLate ? echoes : std::vector<std::string>(5, draft);
    for (const auto& poll : drafts) {
        draft = poll;
        renderer->render(view());
        EXPECT_EQ(edit->text().toStdString(), c.expectText) << "after rendering " << poll;
    }
    settle();
    EXPECT_EQ(renderer->widgetForKey("rename"), edit) << "the field was rebuilt";
    EXPECT_TRUE(edit->hasFocus());
    if (c.setsTo.empty()) {
        EXPECT_EQ(edit->selectionStart(), 2);
        EXPECT_EQ(edit->selectedText(), QStringLiteral("udi"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Models, FieldSurvives,
    ::testing::Values(FieldCase{"ModelFollows", Model::Follows, "", "Studio Mac"},
                      FieldCase{"ModelLagsBehind", Model::Ignores, "", "Studio Mac"},
                      FieldCase{"LaggingEchoesDoNotRewindIt", Model::EchoesLate, "", "Studio Mac"},
                      FieldCase{"ModelClearsTheDraft", Model::Follows, "Office", "Office"}),
    byName<FieldCase>);

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
    for (const auto& id : c.before)
        first[id] = renderer->widgetForKey(id);
    renderer->render(view(c.after));
    settle();

    for (std::size_t i = 0; i < c.after.size(); ++i) {
        QWidget* now = renderer->widgetForKey(c.after[i]);
        ASSERT_NE(now, nullptr);
        if (first.count(c.after[i])) EXPECT_EQ(now, first[c.after[i]]) << c.after[i] << " was rebuilt";
        EXPECT_EQ(now->parentWidget()->layout()->indexOf(now), static_cast<int>(i))
            << c.after[i] << " misplaced";
        EXPECT_TRUE(now->isVisible());
        auto* label = now->findChild<QLabel*>();
        EXPECT_EQ(label ? label->text().toStdString() : "", "Phone " + c.after[i]);
    }
    // Rows that left the tree are gone, not hidden somewhere.
    for (auto& [id, widget] : first) {
        const bool stays = std::find(c.after.begin(), c.after.end(), id) != c.after.end();
        EXPECT_EQ(!widget.isNull(), stays) << id;
        if (!stays) EXPECT_EQ(renderer->widgetForKey(id), nullptr) << id;
    }

    // Tab moves through the rows in their new order.
    std::vector<QWidget*> buttons;
    for (const auto& id : c.after)
        buttons.push_back(renderer->widgetForKey(id)->findChild<QPushButton*>());
    for (std::size_t i = 1; i < buttons.size(); ++i) {
        QWidget* next = buttons[i - 1]->nextInFocusChain();
        while (next && !(next->focusPolicy() & Qt::TabFocus))
            next = next->nextInFocusChain();
        EXPECT_EQ(next, buttons[i]) << "after " << c.after[i - 1];
    }
}

INSTANTIATE_TEST_SUITE_P(Lists, KeyedRows,
                         ::testing::Values(Reorder{"Reversed", {"a", "b", "c"}, {"c", "b", "a"}},
                                           Reorder{"Rotated", {"a", "b", "c", "d"}, {"b", "c", "d", "a"}},
                                           Reorder{"OneRemoved", {"a", "b", "c"}, {"a", "c"}},
                                           Reorder{"OneAddedInFront", {"a", "b"}, {"z", "a", "b"}},
                                           Reorder{"Replaced", {"a", "b"}, {"x", "y"}}),
                         byName<Reorder>);

TEST_F(Renderer, ButtonFollowsTheTreeAndCallsTheLatestClosure) {
    const struct {
        bool enabled;
        std::string help, title;
    } states[] = {{true, "Looks for a newer version now.", "Check now"},
                  {false, "Busy checking.", "Check now"},
                  {true, "", "Checking & more"},
                  {false, "", "Check now"},
                  {true, "", "Go"}};
    QPushButton* first = nullptr;
    std::vector<std::string> calls;
    for (const auto& s : states) {
        renderer->render(ui::button(s.title, [&] { calls.push_back(s.title); })
                             .enabled(s.enabled)
                             .help(s.help)
                             .key("check"));
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

// A confirmation or a sheet, answered by the button pressed, "Escape", or "" when the model moves on
// while it is open. Each answer is called once, the box closes with the model and opens again with it.
struct ModalCase {
    const char* name;
    bool sheet;
    std::string press;
    std::vector<std::string> expected;
};

class Modal : public Renderer, public ::testing::WithParamInterface<ModalCase> {};

TEST_P(Modal, AnswersCallTheirClosuresAndTheModelClosesIt) {
    const ModalCase& c = GetParam();
    std::vector<std::string> calls;
    bool asking = true;
    auto answer = [&](const char* what) { return [&, what] { calls.push_back(what), asking = false; }; };
    auto modal = [&] {
        if (c.sheet)
            return ui::sheet("Invite someone",
                             {ui::text("Scan this code"), ui::button("Done", answer("done"))},
                             answer("dismissed"));
        return ui::confirmation("Remove this iPhone?", "It can join again with a new invite.",
                                {ui::button("Remove", answer("remove")).role(ui::Role::Destructive),
                                 ui::button("Cancel", answer("cancel")).role(ui::Role::Cancel)});
    };
    auto view = [&] { return ui::section("Phones", {ui::text("Ann's iPhone"), ui::when(asking, modal())}); };
    renderer->render(view());
    renderer->render(view()); // a poll in between does not open a second box
    settle();
    auto boxes = visible<QDialog>();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_TRUE(boxes[0]->isModal() || boxes[0]->windowModality() != Qt::NonModal);
    if (auto* message = qobject_cast<QMessageBox*>(boxes[0])) {
        EXPECT_FALSE(c.sheet);
        EXPECT_EQ(message->text(), QStringLiteral("Remove this iPhone?"));
        EXPECT_EQ(message->informativeText(), QStringLiteral("It can join again with a new invite."));
    } else {
        EXPECT_TRUE(c.sheet);
        EXPECT_EQ(boxes[0]->windowTitle(), QStringLiteral("Invite someone"));
    }
    if (c.press == "Escape") pressKey(boxes[0], Qt::Key_Escape);
    if (c.press.empty()) asking = false;
    for (auto* button : boxes[0]->findChildren<QAbstractButton*>())
        if (button->text().toStdString() == c.press) button->click();
    settle();
    EXPECT_EQ(calls, c.expected);
    renderer->render(view());
    settle();
    EXPECT_TRUE(visible<QDialog>().empty());
    EXPECT_EQ(calls, c.expected);

    asking = true;
    renderer->render(view());
    settle();
    EXPECT_EQ(visible<QDialog>().size(), 1u) << "it opens again when the model asks again";
}

INSTANTIATE_TEST_SUITE_P(Answers, Modal,
                         ::testing::Values(ModalCase{"Remove", false, "Remove", {"remove"}},
                                           ModalCase{"Cancel", false, "Cancel", {"cancel"}},
                                           ModalCase{"Escape", false, "Escape", {"cancel"}},
                                           ModalCase{"ModelMovesOn", false, "", {}},
                                           ModalCase{"SheetDone", true, "Done", {"done"}},
                                           ModalCase{"SheetModelMovesOn", true, "", {}},
                                           ModalCase{"SheetEscape", true, "Escape", {"dismissed"}}),
                         byName<ModalCase>);

// A switch (no style) or a picker: the user's choice is reported and shown until the next render,
// which shows what the model holds, whether it took the choice or refused it.
// Parameters: a switch, then the segmented, menu and radio pickers.
class Choice : public Renderer, public ::testing::WithParamInterface<std::optional<ui::PickerStyle>> {};

TEST_P(Choice, IsReportedAndTheControlFollowsTheModel) {
    std::string side = "left";
    std::vector<std::string> asked;
    bool modelAgrees = true;
    auto report = [&](const std::string& value) {
        asked.push_back(value), side = modelAgrees ? value : side;
    };
    auto view = [&] {
        if (!GetParam())
            return ui::toggle("Remote control", side == "right",
                              [&](bool on) { report(on ? "right" : "left"); })
                .key("choice");
        return ui::picker("Sidebar", {{"Left", "left"}, {"Right", "right"}}, side, report)
            .label("Tulm's sidebar")
            .pickerAs(*GetParam())
            .help("Which side of the Tulm desktop window its session sidebar sits on.")
            .key("choice");
    };
    renderer->render(view());
    QWidget* holder = renderer->widgetForKey("choice");
    ASSERT_NE(holder, nullptr);
    auto* box = qobject_cast<QCheckBox*>(holder);
    auto* combo = holder->findChild<QComboBox*>();
    auto current = [&]() -> std::string {
        if (box) return box->isChecked() ? "Right" : "Left";
        if (combo) return combo->currentText().toStdString();
        for (auto* option : holder->findChildren<QAbstractButton*>())
            if (option->isChecked()) return option->text().toStdString();
        return "";
    };
    auto choose = [&](const QString& text) {
        if (box) box->click();
        if (combo)
            combo->setCurrentIndex(combo->findText(text)), emit combo->activated(combo->currentIndex());
        for (auto* option : holder->findChildren<QAbstractButton*>())
            if (option->text() == text) option->click();
    };
    EXPECT_EQ(current(), "Left");
    choose("Right");
    EXPECT_EQ(asked, std::vector<std::string>{"right"});
    renderer->render(view());
    EXPECT_EQ(current(), "Right");

    modelAgrees = false;
    choose("Left");
    EXPECT_EQ(current(), "Left") << "what the user did, until the tree says otherwise";
    renderer->render(view());
    EXPECT_EQ(asked, (std::vector<std::string>{"right", "left"}));
    EXPECT_EQ(current(), "Right") << "a refused choice must return to the model's state";
    EXPECT_EQ(renderer->widgetForKey("choice"), holder);
}

INSTANTIATE_TEST_SUITE_P(Controls, Choice,
                         ::testing::Values(std::nullopt, ui::PickerStyle::Segmented, ui::PickerStyle::Menu,
                                           ui::PickerStyle::Radio));

TEST_F(Renderer, SecureTextReachesNoDescription) {
    const std::string secret = "sk-live-123456";
    renderer->render(ui::section("Keys", {ui::secureField("key", "API key", secret, [](const std::string&) {
                                          }).help("Paste the key")}));
    auto* edit = qobject_cast<QLineEdit*>(renderer->widgetForKey("key"));
    ASSERT_NE(edit, nullptr);
    EXPECT_EQ(edit->echoMode(), QLineEdit::Password);
    EXPECT_NE(edit->displayText().toStdString(), secret);
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        for (const QString& words :
             {widget->toolTip(), widget->accessibleName(), widget->accessibleDescription(),
              widget->windowTitle(), widget->statusTip(), widget->whatsThis()})
            EXPECT_FALSE(words.contains(QStringLiteral("sk-live"))) << widget->metaObject()->className();
        if (auto* label = qobject_cast<QLabel*>(widget))
            EXPECT_FALSE(label->text().contains(QStringLiteral("sk-live")));
    }
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
        return ui::vstack({ui::text("Updates"),
                           busy ? ui::spinner("Checking") : ui::button("Check now", [] {}),
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

// A poll that changes nothing must cost nothing: no layout done again, no widget told of a change.
TEST_F(Renderer, AnUnchangedTreeTouchesNoWidget) {
    renderer->setTonePalette(ui::qt::TonePalette::fromPalette(window->palette()));
    auto view = [] {
        return ui::vstack({
            ui::section("Phones", "Who can reach this Mac",
                        {ui::row("Ada's iPhone", "Owner", {ui::button("Remove", [] {}).role(ui::Role::Destructive)}),
                         ui::row("", {ui::field("name", "", "Studio", [](const std::string&) {}),
                                      ui::button("Cancel", [] {}).role(ui::Role::Cancel)}),
                         ui::text("Ready.").tone(ui::Tone::Good).style(ui::TextStyle::Caption).help("Status")})
                .footer("Phones join with a code."),
            ui::toggle("Remote control", true, [](bool) {}).enabled(false),
            ui::picker("Sidebar", {{"Left", "left"}, {"Right", "right"}}, "left", [](const std::string&) {}),
            ui::picker("Size", {{"Small", "s"}, {"Large", "l"}}, "l", [](const std::string&) {})
                .pickerAs(ui::PickerStyle::Menu),
            ui::picker("Theme", {{"A", "a"}, {"B", "b"}}, "b", [](const std::string&) {})
                .pickerAs(ui::PickerStyle::Radio),
            ui::hstack({ui::symbol("circle.fill", ui::Tone::Accent), ui::progress(0.5, "Downloading"),
                        ui::spinner("Starting")}),
            ui::menu("More", {ui::button("Copy", [] {})}),
            ui::separator(),
            ui::link("Open the guide", [] {}),
        });
    };
    renderer->render(view());
    settle();
    orvan::testing::WidgetChanges changes;
    for (int i = 0; i < 3; ++i) renderer->render(view());
    settle();
    EXPECT_EQ(changes.seen(), "");
}

// A field that appears because of a press takes the keys; one that appears while the user types
// elsewhere, or with a poll, leaves them where they are.
TEST_F(Renderer, OnlyAFieldAskedForTakesTheFocus) {
    ui::qt::ViewRenderer& own = *renderer;
    std::string first;
    bool asked = false, polled = false;
    auto view = [&] {
        return ui::section("Key", {ui::field("first", "", first, [&](const std::string& t) { first = t; }),
                                   ui::when(!first.empty(), ui::field("second", "", "", [](const std::string&) {})),
                                   ui::when(polled, ui::field("third", "", "", [](const std::string&) {})),
                                   ui::button("Add", [&] { asked = true; }).key("add"),
                                   ui::when(asked, ui::field("fourth", "", "Draft", [](const std::string&) {}))});
    };
    own.render(view());
    auto* edit = qobject_cast<QLineEdit*>(own.widgetForKey("first"));
    edit->setFocus(Qt::OtherFocusReason);
    typeText(edit, "k");
    own.render(view());
    ASSERT_NE(own.widgetForKey("second"), nullptr);
    EXPECT_TRUE(edit->hasFocus()) << "typing moved the focus";
    polled = true;
    own.render(view());
    ASSERT_NE(own.widgetForKey("third"), nullptr);
    EXPECT_TRUE(edit->hasFocus()) << "a poll moved the focus";
    qobject_cast<QPushButton*>(own.widgetForKey("add"))->click();
    own.render(view());
    auto* fourth = qobject_cast<QLineEdit*>(own.widgetForKey("fourth"));
    ASSERT_NE(fourth, nullptr);
    EXPECT_TRUE(fourth->hasFocus());
    EXPECT_EQ(fourth->selectedText().toStdString(), "Draft");
}
