#pragma once
// The view vocabulary. A view is a pure function that returns a tree of nodes; the tree is drawn
// as text (headless mode, view tests) and with Qt Widgets. A node is a plain value: one struct
// whose kind says which of its fields matter, so that views read like their descriptions:
//
//     ui::section("Updates", {
//         ui::text(note).tone(ui::Tone::Dim),
//         ui::button("Check now", [&] { check(); }).enabled(!busy).help("..."),
//     })
//
// Every node may carry a key (its identity among its siblings across re-renders) and help text
// (the tooltip and accessible description). Actions are closures; renderers call them only
// after a render pass is over, so a closure may change models and ask for another render.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvan::ui {

enum class Kind {
    Section,      // a titled group: title, subtitle, footer, children
    Row,          // a label with a secondary line and trailing controls (children)
    Stack,        // children along an axis
    Text,         // text with a style and a tone
    Button,       // title, role, action, optional keyboard shortcut
    Switch,       // a titled on/off control
    Picker,       // one choice among several
    Field,        // one line of editable text, with a stable key
    SecureField,  // like Field, but its text is never shown or printed
    Picture,      // PNG bytes at a size
    Progress,     // a value in 0...1, or indeterminate
    Spinner,      // work under way, no measure
    Symbol,       // a named symbol from the symbol table, in a tone
    Menu,         // a titled list of items (buttons, switches, text, separators, menus)
    Confirmation, // a question with buttons, presented while it stands in the tree
    Sheet,        // a child tree presented modally while it stands in the tree
    Separator,
    Link,         // a title that runs an action when followed
};

enum class Axis { Vertical, Horizontal };
enum class TextStyle { Body, Title, Headline, Caption, Monospaced };
enum class Tone { Normal, Dim, Accent, Good, Warning, Danger };
enum class Role { Normal, Primary, Destructive, Cancel };
enum class PickerStyle { Segmented, Menu, Radio };

struct Choice {
    std::string title;
    std::string value;
    bool operator==(const Choice&) const = default;
};

struct Node {
    Kind kind = Kind::Stack;

    // Identity and help, for every kind.
    std::string identity;
    std::string helpText;
    bool isEnabled = true;

    // Words. `title` is a section's, row's, button's, switch's, picker's, menu's, sheet's or
    // confirmation's title, a field's or picker's label, a picture's description, a progress
    // bar's or spinner's label. `text` is a text node's text and a field's contents. `detail` is
    // a section's subtitle, a row's secondary line and a confirmation's message.
    std::string title;
    std::string text;
    std::string detail;
    std::string footerText;
    std::string placeholderText;
    std::string pickerLabel;

    TextStyle textStyle = TextStyle::Body;
    Tone textTone = Tone::Normal;
    bool isSelectable = false;

    Role buttonRole = Role::Normal;
    std::string shortcutKeys; // portable key sequence text, "Ctrl+R"

    bool isOn = false;

    std::vector<Choice> choices;
    std::string selectedValue;
    PickerStyle pickerStyle = PickerStyle::Segmented;

    // Shared, so a picture drawn on every render (a theme's swatch) is neither copied nor compared byte by byte.
    std::shared_ptr<const std::string> pngBytes;
    int width = 0;
    int height = 0;
    bool isPixelated = false;

    std::optional<double> fraction; // absent: indeterminate

    std::string symbolName;

    Axis axis = Axis::Vertical;

    std::vector<Node> children;

    // Set only by `nothing()`: renderers and builders step over it.
    bool isAbsent = false;

    std::function<void()> onPress;                  // button, link; a sheet's dismissal
    std::function<void(bool)> onToggle;             // switch: the new state
    std::function<void(const std::string&)> onChoose; // picker: the chosen value
    std::function<void(const std::string&)> onChange; // field: the text as the user left it
    std::function<void()> onSubmit;                 // field: the return key
    // Vertical stack: its children may be dragged into another order. Called with the dragged
    // child's place and the place it was dropped at, both counted in the list before the move.
    std::function<void(int, int)> onMove;

    // Chained setters, so a view can write `ui::button(...).enabled(false).help("...")`.
    Node& key(std::string value) & { identity = std::move(value); return *this; }
    Node&& key(std::string value) && { identity = std::move(value); return std::move(*this); }
    Node& help(std::string value) & { helpText = std::move(value); return *this; }
    Node&& help(std::string value) && { helpText = std::move(value); return std::move(*this); }
    Node& enabled(bool value) & { isEnabled = value; return *this; }
    Node&& enabled(bool value) && { isEnabled = value; return std::move(*this); }
    Node& style(TextStyle value) & { textStyle = value; return *this; }
    Node&& style(TextStyle value) && { textStyle = value; return std::move(*this); }
    Node& tone(Tone value) & { textTone = value; return *this; }
    Node&& tone(Tone value) && { textTone = value; return std::move(*this); }
    Node& selectable(bool value = true) & { isSelectable = value; return *this; }
    Node&& selectable(bool value = true) && { isSelectable = value; return std::move(*this); }
    Node& role(Role value) & { buttonRole = value; return *this; }
    Node&& role(Role value) && { buttonRole = value; return std::move(*this); }
    Node& shortcut(std::string value) & { shortcutKeys = std::move(value); return *this; }
    Node&& shortcut(std::string value) && { shortcutKeys = std::move(value); return std::move(*this); }
    Node& footer(std::string value) & { footerText = std::move(value); return *this; }
    Node&& footer(std::string value) && { footerText = std::move(value); return std::move(*this); }
    Node& placeholder(std::string value) & { placeholderText = std::move(value); return *this; }
    Node&& placeholder(std::string value) && { placeholderText = std::move(value); return std::move(*this); }
    Node& label(std::string value) & { pickerLabel = std::move(value); return *this; }
    Node&& label(std::string value) && { pickerLabel = std::move(value); return std::move(*this); }
    Node& pixelated(bool value = true) & { isPixelated = value; return *this; }
    Node&& pixelated(bool value = true) && { isPixelated = value; return std::move(*this); }
    Node& submit(std::function<void()> action) & { onSubmit = std::move(action); return *this; }
    Node&& submit(std::function<void()> action) && { onSubmit = std::move(action); return std::move(*this); }
    Node& dismiss(std::function<void()> action) & { onPress = std::move(action); return *this; }
    Node&& dismiss(std::function<void()> action) && { onPress = std::move(action); return std::move(*this); }
    Node& reorder(std::function<void(int, int)> action) & { onMove = std::move(action); return *this; }
    Node&& reorder(std::function<void(int, int)> action) && { onMove = std::move(action); return std::move(*this); }
    Node& pickerAs(PickerStyle value) & { pickerStyle = value; return *this; }
    Node&& pickerAs(PickerStyle value) && { pickerStyle = value; return std::move(*this); }
};

using Nodes = std::vector<Node>;

// Builders, one per kind.
Node section(std::string title, Nodes children);
Node section(std::string title, std::string subtitle, Nodes children);
Node row(std::string title, Nodes trailing = {});
Node row(std::string title, std::string detail, Nodes trailing);
Node vstack(Nodes children);
Node hstack(Nodes children);
Node text(std::string words);
Node button(std::string title, std::function<void()> action);
Node toggle(std::string title, bool on, std::function<void(bool)> action);
Node picker(std::string title, std::vector<Choice> choices, std::string selected,
            std::function<void(const std::string&)> action);
Node field(std::string key, std::string title, std::string text, std::function<void(const std::string&)> changed);
Node secureField(std::string key, std::string title, std::string text,
                 std::function<void(const std::string&)> changed);
Node picture(std::string pngBytes, int width, int height, std::string description = {});
Node picture(std::shared_ptr<const std::string> pngBytes, int width, int height, std::string description = {});
Node progress(std::optional<double> fraction, std::string label = {});
Node spinner(std::string label = {});
Node symbol(std::string name, Tone tone = Tone::Normal);
Node menu(std::string title, Nodes items);
Node confirmation(std::string title, std::string message, Nodes buttons);
Node sheet(std::string title, Nodes children, std::function<void()> dismissed);
Node separator();
Node link(std::string title, std::function<void()> action);

// Nodes that stand for nothing are dropped, so a view can write `when(cond, node)` in a list.
Node nothing();
inline Node when(bool condition, Node node) { return condition ? std::move(node) : nothing(); }
bool isNothing(const Node& node);

// Names, for diagnostics and the text renderer's detailed form.
const char* kindName(Kind kind);
const char* toneName(Tone tone);
const char* styleName(TextStyle style);
const char* roleName(Role role);

} // namespace orvan::ui
