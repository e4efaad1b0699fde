#pragma once
// A menu that shows one view, for the tray: like a window host, it re-renders on request,
// coalesced to one render per turn of the event loop, and after every action chosen from it.

#include "ui/Node.h"
#include "ui/qt/ActionDispatcher.h"
#include "ui/qt/MenuRenderer.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class QMenu;

namespace orvan::ui::qt {

class MenuHost {
public:
    using View = std::function<Node()>; // a menu node; its children are the items

    MenuHost(QMenu* menu, View view);
    ~MenuHost();
    MenuHost(const MenuHost&) = delete;
    MenuHost& operator=(const MenuHost&) = delete;

    void requestRender();
    void renderNow();
    int renderCount() const { return renders_; }
    void setTonePalette(const TonePalette& tones) { renderer_->setTonePalette(tones); }

private:
    View view_;
    std::shared_ptr<ActionDispatcher> dispatcher_;
    std::unique_ptr<MenuRenderer> renderer_;
    QObject context_; // ends queued renders with the host
    bool pending_ = false;
    int renders_ = 0;
};

} // namespace orvan::ui::qt
