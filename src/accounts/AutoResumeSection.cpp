#include "accounts/AutoResumeSection.h"

namespace orvan::AutoResumeSection {

ui::Node build(Accounts& accounts) {
    Accounts* m = &accounts;
    ui::Nodes rows;
    rows.push_back(ui::toggle("Auto-resume", accounts.autoResume.value_or(false),
                              [m](bool on) { spawn(m->setAutoResume(on)); })
                       .enabled(accounts.autoResume.has_value() && !accounts.autoResumeUnsupported)
                       .help("When a usage limit stops an agent, your iPhone shows until when. With auto-resume on, "
                             "this Mac types continue a minute after the limit resets, once.")
                       .key("autoResume"));
    rows.push_back(ui::text("Types continue into an agent a minute after its usage limit resets, once. If the limit is "
                            "still there two minutes later, it gives up and says so on the agent's card.")
                       .tone(ui::Tone::Dim)
                       .style(ui::TextStyle::Caption));
    if (!accounts.autoResumeNote.empty())
        rows.push_back(ui::text(accounts.autoResumeNote)
                           .tone(accounts.autoResumeUnsupported ? ui::Tone::Dim : ui::Tone::Danger)
                           .key("autoResumeNote"));
    return ui::section(title, std::move(rows)).key("autoResume");
}

} // namespace orvan::AutoResumeSection
