#include "phones/OwnerSetupView.h"

#include "phones/OwnerSetupWords.h"

namespace orvan {

namespace {
constexpr int codeSide = 220;
}

ui::Node OwnerSetupView::build(OwnerSetupModel& model, const AccountWords::Place& place) {
    using Kind = OwnerSetupPhase::Kind;
    OwnerSetupModel* m = &model;
    const OwnerSetupPhase& phase = model.flow.phase;
    ui::Nodes body;
    ui::Nodes buttons;
    switch (phase.kind) {
    case Kind::making:
    case Kind::reading: body.push_back(ui::text(OwnerSetupWords::making).key("making")); break;
    case Kind::showing:
        body.push_back(ui::text(OwnerSetupWords::scan));
        if (model.picture)
            body.push_back(ui::picture(*model.picture, codeSide, codeSide, OwnerSetupWords::pictureLabel)
                               .pixelated()
                               .key("code"));
        body.push_back(ui::text(OwnerSetupWords::until(*phase.expires, place)).key("until"));
        body.push_back(ui::text(OwnerSetupWords::once).tone(ui::Tone::Dim));
        break;
    case Kind::problem:
        body.push_back(ui::text(OwnerSetupWords::problem(*phase.why)).tone(ui::Tone::Danger).key("problem"));
        if (phase.why->canRetry())
            buttons.push_back(ui::button(OwnerSetupWords::tryAgain, [m] { m->again(); }).key("again"));
        break;
    case Kind::over:
        body.push_back(ui::text(OwnerSetupWords::over).key("over"));
        buttons.push_back(ui::button(OwnerSetupWords::newCode, [m] { m->again(); }).role(ui::Role::Primary).key("again"));
        break;
    case Kind::added: body.push_back(ui::text(OwnerSetupWords::added).tone(ui::Tone::Good).key("added")); break;
    case Kind::ending:
        body.push_back(ui::text(phase.tries == 0 ? OwnerSetupWords::ending : OwnerSetupWords::stillLive).key("ending"));
        break;
    case Kind::closed: break;
    }
    if (phase.kind != Kind::ending && phase.kind != Kind::closed)
        buttons.push_back(ui::button(OwnerSetupWords::close, [m] { m->close(); }).role(ui::Role::Cancel).key("close"));
    if (!buttons.empty()) body.push_back(ui::hstack(std::move(buttons)));
    return ui::vstack(std::move(body)).key("ownerSetup");
}

ui::Node OwnerSetupView::button(const OwnerSetupButton& button, std::function<void()> show) {
    if (!button.available) return ui::nothing();
    return ui::button(OwnerSetupWords::button, std::move(show)).help(OwnerSetupWords::buttonHelp).key("ownerSetup");
}

} // namespace orvan
