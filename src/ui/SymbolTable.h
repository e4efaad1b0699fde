#pragma once
// The symbols views name, and how each is drawn. One table, so that a new symbol is one line:
// a theme icon where the desktop's icon theme has a fitting one, and a shape the renderer draws
// itself when it has none or when the symbol's tone carries meaning (a status dot must take the
// accent or dim tone, which a theme icon would not).

#include <string_view>

namespace orvan::ui {

enum class SymbolShape {
    Dot,            // anything not in the table
    Circle,
    FilledCircle,
    EyeCircle,
    Check,
    CheckFilled,
    Warning,
    Alert,
    Phone,
    Computer,
    Waves,
    Bubble,
    Bolt,
    Pointer,
    Code,
};

struct SymbolEntry {
    std::string_view name;
    std::string_view themeIcon; // freedesktop icon name, empty when the drawn shape is preferred
    SymbolShape shape;
};

namespace SymbolTable {
// The entry for a name; an unknown name answers an unnamed dot drawn in its tone, never nothing.
SymbolEntry find(std::string_view name);
bool known(std::string_view name);
} // namespace SymbolTable

} // namespace orvan::ui
