#include "updates/UpdatesSection.h"

#include "updates/UpdateWords.h"

namespace orvan {

ui::Node UpdatesSection::build(Bridge& bridge) {
    // A bridge set up without the update ports (a view test, a tool) has nothing to check with.
    if (!bridge.setup().updates) return ui::nothing();
    Bridge* b = &bridge;
    ui::Nodes rows;
    if (!bridge.updateNote.empty()) rows.push_back(ui::text(bridge.updateNote).key("updates.note"));
    ui::Nodes buttons;
    if (!bridge.updateReady.empty())
        buttons.push_back(ui::button(UpdateWords::update, [b] { spawn(b->installUpdate()); })
                              .enabled(!bridge.updateBusy)
                              .role(ui::Role::Primary)
                              .help(UpdateWords::updateHelp)
                              .key("updates.install"));
    buttons.push_back(ui::button(UpdateWords::checkNow, [b] { spawn(b->checkForUpdate(true)); })
                          .enabled(!bridge.updateBusy)
                          .help(UpdateWords::checkNowHelp)
                          .key("updates.check"));
    rows.push_back(ui::hstack(std::move(buttons)));
    rows.push_back(ui::text(UpdateWords::sectionHelp).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
    return ui::section(UpdateWords::section, std::move(rows)).key("updates");
}

ui::Node UpdatesSection::alert(Bridge& bridge) {
    if (!bridge.updatePrompt || !bridge.setup().updates) return ui::nothing();
    Bridge* b = &bridge;
    return ui::confirmation(UpdateWords::ready(bridge.updateReady), UpdateWords::prompt(bridge.updateReady),
                            {
                                ui::button(UpdateWords::notNow, [b] { b->dismissUpdate(); }).role(ui::Role::Cancel).key("update.later"),
                                ui::button(UpdateWords::update, [b] { spawn(b->installUpdate()); })
                                    .role(ui::Role::Primary)
                                    .key("update.now"),
                            })
        .key("updateAlert");
}

} // namespace orvan
