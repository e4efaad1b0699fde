#include "app/desk/DeskPanels.h"

#include "phones/JoinWords.h"
#include "phones/OwnerSetupView.h"
#include "phones/OwnerSetupWords.h"

#include <QCloseEvent>
#include <QWidget>

namespace orvan::app {

DeskPanels::DeskPanels(Companion& companion, std::shared_ptr<UserDefaults> defaults)
    : companion_(companion), defaults_(std::move(defaults)) {
    bridge_ = companion_.bridge().observe([this] {
        if (join_) join_->requestRender();
    });
    joinView_ = companion_.joinView().observe([this] {
        if (join_) join_->requestRender();
    });
    ownerSetupModel_ = companion_.ownerSetup().observe([this] {
        if (ownerSetup_) ownerSetup_->requestRender();
    });
    // The close box only asks: the join window may go at once, the setup window when the flow says.
    joinGate_.mayClose = [this] {
        companion_.bridge().joinWindow.closedByOwner();
        return true;
    };
    ownerSetupGate_.mayClose = [this] { return companion_.ownerSetup().shouldClose(); };
    companion_.bridge().joinWindow.attach(this);
    companion_.ownerSetup().attach(this);
}

DeskPanels::~DeskPanels() {
    companion_.bridge().joinWindow.attach(nullptr);
    companion_.ownerSetup().attach(nullptr);
}

bool DeskPanels::CloseGate::eventFilter(QObject*, QEvent* event) {
    if (event->type() != QEvent::Close || !mayClose) return false;
    // Only the owner's close box asks; the program's own end closes every window without asking,
    // and a window that refused would cancel the quit. The code is cancelled as the program ends.
    if (!event->spontaneous()) return false;
    if (mayClose()) return false;
    event->ignore();
    return true;
}

ui::qt::WindowHost& DeskPanels::make(std::unique_ptr<ui::qt::WindowHost>& slot, ui::qt::WindowSetup setup,
                                     ui::qt::WindowHost::View view, CloseGate& gate) {
    if (slot) return *slot;
    setup.defaults = defaults_;
    slot = std::make_unique<ui::qt::WindowHost>(std::move(setup), std::move(view));
    if (tones_) slot->setTonePalette(*tones_);
    if (QWidget* window = slot->window()) {
        // Floating above the other windows, like a panel that wants an answer.
        window->setWindowFlag(Qt::WindowStaysOnTopHint, true);
        window->installEventFilter(&gate);
    }
    return *slot;
}

void DeskPanels::bringForward(ui::qt::WindowHost& host) {
    host.show();
    if (QWidget* window = host.window()) {
        window->raise();
        window->activateWindow();
    }
}

void DeskPanels::present(WindowId window) {
    Companion* c = &companion_;
    if (window == WindowId::join) {
        make(join_, {"join", JoinWords::windowTitle, QSize(420, 320), QSize(460, 420), nullptr},
             [c] { return c->joinView().build(c->clock().now()); }, joinGate_);
        companion_.joinView().appeared();
        join_->requestRender();
        bringForward(*join_);
    } else if (window == WindowId::ownerSetup) {
        make(ownerSetup_, {"ownerSetup", OwnerSetupWords::title, QSize(380, 420), QSize(420, 520), nullptr},
             [c] {
                 OwnerSetupModel* model = c->ownerSetup().model();
                 return model ? OwnerSetupView::build(*model, c->place()) : ui::vstack({});
             },
             ownerSetupGate_);
        ownerSetup_->requestRender();
        bringForward(*ownerSetup_);
    }
}

void DeskPanels::dismiss(WindowId window) {
    ui::qt::WindowHost* host = window == WindowId::join ? join_.get() : window == WindowId::ownerSetup ? ownerSetup_.get() : nullptr;
    if (host && host->window()) host->window()->hide();
}

void DeskPanels::setTonePalette(const ui::qt::TonePalette& tones) {
    tones_ = tones;
    if (join_) join_->setTonePalette(tones);
    if (ownerSetup_) ownerSetup_->setTonePalette(tones);
}

} // namespace orvan::app
