#pragma once
// A window that shows one view. The host owns the window; the view is a function that builds
// the tree from the models each time it is called. Whoever owns the models calls
// `requestRender()` when they change: any number of requests in one turn of the event loop give
// one render at the end of the turn. The window scrolls, and remembers its size under its id.
//
//     WindowHost desk({.id = "desk", .title = "...", .minimumSize = {640, 780},
//                      .defaultSize = {760, 920}, .defaults = UserDefaults::domain(bundleId)},
//                     [&] { return DeskView::build(bridge, state, clock.now()); });
//     bridge.onChange([&] { desk.requestRender(); });
//     desk.show();

#include "foundation/UserDefaults.h"
#include "ui/Node.h"
#include "ui/qt/ActionDispatcher.h"
#include "ui/qt/TonePalette.h"
#include "ui/qt/ViewRenderer.h"

#include <QSize>

#include <functional>
#include <memory>
#include <string>

class QWidget;
class QTimer;

namespace orvan::ui::qt {

struct WindowSetup {
    std::string id;
    std::string title;
    QSize minimumSize;
    QSize defaultSize;
    // Where the size is remembered; without one the window opens at its default size.
    std::shared_ptr<UserDefaults> defaults;
};

// The window's minimum and size held to the room a screen gives it (its available area less the
// window's frame), so that the whole window, title bar included, fits a small laptop screen; the
// content scrolls inside. A room that is unknown (empty) leaves both as asked.
struct WindowFit {
    QSize minimum;
    QSize size;
    bool operator==(const WindowFit&) const = default;
};
WindowFit fitWindow(QSize minimum, QSize wanted, QSize room);

class WindowHost {
public:
    using View = std::function<Node()>;

    WindowHost(WindowSetup setup, View view);
    ~WindowHost();
    WindowHost(const WindowHost&) = delete;
    WindowHost& operator=(const WindowHost&) = delete;

    // One render at the end of this turn of the event loop, however often it is asked for.
    void requestRender();
    // Renders at once; for the first frame and for tests.
    void renderNow();

    // Renders if nothing was drawn yet, then shows the window and brings it forward.
    void show();

    QWidget* window() const;
    ViewRenderer& renderer() { return *renderer_; }
    int renderCount() const { return renders_; }
    void setTonePalette(const TonePalette& tones);

    // The defaults key under which the window's size is kept.
    std::string sizeKey() const { return "window." + setup_.id + ".size"; }

private:
    class Frame;
    // Fits the window to the screen it is on, at `wanted` or less.
    void fitToScreen(QSize wanted);
    void restoreSize();
    void saveSize();

    WindowSetup setup_;
    View view_;
    std::shared_ptr<ActionDispatcher> dispatcher_;
    std::unique_ptr<Frame> frame_;
    std::unique_ptr<ViewRenderer> renderer_;
    bool pending_ = false;
    bool rendering_ = false;
    int renders_ = 0;
};

} // namespace orvan::ui::qt
