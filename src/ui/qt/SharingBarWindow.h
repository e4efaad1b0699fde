#pragma once
// The sharing bar as a window: borderless, 460 by 52 at the least, at the bottom centre of the
// primary screen's free area, above normal windows and never taking the focus. On X11 it is a
// window the window manager doesn't handle, so it stands on every desktop and over full-screen
// windows; a Wayland compositor places windows itself and may put the bar elsewhere, or below a
// full-screen window, whatever the program asks.

#include "screen/SharingBar.h"
#include "ui/qt/ActionDispatcher.h"
#include "ui/qt/TonePalette.h"
#include "ui/qt/ViewRenderer.h"

#include <QPoint>
#include <QRect>
#include <QSize>
#include <memory>

class QWidget;

namespace orvan::ui::qt {

class SharingBarWindow final : public SharingPanel {
public:
    SharingBarWindow();
    ~SharingBarWindow() override;
    void present(const SharingBarView& view) override;
    void dismiss() override;
    QWidget* window() const { return window_.get(); }
    void setTonePalette(const TonePalette& tones);

    static constexpr QSize smallest{460, 52};
    // The top left corner for a bar of `size` on a screen whose free area is `area`.
    static QPoint place(QRect area, QSize size);

private:
    std::unique_ptr<QWidget> window_;
    QWidget* panel_ = nullptr;
    std::shared_ptr<ActionDispatcher> dispatcher_ = std::make_shared<ActionDispatcher>();
    std::unique_ptr<ViewRenderer> renderer_;
    // The tree last drawn: the widgets' actions are its closures.
    std::unique_ptr<Node> tree_;
};

} // namespace orvan::ui::qt
