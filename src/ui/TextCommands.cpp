#include "ui/TextCommands.h"

#include <algorithm>
#include <cctype>

namespace orvan::ui {

namespace {

std::string quoted(const std::string& words) { return "\u201c" + words + "\u201d"; }

bool allDigits(std::string_view word) {
    return !word.empty() && word.size() <= 9 &&
           std::all_of(word.begin(), word.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string lower(std::string_view words) {
    std::string out(words);
    for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

std::string_view skipSpaces(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    return text;
}

std::string_view trimRight(std::string_view text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

const char* kindWord(Kind kind) {
    switch (kind) {
    case Kind::Button: return "button";
    case Kind::Link: return "link";
    case Kind::Switch: return "switch";
    case Kind::Picker: return "picker";
    case Kind::Field: return "field";
    case Kind::SecureField: return "secure field";
    default: return "control";
    }
}

std::string usage(const Node& node) {
    const std::string ref = refFor(node);
    switch (node.kind) {
    case Kind::Button:
    case Kind::Link: return "press " + ref;
    case Kind::Switch: return "toggle " + ref;
    case Kind::Picker: return "choose " + ref + " VALUE";
    default: return "type " + ref + " TEXT";
    }
}

std::string named(const Control& control) {
    std::string title = controlTitle(*control.node);
    if (title.empty()) title = std::string("(untitled ") + kindWord(control.node->kind) + ")";
    return control.number ? std::to_string(control.number) + ") " + title : title + " (disabled)";
}

std::string listed(const std::vector<const Control*>& controls) {
    std::string out;
    for (const Control* control : controls) out += (out.empty() ? "" : ", ") + named(*control);
    return out;
}

Outcome refused(std::string sentence) { return {false, std::move(sentence), nullptr}; }

Outcome wrongKind(const Node& node, const char* verb) {
    return refused(quoted(controlTitle(node)) + " is a " + kindWord(node.kind) + ", which " + verb +
                   " does not work; use: " + usage(node) + ".");
}

template <typename Action, typename... Args>
void run(const Action& action, Args&&... args) {
    // A copy: the action may lead to a new tree that replaces the node holding it.
    auto copy = action;
    if (copy) copy(std::forward<Args>(args)...);
}

Outcome press(const Node& node) {
    run(node.onPress);
    return {true, (node.kind == Kind::Link ? "Followed " : "Pressed ") + controlTitle(node) + ".", nullptr};
}

Outcome toggle(const Node& node) {
    run(node.onToggle, !node.isOn);
    return {true, "Turned " + controlTitle(node) + (node.isOn ? " off." : " on."), nullptr};
}

} // namespace

bool isControl(const Node& node) {
    switch (node.kind) {
    case Kind::Button:
    case Kind::Switch:
    case Kind::Picker:
    case Kind::Field:
    case Kind::SecureField:
    case Kind::Link: return true;
    default: return false;
    }
}

std::string controlTitle(const Node& node) {
    switch (node.kind) {
    case Kind::Picker: return node.pickerLabel.empty() ? node.title : node.pickerLabel;
    case Kind::Field:
    case Kind::SecureField: return node.title.empty() ? node.placeholderText : node.title;
    default: return node.title;
    }
}

std::string refFor(const Node& node) {
    const std::string title = controlTitle(node);
    const bool oneWord = !title.empty() && title.find_first_of(" \t\"") == std::string::npos && !allDigits(title);
    return oneWord ? title : "\"" + title + "\"";
}

Parsed parseCommand(std::string_view line) {
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    line = skipSpaces(line);
    const auto wordEnd = std::min(line.find_first_of(" \t"), line.size());
    const std::string word = lower(line.substr(0, wordEnd));
    std::string_view rest = skipSpaces(line.substr(wordEnd));
    if (word.empty()) return {std::nullopt, "Type help for the commands."};

    if (allDigits(word)) {
        if (!trimRight(rest).empty()) return {std::nullopt, "A number stands alone: " + word + ", or press " + word + "."};
        return {Command{Verb::Activate, word, std::nullopt}, {}};
    }
    static const std::vector<std::pair<std::string, Verb>> verbs = {
        {"press", Verb::Press}, {"toggle", Verb::Toggle}, {"choose", Verb::Choose}, {"type", Verb::Type},
        {"submit", Verb::Submit}, {"show", Verb::Show}, {"help", Verb::Help}, {"quit", Verb::Quit},
    };
    auto found = std::find_if(verbs.begin(), verbs.end(), [&](const auto& v) { return v.first == word; });
    if (found == verbs.end())
        return {std::nullopt, "There is no command " + quoted(std::string(line.substr(0, wordEnd))) +
                                  "; type help for the commands."};
    const Verb verb = found->second;
    if (verb == Verb::Show || verb == Verb::Help || verb == Verb::Quit) {
        if (!trimRight(rest).empty()) return {std::nullopt, word + " takes nothing after it."};
        return {Command{verb, {}, std::nullopt}, {}};
    }
    if (trimRight(rest).empty())
        return {std::nullopt, word + " needs a control: a number from the frame, or its title."};

    Command command{verb, {}, std::nullopt};
    const bool takesArgument = verb == Verb::Choose || verb == Verb::Type;
    // The text follows the control after exactly one space, so a field can take leading spaces.
    auto takeArgument = [&](std::string_view after) -> bool {
        if (after.empty()) return true;
        if (after.front() != ' ' && after.front() != '\t') return false;
        command.argument = std::string(after.substr(1));
        return true;
    };
    if (rest.front() == '"') {
        const auto close = rest.find('"', 1);
        if (close == std::string_view::npos) return {std::nullopt, "The quote after " + word + " is not closed."};
        command.ref = std::string(rest.substr(1, close - 1));
        std::string_view after = rest.substr(close + 1);
        if (!takesArgument) after = trimRight(after);
        if (!takeArgument(after) || (!takesArgument && command.argument))
            return {std::nullopt, "Only a control follows " + word + "; put a title of several words in double quotes."};
    } else if (takesArgument) {
        const auto end = std::min(rest.find_first_of(" \t"), rest.size());
        command.ref = std::string(rest.substr(0, end));
        takeArgument(rest.substr(end));
    } else {
        // One control and nothing else, so a title of several words needs no quotes here.
        command.ref = std::string(trimRight(rest));
    }
    if (command.ref.empty()) return {std::nullopt, word + " needs a control: a number from the frame, or its title."};
    if (verb == Verb::Choose) {
        std::string value = command.argument.value_or("");
        std::string_view v = trimRight(skipSpaces(value));
        if (v.size() >= 2 && v.front() == '"' && v.back() == '"') v = v.substr(1, v.size() - 2);
        if (v.empty()) return {std::nullopt, "choose needs a value after the control: choose REF VALUE."};
        command.argument = std::string(v);
    }
    return {std::move(command), {}};
}

Resolved resolve(const Controls& controls, const std::string& ref) {
    int highest = 0;
    for (const auto& control : controls) highest = std::max(highest, control.number);
    if (allDigits(ref)) {
        const int number = std::stoi(ref);
        for (const auto& control : controls)
            if (control.number == number && number > 0) return {&control, {}};
        if (highest == 0) return {nullptr, "This frame has no controls to use."};
        return {nullptr, "There is no control " + ref + " in this frame; the numbers go from 1 to " +
                             std::to_string(highest) + "."};
    }
    // What is presented stands in front of the window, so its titles are looked up first.
    std::vector<const Control*> matches;
    for (bool presented : {true, false}) {
        for (const auto& control : controls)
            if (control.presented == presented && controlTitle(*control.node) == ref) matches.push_back(&control);
        if (!matches.empty()) break;
    }
    if (matches.empty()) {
        std::vector<const Control*> all;
        for (const auto& control : controls)
            if (control.number) all.push_back(&control);
        if (all.empty()) return {nullptr, "No control is called " + quoted(ref) + ", and this frame has none to use."};
        return {nullptr, "No control is called " + quoted(ref) + "; the controls are: " + listed(all) + "."};
    }
    std::vector<const Control*> enabled;
    for (const Control* control : matches)
        if (control->number) enabled.push_back(control);
    if (enabled.size() == 1) return {enabled.front(), {}};
    if (enabled.empty())
        return {nullptr, quoted(ref) + " can't be used now (disabled)."};
    return {nullptr, quoted(ref) + " names " + std::to_string(enabled.size()) + " controls: " + listed(enabled) +
                         "; use its number."};
}

Outcome typeInto(const Node& field, const std::string& text) {
    run(field.onChange, text);
    const std::string title = controlTitle(field);
    if (field.kind == Kind::SecureField) return {true, "Typed into " + title + " (hidden).", nullptr};
    return {true, (text.empty() ? "Cleared " : "Typed into ") + title + ".", nullptr};
}

Outcome perform(const Controls& controls, const Command& command) {
    const Resolved resolved = resolve(controls, command.ref);
    if (!resolved.control) return refused(resolved.error);
    const Node& node = *resolved.control->node;
    const bool pressable = node.kind == Kind::Button || node.kind == Kind::Link;
    const bool typable = node.kind == Kind::Field || node.kind == Kind::SecureField;
    switch (command.verb) {
    case Verb::Activate:
        if (pressable) return press(node);
        if (node.kind == Kind::Switch) return toggle(node);
        return refused(command.ref + " is a " + kindWord(node.kind) + "; use: " + usage(node) + ".");
    case Verb::Press:
        if (!pressable) return wrongKind(node, "press");
        return press(node);
    case Verb::Toggle:
        if (node.kind != Kind::Switch) return wrongKind(node, "toggle");
        return toggle(node);
    case Verb::Choose: {
        if (node.kind != Kind::Picker) return wrongKind(node, "choose");
        const std::string wanted = command.argument.value_or("");
        const Choice* chosen = nullptr;
        for (const auto& choice : node.choices)
            if (!chosen && (choice.title == wanted || choice.value == wanted)) chosen = &choice;
        for (const auto& choice : node.choices)
            if (!chosen && lower(choice.title) == lower(wanted)) chosen = &choice;
        if (!chosen) {
            std::string choices;
            for (const auto& choice : node.choices) choices += (choices.empty() ? "" : ", ") + choice.title;
            return refused(quoted(wanted) + " is not a choice of " + controlTitle(node) + "; the choices are: " +
                           choices + ".");
        }
        run(node.onChoose, chosen->value);
        return {true, "Chose " + chosen->title + (controlTitle(node).empty() ? "" : " for " + controlTitle(node)) + ".",
                nullptr};
    }
    case Verb::Type:
        if (!typable) return wrongKind(node, "type");
        if (!command.argument && node.kind == Kind::SecureField) return {true, {}, &node};
        return typeInto(node, command.argument.value_or(""));
    case Verb::Submit:
        if (!typable) return wrongKind(node, "submit");
        if (!node.onSubmit) return refused(quoted(controlTitle(node)) + " does nothing on Return.");
        run(node.onSubmit);
        return {true, "Submitted " + controlTitle(node) + ".", nullptr};
    default: return refused("That command does not work a control.");
    }
}

std::vector<std::string> helpLines() {
    return {
        "Commands, one per line; REF is a number from the frame, or a control's title",
        "(in double quotes when it has several words):",
        "  N                 press the button or link N, or flip the switch N",
        "  press REF         press a button or follow a link",
        "  toggle REF        flip a switch",
        "  choose REF VALUE  pick a choice by its title or value",
        "  type REF TEXT     replace a field's text with the rest of the line",
        "  type REF          for a secure field: asks for the text without showing it",
        "  submit REF        press Return in a field",
        "  show              print the whole frame again",
        "  help              this list",
        "  quit              quit Orvan Companion and stop its bridge",
        "Codes are drawn in the terminal's text colour. Terminals with light text on a dark",
        "background show them inverted; if a phone does not read one, start with --invert.",
    };
}

} // namespace orvan::ui
