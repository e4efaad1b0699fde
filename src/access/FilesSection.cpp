#include "access/FilesSection.h"

namespace orvan::FilesSection {

ui::Node build(FilesAccessModel& model, AccessViewState& state, std::function<void()> changed) {
    FilesAccessModel* m = &model;
    AccessViewState* s = &state;
    ui::Nodes rows;
    const std::string note = model.note.empty() ? FilesAccess::note(model.stage, model.answer) : model.note;
    rows.push_back(ui::text(note).tone(ui::Tone::Dim).key("files.note"));
    for (const auto& row : FilesAccess::rows(model.stage, model.answer)) {
        rows.push_back(ui::hstack({
            ui::symbol(row.allowed ? "checkmark.circle.fill" : "exclamationmark.circle",
                       row.allowed ? ui::Tone::Good : ui::Tone::Warning),
            ui::row(row.name, row.state, {}),
        }).key("files." + row.name));
    }
    switch (FilesAccess::button(model.stage, model.answer)) {
    case FilesAccess::Button::ask:
    case FilesAccess::Button::askAgain: {
        const bool again = FilesAccess::button(model.stage, model.answer) == FilesAccess::Button::askAgain;
        rows.push_back(ui::button(again ? FilesAccess::askAgainTitle : FilesAccess::askTitle, [m] { spawn(m->ask()); })
                           .help(FilesAccess::askHelp)
                           .enabled(!model.busy)
                           .key("files.ask"));
        break;
    }
    case FilesAccess::Button::openSettings:
        rows.push_back(ui::button(FilesAccess::openSettingsTitle, [m] { m->openSettings(false); })
                           .help(FilesAccess::settingsHelp)
                           .key("files.settings"));
        break;
    case FilesAccess::Button::none: break;
    }
    if (model.busy) rows.push_back(ui::spinner().key("files.busy"));
    rows.push_back(ui::button(FilesAccess::fullDiskTitle,
                              [s, changed] {
                                  s->confirmingFullDisk = true;
                                  if (changed) changed();
                              })
                       .help(FilesAccess::fullDiskAbout)
                       .key("files.fullDisk"));
    rows.push_back(ui::text(FilesAccess::fullDiskAbout).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
    if (state.confirmingFullDisk) {
        auto done = [s, changed] {
            s->confirmingFullDisk = false;
            if (changed) changed();
        };
        rows.push_back(ui::confirmation(FilesAccess::fullDiskTitle, FilesAccess::fullDiskConfirm,
                                        {ui::button(FilesAccess::fullDiskOpen,
                                                    [m, done] {
                                                        m->openSettings(true);
                                                        done();
                                                    })
                                             .role(ui::Role::Primary),
                                         ui::button("Cancel", done).role(ui::Role::Cancel)})
                           .key("files.fullDiskConfirm"));
    }
    return ui::section(FilesAccess::sectionTitle, std::move(rows)).key("files");
}

} // namespace orvan::FilesSection
