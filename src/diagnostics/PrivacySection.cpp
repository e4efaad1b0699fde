#include "diagnostics/PrivacySection.h"

#include "diagnostics/Consent.h"
#include "diagnostics/PrivacyWords.h"

namespace orvan {

ui::Node PrivacySection::build(UserDefaults& defaults, std::string_view version, std::function<void()> changed) {
    UserDefaults* d = &defaults;
    ui::Nodes rows{ui::toggle(PrivacyWords::toggle, Consent::load(defaults, version).allows(),
                              [d, changed](bool on) {
                                  Consent::answer(on, *d);
                                  if (changed) changed();
                              })
                       .key("privacy.switch")};
    for (const char* line : PrivacyWords::lines) rows.push_back(ui::text(line).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
    return ui::section(PrivacyWords::sectionTitle, std::move(rows)).key("privacy");
}

} // namespace orvan
