#pragma once
// The text view's controls and the commands that work them. Every enabled control of a frame
// carries a number; a command names a control by that number or by its visible title, and the
// answer is one plain sentence. Parsing and resolving are pure, so they are tested as tables.
//
//     4              press a button or link, flip a switch
//     press REF      toggle REF      choose REF VALUE      type REF TEXT      submit REF
//     show           help            quit

#include "ui/Node.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan::ui {

struct Control {
    const Node* node = nullptr;
    int number = 0;         // 0: disabled, so not numbered
    bool presented = false; // inside a sheet or confirmation
};
// In number order, presentations first; disabled controls keep their place with number 0.
using Controls = std::vector<Control>;

bool isControl(const Node& node);
// The title a command may use: a field's label, else its placeholder; a picker's label.
std::string controlTitle(const Node& node);
// How to name the control in a command: one word as it stands, else in double quotes.
std::string refFor(const Node& node);

enum class Verb { Activate, Press, Toggle, Choose, Type, Submit, Show, Help, Quit };

struct Command {
    Verb verb = Verb::Show;
    std::string ref;
    // What follows the control: a choice, or a field's text exactly as typed.
    std::optional<std::string> argument;
};

struct Parsed {
    std::optional<Command> command; // absent: `error` says why
    std::string error;
};
Parsed parseCommand(std::string_view line);

struct Resolved {
    const Control* control = nullptr; // absent: `error` says why
    std::string error;
};
Resolved resolve(const Controls& controls, const std::string& ref);

struct Outcome {
    bool accepted = false;
    std::string answer;
    // `type REF` on a secure field without text: the caller asks for the secret out of sight.
    const Node* secretFor = nullptr;
};
// Works one of the control verbs on the frame's controls; the rest belong to the caller.
Outcome perform(const Controls& controls, const Command& command);

// Sets a field's text through its own change action.
Outcome typeInto(const Node& field, const std::string& text);

std::vector<std::string> helpLines();

} // namespace orvan::ui
