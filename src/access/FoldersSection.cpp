#include "access/FoldersSection.h"

#include "access/ThreadFolders.h"

namespace orvan::FoldersSection {

namespace {

Task<void> pickAndAdd(Folders& folders, FilePicker& picker) {
    FileChoice choice;
    choice.kind = FileChoice::Kind::folder;
    choice.message = ThreadFolders::pickerMessage;
    auto chosen = co_await picker.choose(choice);
    if (chosen) co_await folders.add(chosen->string());
}

Task<void> addTyped(Folders& folders, AccessViewState& state, std::function<void()> changed) {
    const std::string path = state.typedFolder;
    if (path.empty()) co_return;
    co_await folders.add(path);
    if (folders.note.empty()) state.typedFolder.clear();
    if (changed) changed();
}

} // namespace

ui::Node build(Folders& folders, FilePicker* picker, AccessViewState& state, const std::filesystem::path& home,
               std::function<void()> changed) {
    Folders* f = &folders;
    AccessViewState* s = &state;
    ui::Nodes rows;
    rows.push_back(ui::text(ThreadFolders::about).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
    if (folders.list.empty() && folders.loaded) rows.push_back(ui::text(ThreadFolders::empty).key("folders.empty"));
    for (const auto& folder : folders.list) {
        rows.push_back(ui::row(ThreadFolders::title(folder), folder.path,
                               {ui::button(ThreadFolders::removeTitle,
                                           [s, folder, changed] {
                                               s->removing = folder;
                                               if (changed) changed();
                                           })
                                    .help(ThreadFolders::removeHelp)
                                    .enabled(!folders.busy)})
                           .key("folder." + folder.id));
    }
    if (picker && picker->canChoose()) {
        rows.push_back(ui::button(ThreadFolders::addTitle, [f, picker] { spawn(pickAndAdd(*f, *picker)); })
                           .help(ThreadFolders::addHelp)
                           .enabled(!folders.busy)
                           .key("folders.add"));
    } else {
        rows.push_back(ui::hstack({
            ui::field("folders.path", ThreadFolders::pathField, state.typedFolder,
                      [s](const std::string& text) { s->typedFolder = text; })
                .placeholder("/path/to/folder")
                .submit([f, s, changed] { spawn(addTyped(*f, *s, changed)); }),
            ui::button(ThreadFolders::addTitle, [f, s, changed] { spawn(addTyped(*f, *s, changed)); })
                .help(ThreadFolders::addHelp)
                .enabled(!folders.busy)
                .key("folders.add"),
        }).key("folders.typed"));
    }
    if (!folders.note.empty()) rows.push_back(ui::text(folders.note).tone(ui::Tone::Danger).key("folders.note"));
    if (state.removing) {
        const ThreadFolder folder = *state.removing;
        auto done = [s, changed] {
            s->removing.reset();
            if (changed) changed();
        };
        rows.push_back(ui::confirmation(ThreadFolders::removeQuestion, ThreadFolders::removal(folder, home),
                                        {ui::button(ThreadFolders::removeTitle,
                                                    [f, folder, done] {
                                                        spawn(f->remove(folder.id));
                                                        done();
                                                    })
                                             .role(ui::Role::Destructive),
                                         ui::button("Cancel", done).role(ui::Role::Cancel)})
                           .key("folders.removing"));
    }
    return ui::section(ThreadFolders::sectionTitle, std::move(rows)).key("folders");
}

} // namespace orvan::FoldersSection
