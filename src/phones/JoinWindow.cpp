#include "phones/JoinWindow.h"

namespace orvan {

void JoinWindow::show() {
    shown_ = true;
    if (presenter_) presenter_->present(WindowId::join);
}

void JoinWindow::hide() {
    if (!shown_) return;
    shown_ = false;
    if (presenter_) presenter_->dismiss(WindowId::join);
}

void JoinWindow::attach(Presenter* presenter) {
    presenter_ = presenter;
    if (presenter_ && shown_) presenter_->present(WindowId::join);
}

} // namespace orvan
