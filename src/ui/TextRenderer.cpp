#include "ui/TextRenderer.h"

#include "foundation/Text.h"
#include "ui/HalfBlocks.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace orvan::ui {

namespace {

// One line of output: no control characters, valid UTF-8. Titles and texts come from the
// bridge and from the user, so a newline or an escape sequence in them must not break the
// layout of the text (or a terminal that shows it). C1 controls are escapes to a terminal too,
// and the bidirectional overrides and isolates could make a name read as something else.
std::string clean(std::string_view words) {
    // Most words are plain printable ASCII and pass as they are.
    if (std::all_of(words.begin(), words.end(), [](char c) { return c >= 0x20 && c < 0x7f; })) return std::string(words);
    const std::string valid = Text::toValidUtf8(words);
    std::string out;
    out.reserve(valid.size());
    for (std::size_t i = 0; i < valid.size(); ++i) {
        const auto byte = static_cast<unsigned char>(valid[i]);
        const auto next = i + 1 < valid.size() ? static_cast<unsigned char>(valid[i + 1]) : 0;
        const auto third = i + 2 < valid.size() ? static_cast<unsigned char>(valid[i + 2]) : 0;
        if (byte < 0x20 || byte == 0x7f) {
            out += ' ';
        } else if (byte == 0xc2 && next >= 0x80 && next <= 0x9f) {
            out += ' ';
            ++i;
        } else if (byte == 0xe2 && ((next == 0x80 && third >= 0xaa && third <= 0xae) ||
                                    (next == 0x81 && third >= 0xa6 && third <= 0xa9))) {
            i += 2;
        } else {
            out += static_cast<char>(byte);
        }
    }
    return out;
}

// Columns a line takes: one per scalar, which holds for the scripts the views use.
std::size_t columnsOf(std::string_view line) {
    std::size_t count = 0;
    for (char c : line)
        if ((static_cast<unsigned char>(c) & 0xc0) != 0x80) ++count;
    return count;
}

// Byte offset just past `columns` scalars.
std::size_t offsetOfColumn(std::string_view line, std::size_t columns) {
    std::size_t seen = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if ((static_cast<unsigned char>(line[i]) & 0xc0) != 0x80) {
            if (seen == columns) return i;
            ++seen;
        }
    }
    return line.size();
}

std::vector<std::string> linesOf(std::string_view words) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (true) {
        const auto end = words.find('\n', start);
        std::string_view piece = words.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
        if (!piece.empty() && piece.back() == '\r') piece.remove_suffix(1);
        lines.push_back(clean(piece));
        if (end == std::string_view::npos) break;
        start = end + 1;
    }
    return lines;
}

bool isPresented(const Node& node) { return node.kind == Kind::Confirmation || node.kind == Kind::Sheet; }

bool presentsAnything(const Node& node) {
    if (node.isAbsent) return false;
    if (isPresented(node)) return true;
    for (const auto& child : node.children)
        if (presentsAnything(child)) return true;
    return false;
}

using Numbers = std::unordered_map<const Node*, int>;

class Writer {
public:
    // A writer that doesn't draw only finds the controls in drawing order: its lines are never kept.
    Writer(TextOptions options, const Numbers* numbers, bool draws = true)
        : options_(options), numbers_(numbers), draws_(draws) {}

    // The controls in drawing order, the presented ones apart.
    const std::vector<const Node*>& mainControls() const { return mainControls_; }
    const std::vector<const Node*>& presentedControls() const { return presentedControls_; }

    // Numbers the controls in the order they are drawn, into `numbers`, which this writer also reads.
    // That is the right order only when nothing is presented.
    void numberAsDrawn(Numbers* numbers) {
        asDrawn_ = numbers;
        numbers_ = numbers;
    }

    std::string finish(const Node& root) {
        block(root, 0);
        // Presentations may hold presentations (a confirmation inside a sheet); they are drawn
        // in the order found, each once.
        inPresentation_ = true;
        for (std::size_t i = 0; i < presented_.size(); ++i) presentation(*presented_[i]);
        std::size_t size = 0;
        for (const auto& line : lines_) size += line.size() + 1;
        std::string out;
        out.reserve(size);
        for (const auto& line : lines_) {
            out += line;
            out += '\n';
        }
        return out;
    }

private:
    bool drawsCode(const Node& node) const { return options_.drawCodes && node.kind == Kind::Picture && node.isPixelated; }

    bool isInline(const Node& node) const {
        if (drawsCode(node)) return false;
        switch (node.kind) {
        case Kind::Button:
        case Kind::Switch:
        case Kind::Picker:
        case Kind::Field:
        case Kind::SecureField:
        case Kind::Picture:
        case Kind::Progress:
        case Kind::Spinner:
        case Kind::Symbol:
        case Kind::Link:
        case Kind::Menu:
            return true;
        case Kind::Text:
            return node.text.find('\n') == std::string::npos;
        default:
            return false;
        }
    }

    std::string annotate(const Node& node) const {
        if (!options_.detailed) return {};
        std::vector<std::string> notes;
        if (node.kind == Kind::Text) {
            if (node.textStyle != TextStyle::Body) notes.emplace_back(styleName(node.textStyle));
            if (node.textTone != Tone::Normal) notes.emplace_back(toneName(node.textTone));
            if (node.isSelectable) notes.emplace_back("selectable");
        }
        if (node.kind == Kind::Button) {
            if (node.buttonRole != Role::Normal) notes.emplace_back(roleName(node.buttonRole));
            if (!node.shortcutKeys.empty()) notes.push_back(clean(node.shortcutKeys));
        }
        if (node.kind == Kind::Picker) {
            notes.emplace_back(node.pickerStyle == PickerStyle::Segmented ? "segmented"
                               : node.pickerStyle == PickerStyle::Menu    ? "menu"
                                                                          : "radio");
        }
        if (node.kind == Kind::Picture && node.isPixelated) notes.emplace_back("pixelated");
        if (notes.empty()) return {};
        std::string out = " {";
        for (std::size_t i = 0; i < notes.size(); ++i) out += (i ? ", " : "") + notes[i];
        return out + "}";
    }

    static std::string disabled(const Node& node) { return node.isEnabled ? "" : " (disabled)"; }

    std::string field(const Node& node) const {
        std::string out;
        if (!node.title.empty()) out += clean(node.title) + ": ";
        if (node.text.empty())
            out += node.placeholderText.empty() ? "[]" : "[(" + clean(node.placeholderText) + ")]";
        else if (node.kind == Kind::SecureField)
            out += "[(hidden)]";
        else
            out += "[" + clean(node.text) + "]";
        // With text in it, a field without a label would lose the name a command uses for it.
        if (options_.numbered && node.title.empty() && !node.text.empty() && !node.placeholderText.empty())
            out += " (" + clean(node.placeholderText) + ")";
        return out;
    }

    static std::string percent(double fraction) {
        return std::to_string(static_cast<int>(std::floor(fraction * 100.0 + 0.5))) + "%";
    }

    // Long lists of choices are a menu on a screen; in a terminal they take one line.
    bool compactPicker(const Node& node) const { return options_.numbered && node.choices.size() > 4; }

    void record(const Node& node) {
        if (!isControl(node) || !seen_.insert(&node).second) return;
        (inPresentation_ ? presentedControls_ : mainControls_).push_back(&node);
        if (asDrawn_ && node.isEnabled) (*asDrawn_)[&node] = ++drawnNumber_;
    }

    std::string numberOf(const Node& node) const {
        if (!numbers_) return {};
        auto found = numbers_->find(&node);
        return found == numbers_->end() ? std::string{} : std::to_string(found->second) + ") ";
    }

    std::string inlineForm(const Node& node) {
        record(node);
        std::string out = numberOf(node);
        switch (node.kind) {
        case Kind::Text: out += clean(node.text); break;
        case Kind::Button: out += "[" + clean(node.title) + "]"; break;
        case Kind::Switch: out += std::string(node.isOn ? "[x] " : "[ ] ") + clean(node.title); break;
        case Kind::Picker: {
            const std::string& label = node.pickerLabel.empty() ? node.title : node.pickerLabel;
            if (compactPicker(node)) {
                std::string selected = "(none)";
                for (const auto& choice : node.choices)
                    if (choice.value == node.selectedValue) selected = clean(choice.title);
                const std::string ref = label.empty() ? numberOf(node).substr(0, numberOf(node).size() - 2)
                                                      : clean(refFor(node));
                out += (label.empty() ? "" : clean(label) + ": ") + selected + " (choose with: choose " + ref + " NAME)";
                break;
            }
            std::string choices = label.empty() ? std::string{} : clean(label) + ":";
            for (const auto& choice : node.choices) {
                if (!choices.empty()) choices += choices.back() == ':' ? " " : "  ";
                choices += (choice.value == node.selectedValue ? "(\u2022) " : "( ) ") + clean(choice.title);
            }
            out += choices;
            break;
        }
        case Kind::Field:
        case Kind::SecureField: out += field(node); break;
        case Kind::Picture: {
            out += "<picture";
            if (!node.title.empty()) out += ": " + clean(node.title) + ",";
            out += " " + std::to_string(node.width) + "x" + std::to_string(node.height) + ">";
            break;
        }
        case Kind::Progress: {
            const std::string measure = node.fraction ? percent(*node.fraction) : "(in progress)";
            out += node.title.empty() ? measure : clean(node.title) + ": " + measure;
            break;
        }
        case Kind::Spinner: out += node.title.empty() ? "(working)" : "(working) " + clean(node.title); break;
        case Kind::Symbol:
            out += "<" + clean(node.symbolName) + ", " + toneName(node.textTone) + ">";
            break;
        case Kind::Link: out += clean(node.title) + " (link)"; break;
        case Kind::Menu: out += "[" + clean(node.title) + " \u25be]"; break;
        default: break;
        }
        return out + annotate(node) + disabled(node);
    }

    void line(int indent, std::string words) {
        if (!draws_) return;
        const auto width = static_cast<std::size_t>(options_.width);
        const auto leadSize = static_cast<std::size_t>(indent) * 2;
        // Most lines fit as they are: made once, with no copy to wrap.
        if (width <= leadSize + 8 || leadSize + columnsOf(words) <= width) {
            if (leadSize) words.insert(0, leadSize, ' ');
            lines_.push_back(std::move(words));
            return;
        }
        std::string lead(leadSize, ' ');
        // Wrapped lines hang under the first, so a control's number still starts its line.
        std::string_view rest = words;
        std::string hang = lead;
        while (width > lead.size() + 8 && lead.size() + columnsOf(rest) > width) {
            const std::size_t room = width - lead.size();
            const std::size_t cut = offsetOfColumn(rest, room);
            auto space = rest.substr(0, cut + 1).rfind(' ');
            const bool atWord = space != std::string_view::npos && space > 0;
            const std::size_t take = atWord ? space : cut;
            lines_.push_back(lead + std::string(rest.substr(0, take)));
            rest = rest.substr(atWord ? take + 1 : take);
            while (!rest.empty() && rest.front() == ' ') rest.remove_prefix(1);
            if (lead == hang) lead += "    ";
        }
        lines_.push_back(lead + std::string(rest));
    }

    // Art is never wrapped: it is drawn only when it fits.
    void rawLine(int indent, const std::string& words) {
        if (!draws_) return;
        lines_.push_back(std::string(static_cast<std::size_t>(indent) * 2, ' ') + words);
    }

    void code(const Node& node, int indent) {
        const std::string description = inlineForm(node);
        std::vector<std::string> art;
        if (auto pixels = readPngDarkness(node.pngBytes ? std::string_view(*node.pngBytes) : std::string_view()))
            if (auto modules = modulesOf(*pixels)) art = halfBlocks(*modules, quietModules, options_.invert);
        const std::size_t needed = art.empty() ? 0 : columnsOf(art.front()) + static_cast<std::size_t>(indent) * 2;
        if (!art.empty() && options_.width > 0 && needed > static_cast<std::size_t>(options_.width)) {
            line(indent, description + " (needs a terminal " + std::to_string(needed) + " columns wide)");
            return;
        }
        line(indent, description);
        for (const auto& piece : art) rawLine(indent, piece);
    }

    void helpLine(const Node& node, int indent, const std::string& prefix = {}) {
        if (!options_.help || node.helpText.empty()) return;
        for (const auto& piece : linesOf(node.helpText)) line(indent, "? " + prefix + piece);
    }

    // A run of inline nodes on one line; their help and menu items follow underneath.
    void inlineRun(const std::vector<const Node*>& run, int indent, std::string lead) {
        std::string joined = std::move(lead);
        for (const Node* node : run) {
            if (!joined.empty()) joined += "  ";
            joined += inlineForm(*node);
        }
        line(indent, joined);
        const bool alone = run.size() == 1;
        for (const Node* node : run) {
            helpLine(*node, indent + 1, alone ? std::string{} : inlineForm(*node) + ": ");
            if (node->kind == Kind::Menu) children(*node, indent + 1);
        }
    }

    // Children in order: consecutive inline nodes share a line when `together`.
    void children(const Node& parent, int indent, bool together = false) {
        std::vector<const Node*> run;
        auto flush = [&] {
            if (!run.empty()) inlineRun(run, indent, {});
            run.clear();
        };
        for (const auto& child : parent.children) {
            if (child.isAbsent) continue;
            if (isPresented(child)) {
                presented_.push_back(&child);
                continue;
            }
            if (together && isInline(child)) {
                run.push_back(&child);
                continue;
            }
            flush();
            block(child, indent);
        }
        flush();
    }

    void block(const Node& node, int indent) {
        if (node.isAbsent) return;
        if (isPresented(node)) {
            presented_.push_back(&node);
            return;
        }
        switch (node.kind) {
        case Kind::Section:
            // A card without a title still stands apart from the one before it.
            line(indent, node.title.empty() ? std::string("--") : "== " + clean(node.title) + " ==");
            helpLine(node, indent + 1);
            if (!node.detail.empty())
                for (const auto& piece : linesOf(node.detail)) line(indent + 1, piece);
            children(node, indent + 1);
            if (!node.footerText.empty())
                for (const auto& piece : linesOf(node.footerText)) line(indent + 1, piece);
            break;
        case Kind::Row: {
            std::vector<const Node*> trailing;
            std::vector<const Node*> below;
            for (const auto& child : node.children) {
                if (child.isAbsent) continue;
                if (isPresented(child)) presented_.push_back(&child);
                else if (isInline(child)) trailing.push_back(&child);
                else below.push_back(&child);
            }
            std::string lead = clean(node.title) + disabled(node);
            if (trailing.empty()) {
                line(indent, lead);
            } else {
                inlineRun(trailing, indent, lead);
            }
            helpLine(node, indent + 1);
            if (!node.detail.empty())
                for (const auto& piece : linesOf(node.detail)) line(indent + 1, piece);
            for (const Node* child : below) block(*child, indent + 1);
            break;
        }
        case Kind::Stack: children(node, indent, node.axis == Axis::Horizontal); break;
        case Kind::Text:
            for (const auto& piece : linesOf(node.text)) line(indent, piece + annotate(node));
            helpLine(node, indent + 1);
            break;
        case Kind::Separator: line(indent, "----"); break;
        case Kind::Picture:
            if (drawsCode(node)) code(node, indent);
            else line(indent, inlineForm(node));
            helpLine(node, indent + 1);
            break;
        case Kind::Menu:
            if (node.title.empty()) {
                children(node, indent);
            } else {
                line(indent, inlineForm(node));
                helpLine(node, indent + 1);
                children(node, indent + 1);
            }
            break;
        default:
            line(indent, inlineForm(node));
            helpLine(node, indent + 1);
            break;
        }
    }

    void presentation(const Node& node) {
        if (node.kind == Kind::Confirmation) {
            line(0, ">>> Confirmation: " + clean(node.title));
            if (!node.detail.empty())
                for (const auto& piece : linesOf(node.detail)) line(1, piece);
            children(node, 1, true);
        } else {
            line(0, ">>> Sheet: " + clean(node.title));
            children(node, 1);
        }
        line(0, "<<<");
    }

    TextOptions options_;
    const Numbers* numbers_;
    bool draws_ = true;
    Numbers* asDrawn_ = nullptr;
    int drawnNumber_ = 0;
    std::vector<std::string> lines_;
    std::vector<const Node*> presented_;
    std::vector<const Node*> mainControls_;
    std::vector<const Node*> presentedControls_;
    std::unordered_set<const Node*> seen_;
    bool inPresentation_ = false;
};

} // namespace

std::string TextRenderer::render(const Node& root) const { return frame(root).text; }

TextFrame TextRenderer::frame(const Node& root) const {
    if (!options_.numbered) return {Writer(options_, nullptr).finish(root), {}};
    TextFrame out;
    Numbers numbers;
    if (!presentsAnything(root)) {
        // Mostly nothing is presented, and the controls are numbered as they are drawn, in one pass.
        Writer writer(options_, nullptr);
        writer.numberAsDrawn(&numbers);
        out.text = writer.finish(root);
        for (const Node* node : writer.mainControls()) {
            auto found = numbers.find(node);
            out.controls.push_back({node, found == numbers.end() ? 0 : found->second, false});
        }
        return out;
    }
    // A presentation's controls come first: a first pass finds the controls in reading order, the
    // second draws them with numbers.
    Writer finder(options_, nullptr, false);
    finder.finish(root);
    int next = 0;
    for (bool presented : {true, false}) {
        for (const Node* node : presented ? finder.presentedControls() : finder.mainControls()) {
            const int number = node->isEnabled ? ++next : 0;
            if (number) numbers[node] = number;
            out.controls.push_back({node, number, presented});
        }
    }
    out.text = Writer(options_, &numbers).finish(root);
    return out;
}

} // namespace orvan::ui
