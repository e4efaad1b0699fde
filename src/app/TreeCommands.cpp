#include "app/TreeCommands.h"

#include "appearance/AppearanceSection.h"
#include "appearance/ThemeStore.h"

#include <QCoreApplication>
#include <QTimer>

namespace orvan::app {

namespace {
std::string answer(const std::string& sentence) { return "> " + sentence + "\n"; }
} // namespace

void fitForText(ui::Node& tree) {
    if (tree.kind == ui::Kind::Section && tree.identity == "appearance") {
        AppearanceSection::compact(tree, ThemeStore::shared());
        return;
    }
    for (auto& child : tree.children) fitForText(child);
}

ui::TextOptions terminalText(int width, bool invert) {
    ui::TextOptions text;
    text.numbered = true;
    text.width = width;
    text.drawCodes = true;
    text.invert = invert;
    return text;
}

Performed performLine(const std::string& line, const ui::Controls& controls, const std::string& frame) {
    const ui::Parsed parsed = ui::parseCommand(line);
    if (!parsed.command) return {{false, answer(parsed.error)}};
    const ui::Command& command = *parsed.command;
    switch (command.verb) {
    case ui::Verb::Show: return {{true, frameHeading + frame + answer("That is the frame as it stands.")}};
    case ui::Verb::Help: {
        std::string text;
        for (const auto& piece : ui::helpLines()) text += answer(piece);
        return {{true, text}};
    }
    case ui::Verb::Quit:
        // The same quit as the tray's, through the event loop so the answer reaches whoever asked.
        QTimer::singleShot(0, qApp, [] { QCoreApplication::quit(); });
        return {{true, answer("Quitting; the bridge this program started stops with it.")}};
    default: break;
    }
    const ui::Outcome outcome = ui::perform(controls, command);
    if (outcome.secretFor) return {{true, {}}, false, outcome.secretFor};
    return {{outcome.accepted, answer(outcome.answer)}, outcome.accepted};
}

std::string secretRefused(const ui::Node& field) {
    return answer(ui::controlTitle(field) + " is a secure field: put its text after it (type " + ui::refFor(field) +
                  " TEXT), or type it in the text view's terminal.");
}

CommandAnswer commandOnView(const std::string& line, const std::function<ui::Node()>& build,
                            const std::function<void()>& changed) {
    ui::Node tree = build();
    fitForText(tree);
    const ui::TextFrame frame = ui::TextRenderer(terminalText(80, false)).frame(tree);
    const Performed performed = performLine(line, frame.controls, frame.text);
    if (performed.secretFor) return {false, secretRefused(*performed.secretFor)};
    if (performed.acted && changed) changed();
    return performed.answer;
}

} // namespace orvan::app
