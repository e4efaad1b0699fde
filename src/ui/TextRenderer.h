#pragma once
// A tree drawn as plain text: what the headless mode prints and what view tests read.
// The form is stable (the same tree gives the same bytes) and one thing per line:
//
//     == Section title ==
//       Subtitle
//       Row title  [Button]  [x] Switch  [Other] (disabled)
//         secondary line
//       Label: (•) Left  ( ) Right
//       Name: [typed text]
//
// Confirmations and sheets follow the main tree, each under its own marked heading, in the
// order they stand in the tree. A secure field's text is never printed.
//
// For a terminal the same form can number the controls (`4) [Rename]`), keep lines within a
// width, and draw pixelated pictures (codes to scan) as half blocks.

#include "ui/Node.h"
#include "ui/TextCommands.h"

#include <string>

namespace orvan::ui {

struct TextOptions {
    bool help = false;     // a "? ..." line under every node that has help text
    bool detailed = false; // styles, tones, roles and shortcuts in braces
    bool numbered = false; // a number before every enabled control, presentations first
    int width = 0;         // longer lines wrap at words; 0 leaves them whole
    bool drawCodes = false; // pixelated pictures as half blocks under their description
    bool invert = false;    // ...light modules in the foreground instead of dark ones
};

struct TextFrame {
    std::string text;
    Controls controls; // point into the tree drawn, which must outlive them
};

class TextRenderer {
public:
    explicit TextRenderer(TextOptions options = {}) : options_(options) {}

    // The whole tree, each line ending in a newline.
    std::string render(const Node& root) const;
    // The text and, when numbered, the controls its numbers stand for.
    TextFrame frame(const Node& root) const;

    static std::string plain(const Node& root) { return TextRenderer().render(root); }

private:
    TextOptions options_;
};

} // namespace orvan::ui
