#include "phones/OwnerSetupWindow.h"

#include "phones/OwnerSetupAnswer.h"

namespace orvan {

using namespace std::chrono_literals;

void OwnerSetupWindow::show() {
    if (model_) {
        if (presenter_) presenter_->present(WindowId::ownerSetup);
        return;
    }
    model_ = std::make_unique<OwnerSetupModel>(bridge_);
    watch_ = model_->observe([this] { publish(); });
    model_->onClose = [this] {
        watch_.reset();
        model_.reset();
        if (presenter_) presenter_->dismiss(WindowId::ownerSetup);
        publish();
    };
    if (presenter_) presenter_->present(WindowId::ownerSetup);
    publish();
    model_->perform(model_->first);
}

bool OwnerSetupWindow::shouldClose() {
    if (!model_) return true;
    if (model_->flow.phase.kind == OwnerSetupPhase::Kind::closed) return true;
    model_->close();
    return false;
}

Task<void> OwnerSetupWindow::quit() {
    if (!endsOnQuit()) co_return;
    co_await bridge_.local(OwnerSetupPaths::cancel, Json::object(), quitWait);
}

void OwnerSetupWindow::attach(Presenter* presenter) {
    presenter_ = presenter;
    if (presenter_ && model_) presenter_->present(WindowId::ownerSetup);
}

} // namespace orvan
