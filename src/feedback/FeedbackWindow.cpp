#include "feedback/FeedbackWindow.h"

#include "feedback/FeedbackWords.h"

namespace orvan::FeedbackWindow {

namespace {

ui::Node pictures(FeedbackView& view, bool editable) {
    FeedbackView* v = &view;
    ui::Nodes rows;
    rows.push_back(ui::text(FeedbackWords::picturesAbout).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
    for (std::size_t i = 0; i < view.images.size(); ++i) {
        const std::string id = view.images[i].id;
        rows.push_back(ui::row(FeedbackWords::picture(static_cast<int>(i) + 1), Feedback::byteSize(view.images[i].data.size()),
                               {ui::button(FeedbackWords::remove, [v, id] { v->remove(id); }).enabled(editable)})
                           .key("feedback.picture." + id));
    }
    const bool room = editable && !view.adding && view.images.size() < Feedback::maxImages;
    ui::Nodes adders;
    adders.push_back(ui::button(FeedbackWords::paste, [v] { spawn(v->paste()); }).enabled(room).key("feedback.paste"));
    if (view.canChoose()) {
        adders.push_back(ui::button(FeedbackWords::choose, [v] { spawn(v->chooseFile()); })
                             .enabled(room && !view.choosing)
                             .key("feedback.choose"));
        rows.push_back(ui::hstack(std::move(adders)).key("feedback.adders"));
    } else {
        // Without a chooser the file is named by its path.
        rows.push_back(ui::hstack(std::move(adders)).key("feedback.adders"));
        rows.push_back(ui::hstack({
            ui::field("feedback.file", FeedbackWords::typedPath, view.typedPath,
                      [v](const std::string& path) { v->typedPath = path; })
                .placeholder("/path/to/picture.png")
                .enabled(room)
                .submit([v] { spawn(v->addFile(v->typedPath)); }),
            ui::button(FeedbackWords::choose, [v] { spawn(v->addFile(v->typedPath)); })
                .enabled(room)
                .key("feedback.addFile"),
        }).key("feedback.typed"));
    }
    if (view.adding) rows.push_back(ui::spinner());
    return ui::vstack(std::move(rows)).key("feedback.pictures");
}

ui::Nodes buttons(FeedbackView& view) {
    FeedbackView* v = &view;
    ui::Nodes out;
    if (view.finished()) {
        out.push_back(ui::button(FeedbackWords::done, [v] { v->close(); }).role(ui::Role::Primary).key("feedback.done"));
        return out;
    }
    const bool idle = !view.sending;
    if (view.allows()) {
        out.push_back(ui::button(FeedbackWords::sendRelay, [v] { v->go(); }).role(ui::Role::Primary).enabled(idle)
                          .key("feedback.send"));
        if (view.canMail())
            out.push_back(ui::button(FeedbackWords::mailInstead, [v] { v->fallBack(true); }).enabled(idle)
                              .key("feedback.mailInstead"));
        out.push_back(ui::button(FeedbackWords::copyInstead, [v] { v->fallBack(false); }).enabled(idle)
                          .key("feedback.copyInstead"));
    } else if (view.canMail()) {
        out.push_back(ui::button(FeedbackWords::sendMail, [v] { v->fallBack(true); }).role(ui::Role::Primary).enabled(idle)
                          .key("feedback.mail"));
    } else {
        out.push_back(ui::button(FeedbackWords::sendCopy, [v] { v->fallBack(false); }).role(ui::Role::Primary).enabled(idle)
                          .key("feedback.copy"));
    }
    out.push_back(ui::button(FeedbackWords::cancel, [v] { v->close(); }).role(ui::Role::Cancel).key("feedback.cancel"));
    return out;
}

} // namespace

ui::Node build(FeedbackView& view) {
    FeedbackView* v = &view;
    const bool editable = !view.finished() && !view.sending;
    ui::Nodes body;
    std::vector<ui::Choice> kinds;
    for (FeedbackKind kind : FeedbackKinds::all) kinds.push_back({FeedbackKinds::title(kind), FeedbackKinds::raw(kind)});
    body.push_back(ui::picker(FeedbackWords::kind, std::move(kinds), FeedbackKinds::raw(view.kind),
                              [v](const std::string& raw) { v->setKind(FeedbackKinds::from(raw)); })
                       .enabled(editable)
                       .key("feedback.kind"));
    body.push_back(ui::field("feedback.text", FeedbackWords::textLabel(view.kind), view.text,
                             [v](const std::string& text) { v->setText(text); })
                       .enabled(editable));
    body.push_back(pictures(view, editable));
    body.push_back(ui::toggle(FeedbackWords::includeDiagnostics, view.includeDiagnostics,
                              [v](bool on) { v->setIncludeDiagnostics(on); })
                       .help(FeedbackWords::diagnosticsHelp)
                       .enabled(editable)
                       .key("feedback.diagnostics"));
    // Exactly what will go, as it will go.
    body.push_back(ui::text(view.preview()).style(ui::TextStyle::Monospaced).selectable().key("feedback.preview"));
    if (!view.allows() && !view.finished()) {
        body.push_back(ui::text(std::string(FeedbackWords::sharingOff) +
                                (view.canMail() ? FeedbackWords::offMail : FeedbackWords::offCopy))
                           .tone(ui::Tone::Dim)
                           .key("feedback.off"));
        body.push_back(ui::button(FeedbackWords::turnOn, [v] { v->turnSharingOn(); }).key("feedback.turnOn"));
    }
    if (!view.note.empty()) body.push_back(ui::text(view.note).tone(ui::Tone::Danger).key("feedback.note"));
    if (view.sending) body.push_back(ui::spinner().key("feedback.sending"));
    if (const std::string status = view.status(); !status.empty())
        body.push_back(ui::text(status)
                           .tone(view.phase == FeedbackView::Phase::failed ? ui::Tone::Danger : ui::Tone::Good)
                           .key("feedback.status"));
    body.push_back(ui::hstack(buttons(view)).key("feedback.buttons"));
    body.push_back(ui::text(view.footer()).tone(ui::Tone::Dim).style(ui::TextStyle::Caption).key("feedback.footer"));
    return ui::section(FeedbackWords::title, std::move(body)).key("feedback");
}

} // namespace orvan::FeedbackWindow
