#pragma once
// Pictures for the symbols in ui/SymbolTable: the desktop theme's icon where the table names
// one and the theme has it, otherwise a shape drawn here in the tone's colour.

#include <QColor>
#include <QIcon>
#include <QPixmap>

#include <string_view>

namespace orvan::ui::qt::SymbolIcons {

// A square picture `size` device-independent pixels wide.
QPixmap pixmap(std::string_view name, const QColor& color, int size, qreal devicePixelRatio = 1.0);

// The same at the sizes a tray or a menu asks for.
QIcon icon(std::string_view name, const QColor& color);

} // namespace orvan::ui::qt::SymbolIcons
