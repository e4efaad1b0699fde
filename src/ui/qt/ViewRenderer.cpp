#include "ui/qt/ViewRenderer.h"

#include "ui/qt/MenuRenderer.h"
#include "ui/qt/SymbolIcons.h"

#include <QAbstractButton>
#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDrag>
#include <QDropEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QFontDatabase>
#include <QFrame>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPixmap>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <deque>
#include <map>

namespace orvan::ui::qt {

namespace {

QString qs(const std::string& words) { return QString::fromUtf8(words.data(), static_cast<qsizetype>(words.size())); }
std::string utf8(const QString& words) { return words.toStdString(); }

// Showing or hiding, even to the same state, may ask the layout to be done again; only a change does.
void setShown(QWidget* widget, bool shown) {
    if (widget->isHidden() == shown) widget->setVisible(shown);
}

bool isPresented(const Node& node) { return node.kind == Kind::Confirmation || node.kind == Kind::Sheet; }

// What a widget's signal calls: the closures of the node it stands for in the latest render.
struct Actions {
    std::function<void()> onPress;
    std::function<void(bool)> onToggle;
    std::function<void(const std::string&)> onChoose;
    std::function<void(const std::string&)> onChange;
    std::function<void()> onSubmit;
    std::function<void(int, int)> onMove;
    std::vector<std::string> choiceValues;
};

void take(Actions& actions, const Node& node) {
    actions.onPress = node.onPress;
    actions.onToggle = node.onToggle;
    actions.onChoose = node.onChoose;
    actions.onChange = node.onChange;
    actions.onSubmit = node.onSubmit;
    actions.onMove = node.onMove;
    actions.choiceValues.clear();
    for (const auto& choice : node.choices) actions.choiceValues.push_back(choice.value);
}

// Drag to reorder the children of a vertical stack. Presses that no control inside took reach the
// stack itself; a drag starts from there, and a drop on the same stack tells the new place.
class ReorderFilter final : public QObject {
public:
    static constexpr const char* format = "application/x-orvan-reorder";

    ReorderFilter(QWidget* stack, std::shared_ptr<Actions> actions, std::shared_ptr<ActionDispatcher> dispatcher)
        : QObject(stack), stack_(stack), actions_(std::move(actions)), dispatcher_(std::move(dispatcher)) {}

    // The child at a point of the stack, or -1.
    static int childAt(QWidget* stack, QPoint at) {
        QLayout* layout = stack->layout();
        for (int i = 0; layout && i < layout->count(); ++i)
            if (QWidget* w = layout->itemAt(i)->widget(); w && w->isVisible() && w->geometry().contains(at)) return i;
        return -1;
    }
    // The place a drop at this height goes to: after every child whose middle lies above it.
    static int placeAt(QWidget* stack, QPoint at) {
        QLayout* layout = stack->layout();
        int place = 0;
        for (int i = 0; layout && i < layout->count(); ++i)
            if (QWidget* w = layout->itemAt(i)->widget(); w && w->isVisible() && w->geometry().center().y() < at.y())
                place = i + 1;
        return place;
    }
    static QByteArray payload(QWidget* stack, int from) {
        return QByteArray::number(reinterpret_cast<quintptr>(stack)) + ":" + QByteArray::number(from);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (!actions_->onMove) return false;
        switch (event->type()) {
        case QEvent::MouseButtonPress: {
            auto* press = static_cast<QMouseEvent*>(event);
            if (press->button() == Qt::LeftButton) pressed_ = press->position().toPoint();
            return false;
        }
        case QEvent::MouseMove: {
            auto* move = static_cast<QMouseEvent*>(event);
            if (!(move->buttons() & Qt::LeftButton) || !pressed_) return false;
            if ((move->position().toPoint() - *pressed_).manhattanLength() < QApplication::startDragDistance()) return false;
            const int from = childAt(stack_, *pressed_);
            pressed_.reset();
            if (from < 0) return false;
            auto* mime = new QMimeData;
            mime->setData(format, payload(stack_, from));
            auto* drag = new QDrag(stack_);
            drag->setMimeData(mime);
            if (QWidget* child = stack_->layout()->itemAt(from)->widget()) drag->setPixmap(child->grab());
            drag->exec(Qt::MoveAction);
            return true;
        }
        case QEvent::DragEnter:
        case QEvent::DragMove: {
            auto* drag = static_cast<QDropEvent*>(event);
            if (!ours(drag->mimeData())) return false;
            drag->acceptProposedAction();
            return true;
        }
        case QEvent::Drop: {
            auto* drop = static_cast<QDropEvent*>(event);
            auto from = ours(drop->mimeData());
            if (!from) return false;
            const int to = placeAt(stack_, drop->position().toPoint());
            drop->acceptProposedAction();
            if (to != *from && to != *from + 1)
                dispatcher_->run([call = actions_->onMove, f = *from, to] { call(f, to); });
            return true;
        }
        default: return false;
        }
    }

private:
    // The dragged child's place, when the drag began on this very stack.
    std::optional<int> ours(const QMimeData* mime) const {
        if (!mime || !mime->hasFormat(format)) return std::nullopt;
        const QList<QByteArray> parts = mime->data(format).split(':');
        if (parts.size() != 2 || parts[0] != QByteArray::number(reinterpret_cast<quintptr>(stack_))) return std::nullopt;
        bool ok = false;
        const int from = parts[1].toInt(&ok);
        if (!ok) return std::nullopt;
        return from;
    }

    QWidget* stack_;
    std::shared_ptr<Actions> actions_;
    std::shared_ptr<ActionDispatcher> dispatcher_;
    std::optional<QPoint> pressed_;
};

void setText(QLabel* label, const QString& text) {
    if (label->text() != text) label->setText(text);
    setShown(label, !text.isEmpty());
}

// Compared with the widget's own state, not with isEnabled(), which is false under a disabled parent.
void setEnabledTo(QWidget* widget, bool enabled) {
    if (widget->testAttribute(Qt::WA_ForceDisabled) == enabled) widget->setEnabled(enabled);
}

void setHelp(QWidget* widget, const QString& help) {
    if (!widget) return;
    if (widget->toolTip() != help) widget->setToolTip(help);
    if (widget->accessibleDescription() != help) widget->setAccessibleDescription(help);
}

void setAccessibleName(QWidget* widget, const QString& name) {
    if (widget && widget->accessibleName() != name) widget->setAccessibleName(name);
}

QLabel* wrappingLabel(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText); // words from the bridge are never markup
    label->setWordWrap(true);
    return label;
}

// A control with its title on one line: the holder, its row layout, and the title label in it.
std::pair<QWidget*, QHBoxLayout*> titledLine(QWidget* parent, QLabel*& title) {
    auto* holder = new QWidget(parent);
    auto* line = new QHBoxLayout(holder);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(8);
    title = wrappingLabel(holder);
    title->setWordWrap(false);
    return {holder, line};
}

void applyStyle(QWidget* widget, TextStyle style) {
    QFont font = QApplication::font();
    switch (style) {
    case TextStyle::Body: break;
    case TextStyle::Title:
        font.setPointSizeF(font.pointSizeF() * 1.45);
        font.setWeight(QFont::DemiBold);
        break;
    case TextStyle::Headline: font.setWeight(QFont::DemiBold); break;
    case TextStyle::Caption: font.setPointSizeF(font.pointSizeF() * 0.88); break;
    case TextStyle::Monospaced: font = QFontDatabase::systemFont(QFontDatabase::FixedFont); break;
    }
    widget->setFont(font);
}

void applyTone(QWidget* widget, const TonePalette& tones, Tone tone, QPalette::ColorRole role = QPalette::WindowText) {
    QPalette palette = widget->palette();
    if (tone == Tone::Normal) {
        // Normal text follows the window's own palette, so a change of theme reaches it.
        widget->setPalette(QPalette());
        return;
    }
    palette.setColor(role, tones.color(tone));
    palette.setColor(QPalette::Text, tones.color(tone));
    widget->setPalette(palette);
}

// A separator is a hairline across its stack: one pixel thick, as long as the stack wants.
void shapeLine(QFrame* line, bool acrossARow) {
    const QFrame::Shape shape = acrossARow ? QFrame::VLine : QFrame::HLine;
    if (line->frameShape() == shape && (acrossARow ? line->maximumWidth() : line->maximumHeight()) == 1) return;
    line->setFrameShape(shape);
    line->setMinimumSize(0, 0);
    line->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    if (acrossARow) line->setFixedWidth(1);
    else line->setFixedHeight(1);
}

} // namespace

struct ViewRenderer::Mounted {
    Kind kind = Kind::Stack;
    Axis axis = Axis::Vertical;
    std::string identity;
    std::string key;
    QPointer<QWidget> widget;
    QPointer<QWidget> control; // the part that takes focus and help, when not the widget itself
    QBoxLayout* childLayout = nullptr;
    QLabel* titleLabel = nullptr;
    QLabel* detailLabel = nullptr;
    QLabel* footerLabel = nullptr;
    std::shared_ptr<Actions> actions = std::make_shared<Actions>();
    std::vector<std::unique_ptr<Mounted>> children;

    // What was last applied, so an unchanged node costs nothing.
    int styledGeneration = 0;
    TextStyle style = TextStyle::Body;
    Tone tone = Tone::Normal;
    Role role = Role::Normal;
    std::string symbol;
    std::shared_ptr<const std::string> png;
    int width = -1;
    int height = -1;
    bool pixelated = false;
    PickerStyle pickerStyle = PickerStyle::Segmented;
    std::vector<Choice> choices;
    QButtonGroup* group = nullptr;
    std::unique_ptr<MenuRenderer> menu;
    int wordless = -1;     // a row: whether it has no words of its own, as last laid out
    int selected = -2;     // a segmented picker: the choice last drawn as chosen
    QPointer<QShortcut> escape; // a Cancel-role button: Escape in its section, owned by the section

    ~Mounted() { dropEscape(); }
    // Later, not now: the shortcut may be the sender of the signal that led to this render.
    void dropEscape() {
        if (!escape) return;
        escape->setEnabled(false);
        escape->deleteLater();
        escape = nullptr;
    }

    // A field's conversation with its model: the tree's text at the last render, and what the
    // user's typing has reported lately. A tree that repeats either while the user types is an
    // echo that lags behind the keyboard, not a change to apply.
    // Shared with the field's signal, which may outlive this record by a turn when the field
    // is being replaced.
    std::string treeText;
    std::shared_ptr<std::deque<std::string>> sent = std::make_shared<std::deque<std::string>>();
};

struct ViewRenderer::Presented {
    Kind kind = Kind::Confirmation;
    std::string identity;
    bool answered = false;
    std::shared_ptr<bool> closingByTree = std::make_shared<bool>(false);
    QPointer<QMessageBox> box;
    std::vector<QPointer<QAbstractButton>> buttons;
    std::shared_ptr<std::vector<Actions>> buttonActions = std::make_shared<std::vector<Actions>>();
    QPointer<QDialog> dialog;
    QPointer<QWidget> sheetBody;
    std::shared_ptr<Actions> dismiss = std::make_shared<Actions>();
    std::unique_ptr<ViewRenderer> content;

    ~Presented() {
        *closingByTree = true;
        content.reset();
        if (box) {
            box->hide();
            box->deleteLater();
        }
        if (dialog) {
            dialog->done(QDialog::Rejected);
            dialog->deleteLater();
        }
    }
};

ViewRenderer::ViewRenderer(QWidget* container, std::shared_ptr<ActionDispatcher> dispatcher)
    : container_(container), dispatcher_(std::move(dispatcher)),
      tones_(TonePalette::fromPalette(container ? container->palette() : QPalette())) {
    if (!container_) return;
    layout_ = qobject_cast<QVBoxLayout*>(container_->layout());
    if (!layout_) {
        layout_ = new QVBoxLayout(container_);
        layout_->setContentsMargins(0, 0, 0, 0);
    }
}

ViewRenderer::~ViewRenderer() {
    presented_.clear();
    if (root_ && root_->widget) delete root_->widget.data();
}

void ViewRenderer::setTonePalette(const TonePalette& tones) {
    if (tones == tones_) return;
    tones_ = tones;
    ++paletteGeneration_;
}

QWidget* ViewRenderer::rootWidget() const { return root_ ? root_->widget.data() : nullptr; }

QWidget* ViewRenderer::widgetForKey(const std::string& key) const {
    std::vector<const Mounted*> pending;
    if (root_) pending.push_back(root_.get());
    while (!pending.empty()) {
        const Mounted* m = pending.back();
        pending.pop_back();
        if (m->key == key) {
            if (m->kind == Kind::Field || m->kind == Kind::SecureField) return m->control;
            return m->widget;
        }
        for (auto it = m->children.rbegin(); it != m->children.rend(); ++it) pending.push_back(it->get());
    }
    return nullptr;
}

void ViewRenderer::render(const Node& root) {
    if (!container_) return;
    ++renders_;
    dispatcher_->beginRender();
    answeringUser_ = dispatcher_->actionsRun() != seenActions_;
    seenActions_ = dispatcher_->actionsRun();
    focusNext_ = nullptr;
    sections_.clear();
    escapeTaken_.clear();
    std::vector<const Node*> presentations;
    structureChanged_ = false;
    const bool wasRoot = root_ != nullptr;
    QWidget* before = rootWidget();
    if (root.isAbsent) {
        if (root_ && root_->widget) root_->widget->deleteLater();
        root_.reset();
    } else if (isPresented(root)) {
        // A tree that is only a presentation draws nothing of its own.
        if (root_ && root_->widget) root_->widget->deleteLater();
        root_.reset();
        presentations.push_back(&root);
    } else {
        reconcile(root_, root, container_, false, presentations);
    }
    if (rootWidget() != before || !wasRoot) {
        if (rootWidget() && layout_->indexOf(rootWidget()) < 0) layout_->insertWidget(0, rootWidget());
        structureChanged_ = true;
    }
    if (structureChanged_) orderTabs();
    if (focusNext_ && focusNext_->isEnabled()) {
        focusNext_->setFocus(Qt::OtherFocusReason);
        focusNext_->selectAll();
    }
    focusNext_ = nullptr;
    present(presentations);
    dispatcher_->endRender();
}

void ViewRenderer::reconcile(std::unique_ptr<Mounted>& slot, const Node& node, QWidget* parent, bool horizontalParent,
                             std::vector<const Node*>& presentations) {
    const bool fits = slot && slot->widget && slot->kind == node.kind &&
                      (node.kind != Kind::Stack || slot->axis == node.axis);
    if (!fits) {
        if (slot && slot->widget) {
            slot->widget->hide();
            slot->widget->deleteLater();
        }
        slot = create(node, parent, horizontalParent);
        structureChanged_ = true;
    }
    update(*slot, node, horizontalParent);
    if (!slot->childLayout) return;
    const bool section = node.kind == Kind::Section;
    if (section) sections_.push_back(slot->widget);
    reconcileChildren(*slot, node, presentations);
    if (section) sections_.pop_back();
}

void ViewRenderer::reconcileChildren(Mounted& mounted, const Node& node, std::vector<const Node*>& presentations) {
    // Old children by identity; each may be taken once.
    std::map<std::string, std::unique_ptr<Mounted>> old;
    for (auto& child : mounted.children) {
        std::string identity = child->identity;
        old.emplace(std::move(identity), std::move(child));
    }
    mounted.children.clear();

    std::map<std::string, int> seenKeys;
    std::map<Kind, int> unkeyed;
    const bool horizontal = mounted.kind == Kind::Row || (mounted.kind == Kind::Stack && mounted.axis == Axis::Horizontal);
    QWidget* parent = mounted.childLayout->parentWidget();
    for (const auto& child : node.children) {
        if (child.isAbsent) continue;
        if (isPresented(child)) {
            presentations.push_back(&child);
            continue;
        }
        std::string identity;
        if (!child.identity.empty()) {
            // A key given twice names two nodes; the second is told apart by its count.
            const int repeat = seenKeys[child.identity]++;
            identity = "k:" + child.identity + (repeat ? "#" + std::to_string(repeat) : std::string{});
        } else {
            identity = "p:" + std::to_string(static_cast<int>(child.kind)) + ":" + std::to_string(unkeyed[child.kind]++);
        }
        std::unique_ptr<Mounted> slot;
        if (auto found = old.find(identity); found != old.end()) {
            slot = std::move(found->second);
            old.erase(found);
        }
        reconcile(slot, child, parent, horizontal, presentations);
        slot->identity = std::move(identity);
        mounted.children.push_back(std::move(slot));
    }
    for (auto& [identity, gone] : old) {
        if (gone && gone->widget) {
            mounted.childLayout->removeWidget(gone->widget);
            gone->widget->hide();
            gone->widget->deleteLater();
        }
        structureChanged_ = true;
    }

    // Put the widgets in the tree's order; moved widgets are the same objects, only placed anew.
    bool inOrder = true;
    for (std::size_t i = 0; i < mounted.children.size(); ++i)
        if (mounted.childLayout->indexOf(mounted.children[i]->widget) != static_cast<int>(i)) inOrder = false;
    if (!inOrder) {
        for (const auto& child : mounted.children) mounted.childLayout->removeWidget(child->widget);
        for (std::size_t i = 0; i < mounted.children.size(); ++i) {
            const Mounted& child = *mounted.children[i];
            // Controls keep their natural width in a column; text takes the room in a line.
            int stretch = 0;
            Qt::Alignment alignment;
            if (horizontal && child.kind == Kind::Text) stretch = 1;
            if (!horizontal && (child.kind == Kind::Button || child.kind == Kind::Menu || child.kind == Kind::Link ||
                                child.kind == Kind::Symbol || child.kind == Kind::Picture))
                alignment = Qt::AlignLeft;
            mounted.childLayout->insertWidget(static_cast<int>(i), child.widget, stretch, alignment);
            child.widget->show();
        }
        structureChanged_ = true;
    }
}

std::unique_ptr<ViewRenderer::Mounted> ViewRenderer::create(const Node& node, QWidget* parent, bool horizontalParent) {
    auto m = std::make_unique<Mounted>();
    m->kind = node.kind;
    m->axis = node.axis;
    const auto actions = m->actions;
    const auto dispatcher = dispatcher_;

    switch (node.kind) {
    case Kind::Section: {
        auto* frame = new QFrame(parent);
        frame->setObjectName(QStringLiteral("section"));
        frame->setFrameShape(QFrame::StyledPanel);
        auto* box = new QVBoxLayout(frame);
        box->setContentsMargins(14, 12, 14, 12);
        box->setSpacing(6);
        m->titleLabel = wrappingLabel(frame);
        applyStyle(m->titleLabel, TextStyle::Headline);
        m->detailLabel = wrappingLabel(frame);
        m->footerLabel = wrappingLabel(frame);
        auto* body = new QWidget(frame);
        m->childLayout = new QVBoxLayout(body);
        m->childLayout->setContentsMargins(0, 4, 0, 0);
        m->childLayout->setSpacing(8);
        box->addWidget(m->titleLabel);
        box->addWidget(m->detailLabel);
        box->addWidget(body);
        box->addWidget(m->footerLabel);
        m->widget = frame;
        break;
    }
    case Kind::Row: {
        auto* row = new QWidget(parent);
        auto* line = new QHBoxLayout(row);
        line->setContentsMargins(0, 0, 0, 0);
        line->setSpacing(10);
        auto* words = new QWidget(row);
        auto* column = new QVBoxLayout(words);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(2);
        m->titleLabel = wrappingLabel(words);
        m->detailLabel = wrappingLabel(words);
        column->addWidget(m->titleLabel);
        column->addWidget(m->detailLabel);
        auto* trailing = new QWidget(row);
        m->childLayout = new QHBoxLayout(trailing);
        m->childLayout->setContentsMargins(0, 0, 0, 0);
        m->childLayout->setSpacing(6);
        line->addWidget(words, 1);
        line->addWidget(trailing, 0, Qt::AlignRight | Qt::AlignVCenter);
        m->widget = row;
        break;
    }
    case Kind::Stack: {
        auto* stack = new QWidget(parent);
        if (node.axis == Axis::Horizontal) {
            m->childLayout = new QHBoxLayout(stack);
            m->childLayout->setSpacing(8);
            m->childLayout->addStretch(1);
        } else {
            m->childLayout = new QVBoxLayout(stack);
            m->childLayout->setSpacing(8);
            stack->installEventFilter(new ReorderFilter(stack, actions, dispatcher));
        }
        m->childLayout->setContentsMargins(0, 0, 0, 0);
        m->widget = stack;
        break;
    }
    case Kind::Text: {
        m->widget = wrappingLabel(parent);
        break;
    }
    case Kind::Button: {
        auto* button = new QPushButton(parent);
        button->setAutoDefault(false);
        QObject::connect(button, &QPushButton::clicked, button, [actions, dispatcher] { dispatcher->run(actions->onPress); });
        m->widget = button;
        break;
    }
    case Kind::Switch: {
        auto* box = new QCheckBox(parent);
        // `clicked` comes only from the user; the tree's own state is set with signals blocked.
        QObject::connect(box, &QCheckBox::clicked, box, [actions, dispatcher](bool on) {
            if (actions->onToggle) dispatcher->run([call = actions->onToggle, on] { call(on); });
        });
        m->widget = box;
        break;
    }
    case Kind::Picker: {
        auto [holder, line] = titledLine(parent, m->titleLabel);
        line->addWidget(m->titleLabel);
        m->widget = holder;
        m->choices.clear();
        m->pickerStyle = node.pickerStyle;
        m->width = -1; // the choices are built by update
        break;
    }
    case Kind::Field:
    case Kind::SecureField: {
        auto [holder, line] = titledLine(parent, m->titleLabel);
        auto* edit = new QLineEdit(holder);
        edit->setObjectName(qs(node.identity));
        edit->setTextMargins(4, 1, 4, 1);
        if (node.kind == Kind::SecureField) {
            edit->setEchoMode(QLineEdit::Password);
            edit->setAttribute(Qt::WA_InputMethodEnabled, false);
        }
        m->titleLabel->setBuddy(edit);
        line->addWidget(m->titleLabel);
        line->addWidget(edit, 1);
        const auto sent = m->sent;
        QObject::connect(edit, &QLineEdit::textEdited, edit, [sent, actions, dispatcher](const QString& text) {
            std::string typed = utf8(text);
            sent->push_back(typed);
            if (sent->size() > 32) sent->pop_front();
            if (actions->onChange) dispatcher->runTyping([call = actions->onChange, typed] { call(typed); });
        });
        QObject::connect(edit, &QLineEdit::returnPressed, edit, [actions, dispatcher] { dispatcher->run(actions->onSubmit); });
        if (answeringUser_ && !focusNext_) focusNext_ = edit;
        m->control = edit;
        m->widget = holder;
        break;
    }
    case Kind::Picture: {
        auto* label = new QLabel(parent);
        label->setAlignment(Qt::AlignCenter);
        m->widget = label;
        break;
    }
    case Kind::Progress:
    case Kind::Spinner: {
        auto [holder, line] = titledLine(parent, m->titleLabel);
        auto* bar = new QProgressBar(holder);
        bar->setTextVisible(false);
        if (node.kind == Kind::Spinner) {
            bar->setRange(0, 0);
            bar->setFixedWidth(48);
            line->addWidget(bar);
            line->addWidget(m->titleLabel, 1);
        } else {
            line->addWidget(m->titleLabel);
            line->addWidget(bar, 1);
        }
        m->control = bar;
        m->widget = holder;
        break;
    }
    case Kind::Symbol: {
        auto* label = new QLabel(parent);
        label->setFixedSize(18, 18);
        m->widget = label;
        break;
    }
    case Kind::Menu: {
        auto* button = new QToolButton(parent);
        button->setPopupMode(QToolButton::InstantPopup);
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        button->setFocusPolicy(Qt::StrongFocus);
        auto* menu = new QMenu(button);
        button->setMenu(menu);
        m->menu = std::make_unique<MenuRenderer>(menu, dispatcher_);
        m->widget = button;
        break;
    }
    case Kind::Separator: {
        auto* line = new QFrame(parent);
        shapeLine(line, horizontalParent);
        m->widget = line;
        break;
    }
    case Kind::Link: {
        auto* label = new QLabel(parent);
        label->setTextFormat(Qt::RichText);
        label->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
        label->setFocusPolicy(Qt::StrongFocus);
        QObject::connect(label, &QLabel::linkActivated, label, [actions, dispatcher] { dispatcher->run(actions->onPress); });
        m->widget = label;
        break;
    }
    case Kind::Confirmation:
    case Kind::Sheet: {
        // Never mounted in place; kept out by the callers. An empty widget keeps the slot valid.
        m->widget = new QWidget(parent);
        m->widget->hide();
        break;
    }
    }
    if (m->widget && m->widget->parentWidget() == parent) m->widget->show();
    return m;
}

void ViewRenderer::update(Mounted& m, const Node& node, bool horizontalParent) {
    take(*m.actions, node);
    m.key = node.identity;
    QWidget* widget = m.widget;
    QWidget* focus = m.control ? m.control.data() : widget;
    const QString help = qs(node.helpText);
    setHelp(widget, help);
    if (focus != widget) setHelp(focus, help);
    setEnabledTo(widget, node.isEnabled);
    const bool restyle = m.styledGeneration != paletteGeneration_;
    m.styledGeneration = paletteGeneration_;

    switch (node.kind) {
    case Kind::Section:
        setText(m.titleLabel, qs(node.title));
        setText(m.detailLabel, qs(node.detail));
        setText(m.footerLabel, qs(node.footerText));
        if (restyle) {
            applyTone(m.detailLabel, tones_, Tone::Dim);
            applyTone(m.footerLabel, tones_, Tone::Dim);
        }
        setAccessibleName(widget, qs(node.title));
        break;
    case Kind::Row: {
        setText(m.titleLabel, qs(node.title));
        setText(m.detailLabel, qs(node.detail));
        if (restyle) applyTone(m.detailLabel, tones_, Tone::Dim);
        // A row of controls only (a field with its buttons) gives its width to the controls.
        QWidget* words = m.titleLabel->parentWidget();
        const bool wordless = node.title.empty() && node.detail.empty();
        setShown(words, !wordless);
        // Qt lays the whole window out again on any of these calls, even with the same values.
        auto* line = static_cast<QHBoxLayout*>(widget->layout());
        if (line && m.wordless != int(wordless)) {
            line->setStretchFactor(words, wordless ? 0 : 1);
            line->setStretchFactor(m.childLayout->parentWidget(), wordless ? 1 : 0);
            line->setAlignment(m.childLayout->parentWidget(), wordless ? Qt::Alignment() : Qt::AlignRight | Qt::AlignVCenter);
            m.wordless = wordless;
        }
        break;
    }
    case Kind::Stack:
        if (widget->acceptDrops() != bool(node.onMove)) widget->setAcceptDrops(bool(node.onMove));
        break;
    case Kind::Text: {
        auto* label = static_cast<QLabel*>(widget);
        const QString words = qs(node.text);
        if (label->text() != words) label->setText(words);
        if (restyle || m.style != node.textStyle) applyStyle(label, node.textStyle);
        if (restyle || m.tone != node.textTone) applyTone(label, tones_, node.textTone);
        m.style = node.textStyle;
        m.tone = node.textTone;
        const Qt::TextInteractionFlags flags = node.isSelectable
                                                   ? Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard
                                                   : Qt::NoTextInteraction;
        if (label->textInteractionFlags() != flags) {
            label->setTextInteractionFlags(flags);
            label->setFocusPolicy(node.isSelectable ? Qt::StrongFocus : Qt::NoFocus);
        }
        break;
    }
    case Kind::Button: {
        auto* button = static_cast<QPushButton*>(widget);
        const QString title = literalTitle(node.title);
        if (button->text() != title) button->setText(title);
        setAccessibleName(button, qs(node.title));
        if (restyle || m.role != node.buttonRole) {
            button->setDefault(node.buttonRole == Role::Primary);
            if (node.buttonRole == Role::Destructive)
                applyTone(button, tones_, Tone::Danger, QPalette::ButtonText);
            else
                button->setPalette(QPalette());
            button->setProperty("role", QString::fromLatin1(roleName(node.buttonRole)));
            button->update(); // the style reads the role when it paints
            m.role = node.buttonRole;
        }
        const QKeySequence keys(qs(node.shortcutKeys));
        if (button->shortcut() != keys) button->setShortcut(keys);
        // The first Cancel of a section answers Escape there; a second would make Escape ambiguous.
        QWidget* section = node.buttonRole == Role::Cancel && !sections_.empty() ? sections_.back() : nullptr;
        if (section && !escapeTaken_.insert(section).second) section = nullptr;
        if (m.escape && m.escape->parent() != section) m.dropEscape();
        if (section && !m.escape) {
            m.escape = new QShortcut(QKeySequence(Qt::Key_Escape), section);
            m.escape->setContext(Qt::WidgetWithChildrenShortcut);
            const auto actions = m.actions;
            const auto dispatcher = dispatcher_;
            QPointer<QPushButton> owner = button;
            QObject::connect(m.escape.data(), &QShortcut::activated, m.escape.data(), [actions, dispatcher, owner] {
                if (owner && owner->isEnabled() && owner->isVisible()) dispatcher->run(actions->onPress);
            });
        }
        break;
    }
    case Kind::Switch: {
        auto* box = static_cast<QCheckBox*>(widget);
        const QString title = literalTitle(node.title);
        if (box->text() != title) box->setText(title);
        if (box->isChecked() != node.isOn) {
            const QSignalBlocker quiet(box);
            box->setChecked(node.isOn);
        }
        break;
    }
    case Kind::Picker: {
        const std::string& label = node.pickerLabel.empty() ? node.title : node.pickerLabel;
        setText(m.titleLabel, qs(label));
        const bool rebuild = m.width < 0 || m.choices != node.choices || m.pickerStyle != node.pickerStyle;
        auto* line = static_cast<QHBoxLayout*>(widget->layout());
        if (rebuild) {
            // The old choices may be the sender of the signal that led here; let it return first.
            if (m.control) {
                line->removeWidget(m.control);
                m.control->hide();
                m.control->deleteLater();
            }
            m.group = nullptr; // owned by the old choices
            m.choices = node.choices;
            m.pickerStyle = node.pickerStyle;
            m.width = 0;
            const auto actions = m.actions;
            const auto dispatcher = dispatcher_;
            auto choose = [actions, dispatcher](int index) {
                if (index < 0 || index >= static_cast<int>(actions->choiceValues.size()) || !actions->onChoose) return;
                dispatcher->run([call = actions->onChoose, value = actions->choiceValues[static_cast<std::size_t>(index)]] {
                    call(value);
                });
            };
            if (node.pickerStyle == PickerStyle::Menu) {
                auto* combo = new QComboBox(widget);
                for (const auto& choice : node.choices) combo->addItem(qs(choice.title));
                QObject::connect(combo, &QComboBox::activated, combo, choose);
                m.control = combo;
            } else {
                auto* choicesBox = new QWidget(widget);
                QBoxLayout* choiceLine = node.pickerStyle == PickerStyle::Radio
                                             ? static_cast<QBoxLayout*>(new QVBoxLayout(choicesBox))
                                             : static_cast<QBoxLayout*>(new QHBoxLayout(choicesBox));
                choiceLine->setContentsMargins(0, 0, 0, 0);
                choiceLine->setSpacing(node.pickerStyle == PickerStyle::Radio ? 4 : 0);
                m.group = new QButtonGroup(choicesBox);
                m.group->setExclusive(true);
                int id = 0;
                for (const auto& choice : node.choices) {
                    QAbstractButton* option = nullptr;
                    if (node.pickerStyle == PickerStyle::Radio) {
                        option = new QRadioButton(literalTitle(choice.title), choicesBox);
                    } else {
                        auto* segment = new QPushButton(literalTitle(choice.title), choicesBox);
                        segment->setCheckable(true);
                        segment->setAutoDefault(false);
                        option = segment;
                    }
                    m.group->addButton(option, id++);
                    choiceLine->addWidget(option);
                }
                QObject::connect(m.group, &QButtonGroup::idClicked, choicesBox, choose);
                m.control = choicesBox;
            }
            line->insertWidget(1, m.control);
            if (line->count() == 2) line->addStretch(1);
            setHelp(m.control, help);
            structureChanged_ = true;
        }
        setAccessibleName(m.control, qs(label));
        int selected = -1;
        for (std::size_t i = 0; i < node.choices.size(); ++i)
            if (node.choices[i].value == node.selectedValue) selected = static_cast<int>(i);
        if (auto* combo = qobject_cast<QComboBox*>(m.control.data())) {
            if (combo->currentIndex() != selected) {
                const QSignalBlocker quiet(combo);
                combo->setCurrentIndex(selected);
            }
        } else if (m.group) {
            const QSignalBlocker quiet(m.group);
            if (selected < 0) {
                // An exclusive group cannot uncheck its last button; lift the rule for a moment.
                m.group->setExclusive(false);
                for (auto* option : m.group->buttons()) option->setChecked(false);
                m.group->setExclusive(true);
            } else if (auto* option = m.group->button(selected); option && !option->isChecked()) {
                option->setChecked(true);
            }
            if (m.pickerStyle == PickerStyle::Segmented && (restyle || rebuild || m.selected != selected)) {
                m.selected = selected;
                for (auto* option : m.group->buttons()) {
                    const bool chosen = option->isChecked();
                    QFont font = option->font();
                    if (font.bold() != chosen) {
                        font.setBold(chosen);
                        option->setFont(font);
                    }
                    if (chosen) applyTone(option, tones_, Tone::Accent, QPalette::ButtonText);
                    else option->setPalette(QPalette());
                }
            }
        }
        break;
    }
    case Kind::Field:
    case Kind::SecureField: {
        setText(m.titleLabel, qs(node.title));
        auto* edit = static_cast<QLineEdit*>(m.control.data());
        setAccessibleName(edit, qs(node.title.empty() ? node.placeholderText : node.title));
        const QString placeholder = qs(node.placeholderText);
        if (edit->placeholderText() != placeholder) edit->setPlaceholderText(placeholder);
        setEnabledTo(edit, node.isEnabled);
        const QString want = qs(node.text);
        if (edit->text() != want) {
            const bool typing = edit->hasFocus() && !m.sent->empty();
            const bool stale = node.text == m.treeText ||
                               std::find(m.sent->begin(), m.sent->end(), node.text) != m.sent->end();
            if (!(typing && stale)) {
                const int caret = edit->cursorPosition();
                const QSignalBlocker quiet(edit);
                edit->setText(want);
                if (edit->hasFocus()) edit->setCursorPosition(std::min(caret, static_cast<int>(want.size())));
                m.sent->clear();
            }
        } else if (!edit->hasFocus()) {
            m.sent->clear();
        }
        m.treeText = node.text;
        break;
    }
    case Kind::Picture: {
        auto* label = static_cast<QLabel*>(widget);
        const bool samePicture = m.png == node.pngBytes || (m.png && node.pngBytes && *m.png == *node.pngBytes);
        if (!samePicture || m.width != node.width || m.height != node.height ||
            m.pixelated != node.isPixelated) {
            m.png = node.pngBytes;
            m.width = node.width;
            m.height = node.height;
            m.pixelated = node.isPixelated;
            const QImage image = QImage::fromData(
                QByteArray::fromRawData(node.pngBytes->data(), static_cast<qsizetype>(node.pngBytes->size())), "PNG");
            if (image.isNull()) {
                // Bytes that are not a picture show the description rather than nothing.
                label->setPixmap(QPixmap());
                label->setText(qs(node.title));
            } else {
                const QSize size = node.width > 0 && node.height > 0 ? QSize(node.width, node.height) : image.size();
                const qreal ratio = label->devicePixelRatioF();
                QPixmap pixmap = QPixmap::fromImage(image.scaled(
                    size * ratio, Qt::KeepAspectRatio,
                    node.isPixelated ? Qt::FastTransformation : Qt::SmoothTransformation));
                pixmap.setDevicePixelRatio(ratio);
                label->setPixmap(pixmap);
                label->setFixedSize(size);
            }
        }
        setAccessibleName(label, qs(node.title));
        break;
    }
    case Kind::Progress:
    case Kind::Spinner: {
        setText(m.titleLabel, qs(node.title));
        auto* bar = static_cast<QProgressBar*>(m.control.data());
        if (node.kind == Kind::Progress) {
            if (node.fraction) {
                if (bar->maximum() != 1000) bar->setRange(0, 1000);
                const int value = static_cast<int>(std::lround(*node.fraction * 1000));
                if (bar->value() != value) bar->setValue(value);
            } else if (bar->maximum() != 0) {
                bar->setRange(0, 0);
            }
        }
        setAccessibleName(bar, qs(node.title));
        break;
    }
    case Kind::Symbol: {
        auto* label = static_cast<QLabel*>(widget);
        if (restyle || m.symbol != node.symbolName || m.tone != node.textTone) {
            label->setPixmap(SymbolIcons::pixmap(node.symbolName, tones_.color(node.textTone), 18, label->devicePixelRatioF()));
            m.symbol = node.symbolName;
            m.tone = node.textTone;
        }
        setAccessibleName(label, qs(node.title.empty() ? node.symbolName : node.title));
        break;
    }
    case Kind::Menu: {
        auto* button = static_cast<QToolButton*>(widget);
        const QString title = literalTitle(node.title);
        if (button->text() != title) button->setText(title);
        setAccessibleName(button, qs(node.title));
        if (restyle) m.menu->setTonePalette(tones_);
        m.menu->render(node);
        break;
    }
    case Kind::Separator: {
        shapeLine(static_cast<QFrame*>(widget), horizontalParent);
        break;
    }
    case Kind::Link: {
        auto* label = static_cast<QLabel*>(widget);
        const QString markup = QStringLiteral("<a href=\"#\">%1</a>").arg(qs(node.title).toHtmlEscaped());
        if (label->text() != markup) label->setText(markup);
        setAccessibleName(label, qs(node.title));
        break;
    }
    case Kind::Confirmation:
    case Kind::Sheet: break;
    }
}

void ViewRenderer::present(const std::vector<const Node*>& presentations) {
    QWidget* over = container_ ? container_->window() : nullptr;
    std::vector<std::unique_ptr<Presented>> kept;
    std::map<std::string, int> seen;
    for (const Node* node : presentations) {
        const std::string name = node->identity.empty() ? node->title : node->identity;
        const std::string base = std::to_string(static_cast<int>(node->kind)) + ":" + name;
        const int repeat = seen[base]++;
        const std::string identity = base + "#" + std::to_string(repeat);

        std::unique_ptr<Presented> p;
        for (auto& candidate : presented_)
            if (candidate && candidate->identity == identity) p = std::move(candidate);
        const bool fresh = !p;
        if (fresh) {
            p = std::make_unique<Presented>();
            p->kind = node->kind;
            p->identity = identity;
        }

        if (node->kind == Kind::Confirmation) {
            p->buttonActions->clear();
            std::vector<const Node*> buttons;
            for (const auto& child : node->children)
                if (!child.isAbsent && child.kind == Kind::Button) buttons.push_back(&child);
            for (const Node* button : buttons) {
                Actions actions;
                take(actions, *button);
                p->buttonActions->push_back(std::move(actions));
            }
            if (fresh) {
                auto* box = new QMessageBox(over);
                box->setIcon(QMessageBox::NoIcon);
                QAbstractButton* escape = nullptr;
                QPushButton* preferred = nullptr;
                for (const Node* button : buttons) {
                    QMessageBox::ButtonRole role = QMessageBox::AcceptRole;
                    if (button->buttonRole == Role::Cancel) role = QMessageBox::RejectRole;
                    if (button->buttonRole == Role::Destructive) role = QMessageBox::DestructiveRole;
                    QPushButton* made = box->addButton(literalTitle(button->title), role);
                    made->setEnabled(button->isEnabled);
                    setHelp(made, qs(button->helpText));
                    if (button->buttonRole == Role::Cancel && !escape) escape = made;
                    if (button->buttonRole == Role::Primary && !preferred) preferred = made;
                    p->buttons.emplace_back(made);
                }
                if (escape) box->setEscapeButton(escape);
                if (preferred) box->setDefaultButton(preferred);
                Presented* self = p.get();
                const auto dispatcher = dispatcher_;
                const auto all = p->buttonActions;
                const auto closing = p->closingByTree;
                QObject::connect(box, &QMessageBox::buttonClicked, box, [self, all, dispatcher, closing](QAbstractButton* clicked) {
                    if (*closing) return;
                    for (std::size_t i = 0; i < self->buttons.size(); ++i) {
                        if (self->buttons[i] != clicked) continue;
                        self->answered = true;
                        if (i < all->size()) dispatcher->run((*all)[i].onPress);
                        return;
                    }
                });
                QObject::connect(box, &QMessageBox::finished, box, [box, self, closing] {
                    if (!*closing) self->answered = true;
                    box->deleteLater();
                });
                p->box = box;
            }
            if (p->box) {
                const QString title = qs(node->title);
                const QString message = qs(node->detail);
                if (p->box->windowTitle() != title) p->box->setWindowTitle(title);
                if (p->box->text() != title) p->box->setText(title);
                if (p->box->informativeText() != message) p->box->setInformativeText(message);
                for (std::size_t i = 0; i < p->buttons.size() && i < buttons.size(); ++i) {
                    if (!p->buttons[i]) continue;
                    const QString words = literalTitle(buttons[i]->title);
                    if (p->buttons[i]->text() != words) p->buttons[i]->setText(words);
                    if (p->buttons[i]->isEnabled() != buttons[i]->isEnabled) p->buttons[i]->setEnabled(buttons[i]->isEnabled);
                }
                if (fresh) p->box->open();
            }
        } else {
            take(*p->dismiss, *node);
            if (fresh) {
                auto* dialog = new QDialog(over);
                dialog->setWindowModality(Qt::WindowModal);
                auto* box = new QVBoxLayout(dialog);
                box->setContentsMargins(18, 18, 18, 18);
                auto* body = new QWidget(dialog);
                box->addWidget(body);
                p->content = std::make_unique<ViewRenderer>(body, dispatcher_);
                p->sheetBody = body;
                Presented* self = p.get();
                const auto dismiss = p->dismiss;
                const auto dispatcher = dispatcher_;
                const auto closing = p->closingByTree;
                // Escape and the window's close button reject the dialog: the user dismissed it.
                QObject::connect(dialog, &QDialog::rejected, dialog, [self, dismiss, dispatcher, closing] {
                    if (*closing) return;
                    self->answered = true;
                    dispatcher->run(dismiss->onPress);
                });
                p->dialog = dialog;
            }
            if (p->dialog) {
                if (p->dialog->windowTitle() != qs(node->title)) p->dialog->setWindowTitle(qs(node->title));
                p->content->setTonePalette(tones_);
                p->content->render(vstack(node->children));
                if (fresh) p->dialog->open();
            }
        }
        kept.push_back(std::move(p));
    }
    // What left the tree is closed without calling anything: the model already moved on.
    presented_.clear();
    presented_ = std::move(kept);
}

void ViewRenderer::orderTabs() {
    std::vector<QWidget*> chain;
    std::vector<const Mounted*> pending;
    if (root_) pending.push_back(root_.get());
    while (!pending.empty()) {
        const Mounted* m = pending.back();
        pending.pop_back();
        if (!m->widget) continue;
        if (!m->childLayout) {
            if (m->widget->focusPolicy() & Qt::TabFocus) chain.push_back(m->widget);
            for (QWidget* inner : m->widget->findChildren<QWidget*>())
                if ((inner->focusPolicy() & Qt::TabFocus) && !inner->isHidden()) chain.push_back(inner);
        }
        for (auto it = m->children.rbegin(); it != m->children.rend(); ++it) pending.push_back(it->get());
    }
    for (std::size_t i = 1; i < chain.size(); ++i) QWidget::setTabOrder(chain[i - 1], chain[i]);
}

} // namespace orvan::ui::qt
