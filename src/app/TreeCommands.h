#pragma once
// Typed commands on a view's tree, shared by the text view (standard input and --send) and the
// desktop window (--send): what `show`, `help` and `quit` do, and the controls' verbs.

#include "app/FrontEnd.h"
#include "ui/Node.h"
#include "ui/TextRenderer.h"

#include <functional>
#include <string>

namespace orvan::app {

// The separator line above every frame.
inline constexpr const char* frameHeading = "\n──────── Remote control ────────\n";

// What only a display can use, folded into the few lines a terminal needs.
void fitForText(ui::Node& tree);

// How the text view draws for a terminal of `width` columns.
ui::TextOptions terminalText(int width, bool invert);

struct Performed {
    CommandAnswer answer;
    bool acted = false;                    // a control's action ran: draw again
    const ui::Node* secretFor = nullptr;   // a secure field wants its text out of sight
};

// One line on the controls of the frame last shown, whose text `show` prints again.
Performed performLine(const std::string& line, const ui::Controls& controls, const std::string& frame);

// The sentence that refuses to ask for a secret where nothing can hide it.
std::string secretRefused(const ui::Node& field);

// One line on a tree built fresh for it, numbered as `show` would print it; `changed` runs
// when a control acted. For a front end that prints no frames of its own.
CommandAnswer commandOnView(const std::string& line, const std::function<ui::Node()>& build,
                            const std::function<void()>& changed);

} // namespace orvan::app
