#include "ui/qt/SharingBarWindow.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QScreen>
#include <QWidget>

namespace orvan::ui::qt {

namespace {
constexpr int aboveEdge = 18;
} // namespace

SharingBarWindow::SharingBarWindow() : window_(std::make_unique<QWidget>()) {
    Qt::WindowFlags flags = Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus;
    // Unmanaged on X11: on every desktop, over full-screen windows, never focused.
    if (QGuiApplication::platformName() == QLatin1String("xcb")) flags |= Qt::X11BypassWindowManagerHint;
    window_->setWindowFlags(flags);
    window_->setAttribute(Qt::WA_ShowWithoutActivating);
    window_->setAttribute(Qt::WA_TranslucentBackground);
    window_->setWindowTitle(QStringLiteral("Orvan Companion"));
    window_->setMinimumSize(smallest);
    // The clear window holds one rounded panel, so the corners show what is behind.
    auto* layout = new QHBoxLayout(window_.get());
    layout->setContentsMargins(0, 0, 0, 0);
    panel_ = new QWidget(window_.get());
    panel_->setObjectName(QStringLiteral("sharingBar"));
    panel_->setAttribute(Qt::WA_StyledBackground);
    panel_->setStyleSheet(QStringLiteral("#sharingBar { background: palette(window); border-radius: 12px; "
                                         "border: 1px solid palette(mid); }"));
    layout->addWidget(panel_);
    renderer_ = std::make_unique<ViewRenderer>(panel_, dispatcher_);
}

SharingBarWindow::~SharingBarWindow() = default;

QPoint SharingBarWindow::place(QRect area, QSize size) {
    return {area.x() + (area.width() - size.width()) / 2, area.y() + area.height() - aboveEdge - size.height()};
}

void SharingBarWindow::setTonePalette(const TonePalette& tones) { renderer_->setTonePalette(tones); }

void SharingBarWindow::present(const SharingBarView& view) {
    auto tree = std::make_unique<Node>(view.build());
    renderer_->render(*tree);
    tree_ = std::move(tree);
    QSize size = window_->sizeHint();
    size = size.isValid() ? size.expandedTo(smallest) : smallest;
    window_->resize(size);
    if (QScreen* screen = QGuiApplication::primaryScreen()) window_->move(place(screen->availableGeometry(), size));
    window_->show();
    window_->raise();
}

void SharingBarWindow::dismiss() { window_->hide(); }

} // namespace orvan::ui::qt
