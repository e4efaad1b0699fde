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

// The program's own icon: the desktop theme's copy when one is installed, else the one in `share`
// (the bundle's share folder, found from the executable). Null when neither exists.
QIcon appIcon(const QString& share);

// The tray's monochrome icon for a state ("on", "off", "watched", "unreachable") in `color`, as the
// desktop recolours symbolic icons; the symbol `drawn` stands in when no copy of the icon is found.
QIcon trayIcon(std::string_view state, std::string_view drawn, const QColor& color, const QString& share);

} // namespace orvan::ui::qt::SymbolIcons
