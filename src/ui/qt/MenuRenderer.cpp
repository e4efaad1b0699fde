#include "ui/qt/MenuRenderer.h"

#include "ui/qt/SymbolIcons.h"

#include <QActionGroup>
#include <QMenu>

namespace orvan::ui::qt {

namespace {

QString qs(const std::string& words) { return QString::fromUtf8(words.data(), static_cast<qsizetype>(words.size())); }

// The shape of a list of items: their kinds in order, menus and pickers with their own shape.
// Equal shapes mean the existing actions can take the new words and states.
void describe(const Node& node, std::string& out) {
    for (const auto& child : node.children) {
        if (child.isAbsent) continue;
        out += static_cast<char>('a' + static_cast<int>(child.kind));
        if (child.kind == Kind::Menu) {
            out += '(';
            describe(child, out);
            out += ')';
        } else if (child.kind == Kind::Picker) {
            out += '(' + std::to_string(child.choices.size());
            for (const auto& choice : child.choices) out += ',' + choice.value;
            out += ')';
        }
    }
}

} // namespace

QString literalTitle(const std::string& title) {
    QString text = qs(title);
    text.replace(QLatin1Char('&'), QLatin1String("&&"));
    // An action's title is one line; a newline from a model would break the menu's layout.
    text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return text;
}

struct MenuRenderer::Item {
    Kind kind = Kind::Button;
    QPointer<QAction> action;
    std::vector<QPointer<QAction>> choices;
    std::unique_ptr<MenuRenderer> submenu;
    std::shared_ptr<Node> current = std::make_shared<Node>();
    // The icon last drawn, so that a poll does not draw it again.
    std::string iconSymbol;
    QColor iconColor;
};

MenuRenderer::MenuRenderer(QMenu* menu, std::shared_ptr<ActionDispatcher> dispatcher)
    : menu_(menu), dispatcher_(std::move(dispatcher)), tones_(TonePalette::fromPalette(menu ? menu->palette() : QPalette())) {
    if (menu_) menu_->setToolTipsVisible(true);
}

MenuRenderer::~MenuRenderer() = default;

void MenuRenderer::render(const Node& menuNode) {
    if (!menu_) return;
    std::string shape;
    describe(menuNode, shape);
    if (shape != shape_) {
        rebuild(menuNode);
        shape_ = std::move(shape);
    }
    std::size_t index = 0;
    for (const auto& child : menuNode.children) {
        if (child.isAbsent) continue;
        if (index < items_.size()) update(*items_[index], child);
        ++index;
    }
}

void MenuRenderer::rebuild(const Node& menuNode) {
    items_.clear();
    menu_->clear();
    for (const auto& child : menuNode.children) {
        if (child.isAbsent) continue;
        auto item = std::make_unique<Item>();
        item->kind = child.kind;
        const auto current = item->current;
        const auto dispatcher = dispatcher_;
        switch (child.kind) {
        case Kind::Separator: item->action = menu_->addSeparator(); break;
        case Kind::Menu: {
            QMenu* sub = menu_->addMenu(QString());
            item->action = sub->menuAction();
            item->submenu = std::make_unique<MenuRenderer>(sub, dispatcher_);
            break;
        }
        case Kind::Picker: {
            QMenu* sub = menu_->addMenu(QString());
            item->action = sub->menuAction();
            auto* group = new QActionGroup(sub);
            group->setExclusive(true);
            for (const auto& choice : child.choices) {
                QAction* option = sub->addAction(QString());
                option->setCheckable(true);
                group->addAction(option);
                const std::string value = choice.value;
                QObject::connect(option, &QAction::triggered, option, [current, dispatcher, value] {
                    if (current->onChoose) dispatcher->run([call = current->onChoose, value] { call(value); });
                });
                item->choices.emplace_back(option);
            }
            break;
        }
        default: {
            QAction* action = menu_->addAction(QString());
            item->action = action;
            QObject::connect(action, &QAction::triggered, action, [current, dispatcher](bool checked) {
                if (current->kind == Kind::Switch && current->onToggle)
                    dispatcher->run([call = current->onToggle, checked] { call(checked); });
                else if (current->onPress)
                    dispatcher->run(current->onPress);
            });
            break;
        }
        }
        items_.push_back(std::move(item));
    }
}

void MenuRenderer::update(Item& item, const Node& node) {
    QAction* action = item.action;
    if (!action) return;
    // Keep what the actions will call, without the subtree (a submenu keeps its own).
    *item.current = node;
    item.current->children.clear();
    if (item.kind == Kind::Separator) return;

    const QString help = qs(node.helpText);
    if (action->toolTip() != help) action->setToolTip(help.isEmpty() ? QString() : help);
    if (action->statusTip() != help) action->setStatusTip(help);
    switch (node.kind) {
    case Kind::Menu:
        action->setText(literalTitle(node.title));
        if (item.submenu) item.submenu->render(node);
        break;
    case Kind::Picker: {
        action->setText(literalTitle(node.pickerLabel.empty() ? node.title : node.pickerLabel));
        for (std::size_t i = 0; i < item.choices.size() && i < node.choices.size(); ++i) {
            if (!item.choices[i]) continue;
            item.choices[i]->setText(literalTitle(node.choices[i].title));
            item.choices[i]->setChecked(node.choices[i].value == node.selectedValue);
        }
        break;
    }
    case Kind::Switch:
        action->setText(literalTitle(node.title));
        action->setCheckable(true);
        action->setChecked(node.isOn);
        break;
    case Kind::Text:
        action->setText(literalTitle(node.text));
        action->setEnabled(false);
        return;
    case Kind::Symbol: {
        const QColor color = tones_.color(node.textTone);
        if (item.iconSymbol != node.symbolName || item.iconColor != color || action->icon().isNull()) {
            action->setIcon(SymbolIcons::icon(node.symbolName, color));
            item.iconSymbol = node.symbolName;
            item.iconColor = color;
        }
        action->setText(literalTitle(node.title));
        break;
    }
    case Kind::Field:
    case Kind::SecureField:
        // A menu cannot hold a field; it shows the label only, never the contents.
        action->setText(literalTitle(node.title));
        action->setEnabled(false);
        return;
    default:
        action->setText(literalTitle(node.title));
        if (!node.shortcutKeys.empty()) action->setShortcut(QKeySequence(qs(node.shortcutKeys)));
        break;
    }
    action->setEnabled(node.isEnabled);
}

} // namespace orvan::ui::qt
