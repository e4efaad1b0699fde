#include "screen/SharingWords.h"

namespace orvan {

namespace {
std::optional<std::string> controller(const CompanionScreen& screen) {
    if (screen.control && !screen.control->empty()) return screen.control;
    return std::nullopt;
}

std::string watchers(const CompanionScreen& screen) {
    std::string names;
    if (!screen.watching) return names;
    for (std::size_t i = 0; i < screen.watching->size(); ++i) names += (i ? ", " : "") + (*screen.watching)[i];
    return names;
}

bool anyWatcher(const CompanionScreen& screen) { return screen.watching && !screen.watching->empty(); }
bool phoneFirst(const CompanionScreen& screen) { return screen.phoneFirst.value_or(false); }
} // namespace

std::optional<std::string> SharingWords::bar(const CompanionScreen& screen) {
    if (auto who = controller(screen)) return *who + " is controlling this Mac.";
    if (anyWatcher(screen)) return "Your screen is shared with " + watchers(screen) + ".";
    return std::nullopt;
}

std::optional<std::string> SharingWords::first(const CompanionScreen& screen) {
    auto who = controller(screen);
    if (!phoneFirst(screen) || !who) return std::nullopt;
    return "Phone first: this Mac's own mouse and keyboard give way to " + *who + ".";
}

std::string SharingWords::watching(const CompanionScreen& screen) {
    if (auto who = controller(screen))
        return *who + " is controlling this Mac." +
               (phoneFirst(screen) ? " Phone first is on: your mouse and keyboard give way to it." : "");
    if (anyWatcher(screen))
        return watchers(screen) + (screen.watching->size() == 1 ? " is watching." : " are watching.");
    return "Nobody is watching.";
}

std::string SharingWords::menu(const CompanionScreen& screen) {
    auto who = controller(screen);
    if (who && phoneFirst(screen)) return *who + " is controlling this Mac, with Phone first";
    if (who) return *who + " is controlling this Mac";
    return "Your screen is shared";
}

} // namespace orvan
