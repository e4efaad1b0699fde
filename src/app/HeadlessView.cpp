#include "app/HeadlessView.h"

#include "appearance/ThemeStore.h"
#include "ui/TextRenderer.h"

namespace orvan::app {

HeadlessView::HeadlessView(Companion& companion, std::FILE* out) : companion_(companion), out_(out) {
    subscription_ = companion_.bridge().observe([this] { requestRender(); });
    look_ = ThemeStore::shared().observe([this] { requestRender(); });
    // Words that depend on the time ("ends in 2 hours") move on even when nothing else does.
    tick_.setInterval(30000);
    tick_.setTimerType(Qt::VeryCoarseTimer);
    QObject::connect(&tick_, &QTimer::timeout, &context_, [this] { requestRender(); });
    tick_.start();
}

void HeadlessView::requestRender() {
    if (pending_) return;
    pending_ = true;
    QTimer::singleShot(0, &context_, [this] {
        pending_ = false;
        renderNow();
    });
}

void HeadlessView::renderNow() {
    DeskContext context;
    context.versionLabel = companion_.versionLabel();
    context.changed = [this] { requestRender(); };
    context.themes = &ThemeStore::shared();
    std::string frame = ui::TextRenderer().render(
        DeskView::build(companion_.bridge(), companion_.deskState(), companion_.clock().now(), context));
    if (frame == last_) return;
    last_ = frame;
    std::fputs("\n──────── Remote control ────────\n", out_);
    std::fputs(frame.c_str(), out_);
    std::fflush(out_);
}

} // namespace orvan::app
