#include "ui/qt/MenuHost.h"

#include <QMenu>
#include <QMetaObject>

namespace orvan::ui::qt {

MenuHost::MenuHost(QMenu* menu, View view)
    : view_(std::move(view)), dispatcher_(std::make_shared<ActionDispatcher>()),
      renderer_(std::make_unique<MenuRenderer>(menu, dispatcher_)) {
    dispatcher_->setAfterAction([this] { requestRender(); });
}

MenuHost::~MenuHost() { dispatcher_->setAfterAction({}); }

void MenuHost::requestRender() {
    if (pending_) return;
    pending_ = true;
    QMetaObject::invokeMethod(
        &context_,
        [this] {
            pending_ = false;
            renderNow();
        },
        Qt::QueuedConnection);
}

void MenuHost::renderNow() {
    Node tree;
    try {
        tree = view_ ? view_() : nothing();
    } catch (...) {
        return; // the last menu stays
    }
    dispatcher_->beginRender();
    renderer_->render(tree);
    dispatcher_->endRender();
    ++renders_;
}

} // namespace orvan::ui::qt
