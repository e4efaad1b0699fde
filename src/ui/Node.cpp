#include "ui/Node.h"

#include <algorithm>

namespace orvan::ui {

namespace {

Node make(Kind kind) {
    Node node;
    node.kind = kind;
    return node;
}

Nodes present(Nodes children) {
    children.erase(std::remove_if(children.begin(), children.end(), isNothing), children.end());
    return children;
}

} // namespace

Node section(std::string title, Nodes children) { return section(std::move(title), {}, std::move(children)); }

Node section(std::string title, std::string subtitle, Nodes children) {
    Node node = make(Kind::Section);
    node.title = std::move(title);
    node.detail = std::move(subtitle);
    node.children = present(std::move(children));
    return node;
}

Node row(std::string title, Nodes trailing) { return row(std::move(title), {}, std::move(trailing)); }

Node row(std::string title, std::string detail, Nodes trailing) {
    Node node = make(Kind::Row);
    node.title = std::move(title);
    node.detail = std::move(detail);
    node.children = present(std::move(trailing));
    return node;
}

Node vstack(Nodes children) {
    Node node = make(Kind::Stack);
    node.axis = Axis::Vertical;
    node.children = present(std::move(children));
    return node;
}

Node hstack(Nodes children) {
    Node node = make(Kind::Stack);
    node.axis = Axis::Horizontal;
    node.children = present(std::move(children));
    return node;
}

Node text(std::string words) {
    Node node = make(Kind::Text);
    node.text = std::move(words);
    return node;
}

Node button(std::string title, std::function<void()> action) {
    Node node = make(Kind::Button);
    node.title = std::move(title);
    node.onPress = std::move(action);
    return node;
}

Node toggle(std::string title, bool on, std::function<void(bool)> action) {
    Node node = make(Kind::Switch);
    node.title = std::move(title);
    node.isOn = on;
    node.onToggle = std::move(action);
    return node;
}

Node picker(std::string title, std::vector<Choice> choices, std::string selected,
            std::function<void(const std::string&)> action) {
    Node node = make(Kind::Picker);
    node.title = std::move(title);
    node.choices = std::move(choices);
    node.selectedValue = std::move(selected);
    node.onChoose = std::move(action);
    return node;
}

Node field(std::string key, std::string title, std::string text, std::function<void(const std::string&)> changed) {
    Node node = make(Kind::Field);
    node.identity = std::move(key);
    node.title = std::move(title);
    node.text = std::move(text);
    node.onChange = std::move(changed);
    return node;
}

Node secureField(std::string key, std::string title, std::string text,
                 std::function<void(const std::string&)> changed) {
    Node node = field(std::move(key), std::move(title), std::move(text), std::move(changed));
    node.kind = Kind::SecureField;
    return node;
}

Node picture(std::string pngBytes, int width, int height, std::string description) {
    return picture(std::make_shared<const std::string>(std::move(pngBytes)), width, height, std::move(description));
}

Node picture(std::shared_ptr<const std::string> pngBytes, int width, int height, std::string description) {
    Node node = make(Kind::Picture);
    node.pngBytes = pngBytes ? std::move(pngBytes) : std::make_shared<const std::string>();
    node.width = std::max(0, width);
    node.height = std::max(0, height);
    node.title = std::move(description);
    return node;
}

Node progress(std::optional<double> fraction, std::string label) {
    Node node = make(Kind::Progress);
    if (fraction && *fraction == *fraction) node.fraction = std::clamp(*fraction, 0.0, 1.0);
    node.title = std::move(label);
    return node;
}

Node spinner(std::string label) {
    Node node = make(Kind::Spinner);
    node.title = std::move(label);
    return node;
}

Node symbol(std::string name, Tone tone) {
    Node node = make(Kind::Symbol);
    node.symbolName = std::move(name);
    node.textTone = tone;
    return node;
}

Node menu(std::string title, Nodes items) {
    Node node = make(Kind::Menu);
    node.title = std::move(title);
    node.children = present(std::move(items));
    return node;
}

Node confirmation(std::string title, std::string message, Nodes buttons) {
    Node node = make(Kind::Confirmation);
    node.title = std::move(title);
    node.detail = std::move(message);
    node.children = present(std::move(buttons));
    return node;
}

Node sheet(std::string title, Nodes children, std::function<void()> dismissed) {
    Node node = make(Kind::Sheet);
    node.title = std::move(title);
    node.children = present(std::move(children));
    node.onPress = std::move(dismissed);
    return node;
}

Node separator() { return make(Kind::Separator); }

Node link(std::string title, std::function<void()> action) {
    Node node = make(Kind::Link);
    node.title = std::move(title);
    node.onPress = std::move(action);
    return node;
}

Node nothing() {
    Node node = make(Kind::Stack);
    node.isAbsent = true;
    return node;
}

bool isNothing(const Node& node) { return node.isAbsent; }

const char* kindName(Kind kind) {
    switch (kind) {
    case Kind::Section: return "section";
    case Kind::Row: return "row";
    case Kind::Stack: return "stack";
    case Kind::Text: return "text";
    case Kind::Button: return "button";
    case Kind::Switch: return "switch";
    case Kind::Picker: return "picker";
    case Kind::Field: return "field";
    case Kind::SecureField: return "secure field";
    case Kind::Picture: return "picture";
    case Kind::Progress: return "progress";
    case Kind::Spinner: return "spinner";
    case Kind::Symbol: return "symbol";
    case Kind::Menu: return "menu";
    case Kind::Confirmation: return "confirmation";
    case Kind::Sheet: return "sheet";
    case Kind::Separator: return "separator";
    case Kind::Link: return "link";
    }
    return "node";
}

const char* toneName(Tone tone) {
    switch (tone) {
    case Tone::Normal: return "normal";
    case Tone::Dim: return "dim";
    case Tone::Accent: return "accent";
    case Tone::Good: return "good";
    case Tone::Warning: return "warning";
    case Tone::Danger: return "danger";
    }
    return "normal";
}

const char* styleName(TextStyle style) {
    switch (style) {
    case TextStyle::Body: return "body";
    case TextStyle::Title: return "title";
    case TextStyle::Headline: return "headline";
    case TextStyle::Caption: return "caption";
    case TextStyle::Monospaced: return "monospaced";
    }
    return "body";
}

const char* roleName(Role role) {
    switch (role) {
    case Role::Normal: return "normal";
    case Role::Primary: return "primary";
    case Role::Destructive: return "destructive";
    case Role::Cancel: return "cancel";
    }
    return "normal";
}

} // namespace orvan::ui
