#pragma once
// Fills a QMenu from a menu node: buttons and links become actions, switches checkable actions,
// text disabled actions, pickers submenus of exclusive choices, menus submenus. The tray menu
// and the menus inside windows are both drawn this way. While the items keep their kinds and
// order the actions are updated in place, so a menu left open across a re-render stays open.

#include "ui/Node.h"
#include "ui/qt/ActionDispatcher.h"
#include "ui/qt/TonePalette.h"

#include <QPointer>

#include <memory>
#include <string>
#include <vector>

class QAction;
class QMenu;

namespace orvan::ui::qt {

class MenuRenderer {
public:
    MenuRenderer(QMenu* menu, std::shared_ptr<ActionDispatcher> dispatcher);
    ~MenuRenderer();
    MenuRenderer(const MenuRenderer&) = delete;
    MenuRenderer& operator=(const MenuRenderer&) = delete;

    // Draws the node's children as the menu's items; the node's own title is the caller's.
    void render(const Node& menuNode);
    void setTonePalette(const TonePalette& tones) { tones_ = tones; }

    QMenu* menu() const { return menu_; }

private:
    struct Item;
    void rebuild(const Node& menuNode);
    void update(Item& item, const Node& node);

    QPointer<QMenu> menu_;
    std::shared_ptr<ActionDispatcher> dispatcher_;
    TonePalette tones_;
    std::string shape_;
    std::vector<std::unique_ptr<Item>> items_;
};

// Qt reads a lone '&' in a title as a keyboard mnemonic; titles from models are literal text.
QString literalTitle(const std::string& title);

} // namespace orvan::ui::qt
