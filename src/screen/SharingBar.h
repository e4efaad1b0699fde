#pragma once
// The floating bar that says who sees or controls this screen, with a way to end it. The bridge
// model decides when it shows and what it says; a front end with windows attaches a panel that
// draws it, and a front end without one draws the bar in its own frame.

#include "ui/Node.h"

#include <functional>
#include <optional>
#include <string>

namespace orvan {

struct SharingBarView {
    std::string text;
    std::optional<std::string> detail;
    std::function<void()> stop;

    // The bar as a tree: its lines and "Stop sharing".
    ui::Node build() const;
};

// A window that floats above the others on every desktop, never taking the focus.
class SharingPanel {
public:
    virtual ~SharingPanel() = default;
    virtual void present(const SharingBarView& view) = 0;
    // Orders the panel out; it is kept for next time.
    virtual void dismiss() = 0;
};

class SharingBar {
public:
    void show(std::string text, std::optional<std::string> detail, std::function<void()> stop);
    void hide();
    // What the bar shows now, or absent while it is hidden.
    const std::optional<SharingBarView>& view() const { return view_; }
    // From now on a window draws the bar; a bar already showing appears in it at once.
    void attach(SharingPanel* panel);
    bool drawnInWindow() const { return panel_ != nullptr; }

private:
    std::optional<SharingBarView> view_;
    SharingPanel* panel_ = nullptr;
};

} // namespace orvan
