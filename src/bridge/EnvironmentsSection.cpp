#include "bridge/EnvironmentsSection.h"

#include "bridge/EnvironmentWords.h"

namespace orvan {

ui::Node EnvironmentsSection::build(Bridge& bridge) {
    ui::Nodes rows;
    rows.push_back(ui::row(EnvironmentWords::direct, EnvironmentWords::directLine, {}).key("direct"));
    if (EnvironmentWords::tulmShown(bridge.tulm, bridge.sidebar)) {
        auto second = EnvironmentWords::tulmLine(bridge.tulm);
        rows.push_back(ui::row(EnvironmentWords::tulm, second.value_or(""), {}).key("tulm"));
    }
    if (SidebarRow::shown(bridge.tulm, bridge.sidebar)) {
        Bridge* b = &bridge;
        rows.push_back(ui::picker("Sidebar", {{"Left", "left"}, {"Right", "right"}}, bridge.sidebar,
                                  [b](const std::string& side) { spawn(b->setSidebar(side)); })
                           .label("Tulm's sidebar")
                           .enabled(!bridge.sidebarBusy)
                           .help("Which side of the Tulm desktop window its session sidebar sits on.")
                           .key("sidebar"));
        rows.push_back(ui::text("Which side of Tulm's window its sessions sit on. Tulm keeps this; a change there "
                                "shows up here.")
                           .tone(ui::Tone::Dim)
                           .style(ui::TextStyle::Caption));
        if (!bridge.sidebarNote.empty()) rows.push_back(ui::text(bridge.sidebarNote).tone(ui::Tone::Danger));
    }
    return ui::section("Environments", "What runs threads on this Mac.", std::move(rows)).key("environments");
}

} // namespace orvan
