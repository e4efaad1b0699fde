#include "diagnostics/ConsentSheet.h"

#include "diagnostics/Consent.h"
#include "diagnostics/PrivacyWords.h"

namespace orvan {

ui::Node ConsentSheet::build(bool& asking, bool& on, UserDefaults& defaults, std::function<void()> changed) {
    if (!asking) return ui::nothing();
    bool* a = &asking;
    bool* o = &on;
    UserDefaults* d = &defaults;
    ui::Nodes body{ui::text(PrivacyWords::sheetLead),
                   ui::toggle(PrivacyWords::toggle, on,
                              [o, changed](bool next) {
                                  *o = next;
                                  if (changed) changed();
                              })
                       .key("consent.switch")};
    for (const char* line : PrivacyWords::lines) body.push_back(ui::text(line).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
    body.push_back(ui::text(PrivacyWords::sheetLater).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
    body.push_back(ui::button(PrivacyWords::sheetContinue,
                              [a, o, d, changed] {
                                  *a = false;
                                  Consent::answer(*o, *d);
                                  if (changed) changed();
                              })
                       .role(ui::Role::Primary)
                       .key("consent.continue"));
    // No answer: the question comes back at the next start.
    auto dismissed = [a, changed] {
        *a = false;
        if (changed) changed();
    };
    return ui::sheet(PrivacyWords::sectionTitle, std::move(body), dismissed).key("consentSheet");
}

} // namespace orvan
