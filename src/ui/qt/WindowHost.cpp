#include "ui/qt/WindowHost.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QMetaObject>
#include <QScreen>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>

namespace orvan::ui::qt {

WindowFit fitWindow(QSize minimum, QSize wanted, QSize room) {
    if (!minimum.isValid()) minimum = QSize(0, 0);
    if (!room.isValid() || room.isEmpty()) return {minimum, wanted.expandedTo(minimum)};
    const QSize least = minimum.boundedTo(room);
    return {least, wanted.expandedTo(least).boundedTo(room)};
}

// The top-level window: tells the host when its size settles and when it closes.
class WindowHost::Frame : public QWidget {
public:
    explicit Frame(WindowHost& host) : host_(host) {
        settle_.setSingleShot(true);
        settle_.setInterval(400);
        QObject::connect(&settle_, &QTimer::timeout, this, [this] { host_.saveSize(); });
    }

protected:
    // The frame's size is known only once the window is on screen, and the screen may change as
    // it moves; either may leave less room than it was fitted to.
    void showEvent(QShowEvent* event) override {
        QWidget::showEvent(event);
        host_.fitToScreen(size());
    }
    void moveEvent(QMoveEvent* event) override {
        QWidget::moveEvent(event);
        if (isVisible()) host_.fitToScreen(size());
    }
    void resizeEvent(QResizeEvent* event) override {
        QWidget::resizeEvent(event);
        // A drag sends many sizes; the one it ends on is kept.
        if (isVisible()) settle_.start();
    }
    void closeEvent(QCloseEvent* event) override {
        settle_.stop();
        host_.saveSize();
        QWidget::closeEvent(event);
    }

private:
    WindowHost& host_;
    QTimer settle_;
};

WindowHost::WindowHost(WindowSetup setup, View view)
    : setup_(std::move(setup)), view_(std::move(view)), dispatcher_(std::make_shared<ActionDispatcher>()) {
    frame_ = std::make_unique<Frame>(*this);
    frame_->setWindowTitle(QString::fromStdString(setup_.title));
    frame_->setObjectName(QString::fromStdString(setup_.id));

    auto* outer = new QVBoxLayout(frame_.get());
    outer->setContentsMargins(0, 0, 0, 0);
    auto* scroll = new QScrollArea(frame_.get());
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    outer->addWidget(scroll);
    auto* content = new QWidget(scroll);
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(20, 20, 20, 20);
    auto* body = new QWidget(content);
    column->addWidget(body);
    column->addStretch(1);
    scroll->setWidget(content);

    renderer_ = std::make_unique<ViewRenderer>(body, dispatcher_);
    dispatcher_->setAfterAction([this] { requestRender(); });
    restoreSize();
}

WindowHost::~WindowHost() {
    dispatcher_->setAfterAction({});
    renderer_.reset();
    frame_.reset();
}

QWidget* WindowHost::window() const { return frame_.get(); }

void WindowHost::requestRender() {
    if (pending_) return;
    pending_ = true;
    // Queued on the window: if the window goes first, the render goes with it.
    QMetaObject::invokeMethod(
        frame_.get(),
        [this] {
            pending_ = false;
            renderNow();
        },
        Qt::QueuedConnection);
}

void WindowHost::renderNow() {
    if (rendering_) {
        // A view that asks for a render while being built gets it on the next turn.
        requestRender();
        return;
    }
    rendering_ = true;
    Node tree;
    bool built = false;
    try {
        tree = view_ ? view_() : nothing();
        built = true;
    } catch (...) {
        // A view is a pure function and should not throw; if one does, the last frame stays.
    }
    if (built) {
        renderer_->render(tree);
        ++renders_;
    }
    rendering_ = false;
}

void WindowHost::show() {
    if (renders_ == 0) renderNow();
    frame_->show();
    frame_->raise();
    frame_->activateWindow();
}

void WindowHost::setTonePalette(const TonePalette& tones) {
    renderer_->setTonePalette(tones);
    requestRender();
}

void WindowHost::restoreSize() {
    QSize size = setup_.defaultSize.isValid() ? setup_.defaultSize : frame_->sizeHint();
    if (setup_.defaults) {
        if (auto stored = setup_.defaults->value(sizeKey()); stored && stored->is_object()) {
            const auto width = stored->find("width");
            const auto height = stored->find("height");
            if (width != stored->end() && height != stored->end() && width->is_number() && height->is_number()) {
                const double w = width->get<double>();
                const double h = height->get<double>();
                // A size from a larger screen, or a damaged file, must not open an unusable window.
                if (w >= 1 && h >= 1 && w < 100000 && h < 100000) size = QSize(static_cast<int>(w), static_cast<int>(h));
            }
        }
    }
    fitToScreen(size);
}

void WindowHost::fitToScreen(QSize wanted) {
    const QScreen* screen = frame_->screen();
    if (!screen) screen = QGuiApplication::primaryScreen();
    QSize room;
    if (screen) room = screen->availableGeometry().size() - (frame_->frameGeometry().size() - frame_->size());
    const WindowFit fit = fitWindow(setup_.minimumSize, wanted, room);
    if (frame_->minimumSize() != fit.minimum) frame_->setMinimumSize(fit.minimum);
    if (frame_->size() != fit.size) frame_->resize(fit.size);
}

void WindowHost::saveSize() {
    if (!setup_.defaults || setup_.id.empty()) return;
    const QSize size = frame_->size();
    Json value = {{"width", size.width()}, {"height", size.height()}};
    if (setup_.defaults->value(sizeKey()) == value) return;
    setup_.defaults->set(sizeKey(), std::move(value));
}

} // namespace orvan::ui::qt
