#include "bridge/MenuDesk.h"

#include "connections/LidWords.h"
#include "phones/JoinWords.h"
#include "screen/SharingWords.h"
#include "updates/UpdateWords.h"

namespace orvan {

TrayIcon MenuDesk::icon(const Bridge& bridge) {
    std::string symbol = bridge.watched() ? "eye.circle.fill" : (bridge.on ? "circle.fill" : "circle");
    return {symbol, bridge.on || bridge.watched() ? ui::Tone::Accent : ui::Tone::Dim};
}

ui::Node MenuDesk::build(Bridge& bridge, const MenuContext& context) {
    Bridge* b = &bridge;
    ui::Nodes items;
    items.push_back(ui::toggle(bridge.on ? "Remote control is on" : "Remote control is off", bridge.on,
                               [b](bool) { spawn(b->toggle()); })
                        .key("remote"));
    items.push_back(ui::toggle(LidWords::menu(bridge.lidOn), bridge.lidOn, [b](bool) { b->setLid(!b->lidOn); })
                        .key("lid"));
    if (bridge.watched()) {
        items.push_back(ui::text(SharingWords::menu(bridge.screen)).key("sharing"));
        items.push_back(ui::button("Stop sharing the screen", [b] { spawn(b->stopScreen()); }).key("sharing.stop"));
        items.push_back(ui::separator());
    }
    if (!bridge.joins.empty()) {
        items.push_back(ui::button(JoinWords::menu(bridge.joins), [b] { b->showJoins(); }).key("joins"));
        items.push_back(ui::separator());
    }
    items.push_back(ui::button("Open Orvan Companion", context.openDesk).key("open"));
    items.push_back(ui::button(UpdateWords::menuItem, [b] { spawn(b->checkForUpdate(true)); }).key("updates.check"));
    if (context.openFeedback) items.push_back(ui::button("Send feedback…", context.openFeedback).key("feedback"));
    std::string label = context.versionLabel;
    auto copy = context.copy;
    items.push_back(ui::button(label,
                               [copy, label] {
                                   std::string bare = label;
                                   if (bare.rfind("Version ", 0) == 0) bare.erase(0, 8);
                                   if (copy) copy("Orvan Companion " + bare);
                               })
                        .help("Copy the version")
                        .key("version"));
    items.push_back(ui::separator());
    auto quit = context.quit;
    items.push_back(ui::button("Quit Orvan Companion",
                               [b, quit] {
                                   b->releaseLidHold();
                                   b->stopIfOwned();
                                   if (quit) quit();
                               })
                        .shortcut("Ctrl+Q")
                        .key("quit"));
    return ui::menu("Orvan Companion", std::move(items));
}

} // namespace orvan
