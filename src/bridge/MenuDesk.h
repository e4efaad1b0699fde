#pragma once
// The tray menu and its icon.

#include "bridge/Bridge.h"
#include "ui/Node.h"

#include <functional>
#include <string>

namespace orvan {

struct MenuContext {
    std::function<void()> openDesk;
    std::function<void()> quit;
    // Opens the feedback window; its row shows when there is one.
    std::function<void()> openFeedback;
    // Puts text on the clipboard (after clearing it).
    std::function<void(const std::string&)> copy;
    std::string versionLabel;
};

struct TrayIcon {
    std::string symbol;
    ui::Tone tone;
    bool operator==(const TrayIcon&) const = default;
};

namespace MenuDesk {
ui::Node build(Bridge& bridge, const MenuContext& context);
// Watched wins; otherwise a filled circle while remote control is on.
TrayIcon icon(const Bridge& bridge);
} // namespace MenuDesk

} // namespace orvan
