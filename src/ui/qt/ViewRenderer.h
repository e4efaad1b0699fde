#pragma once
// Draws a view tree with Qt Widgets and, on every later render, reconciles: a node keeps the
// widget it had when it stands at the same place with the same kind and key (or, without a key,
// the same position among its unkeyed siblings of that kind). Properties of kept widgets are
// updated in place, so a field being typed into keeps its focus, text, caret and selection
// while a status poll re-renders, and a keyed list keeps its rows' widgets when it reorders.
//
// A field that appears in a render answering the user's own action (Rename, say) takes the
// keyboard focus with its text selected, so what the user types next goes where they expect and
// not into the control that had the focus. A Cancel-role button answers Escape while the focus is
// anywhere in its section.
//
// Confirmations in the tree are shown as message boxes and sheets as modal dialogs for as long
// as they stand in the tree; the dialog of a sheet draws its content with its own renderer.

#include "ui/Node.h"
#include "ui/qt/ActionDispatcher.h"
#include "ui/qt/TonePalette.h"

#include <QPointer>

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

class QLineEdit;
class QWidget;
class QVBoxLayout;

namespace orvan::ui::qt {

class ViewRenderer {
public:
    // Draws into `container` (given a vertical layout if it has none). Dialogs open over the
    // container's window.
    ViewRenderer(QWidget* container, std::shared_ptr<ActionDispatcher> dispatcher);
    ~ViewRenderer();
    ViewRenderer(const ViewRenderer&) = delete;
    ViewRenderer& operator=(const ViewRenderer&) = delete;

    void render(const Node& root);

    // Tones for text and symbols; applied to every widget on the next render.
    void setTonePalette(const TonePalette& tones);

    // The widget drawn for the first node carrying `key`, or null. For a field this is its
    // line edit; for other kinds the node's outermost widget.
    QWidget* widgetForKey(const std::string& key) const;
    QWidget* rootWidget() const;
    int renderCount() const { return renders_; }

    struct Mounted;
    struct Presented;

private:
    void reconcile(std::unique_ptr<Mounted>& slot, const Node& node, QWidget* parent, bool horizontalParent,
                   std::vector<const Node*>& presentations);
    void reconcileChildren(Mounted& mounted, const Node& node, std::vector<const Node*>& presentations);
    std::unique_ptr<Mounted> create(const Node& node, QWidget* parent, bool horizontalParent);
    void update(Mounted& mounted, const Node& node, bool horizontalParent);
    void present(const std::vector<const Node*>& presentations);
    void orderTabs();

    QPointer<QWidget> container_;
    QVBoxLayout* layout_ = nullptr;
    std::shared_ptr<ActionDispatcher> dispatcher_;
    TonePalette tones_;
    int paletteGeneration_ = 1;
    std::unique_ptr<Mounted> root_;
    std::vector<std::unique_ptr<Presented>> presented_;
    bool structureChanged_ = false;
    int renders_ = 0;

    // Within one render pass: whether it answers a user's action, the first field it made, the
    // sections around the node being reconciled and those whose Escape is taken.
    std::uint64_t seenActions_ = 0;
    bool answeringUser_ = false;
    QPointer<QLineEdit> focusNext_;
    std::vector<QWidget*> sections_;
    std::set<QWidget*> escapeTaken_;
};

} // namespace orvan::ui::qt
