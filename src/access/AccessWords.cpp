#include "access/AccessWords.h"

namespace orvan {

namespace {
const std::string identityTail =
    " macOS ties Screen Recording and Accessibility to an app's identity, so it will ask again for both. Entries for "
    "the earlier build may still show on in System Settings; they no longer apply.";
}

std::string AccessWords::open(AccessKind kind) { return "Open " + AccessKinds::pane(kind); }

std::string AccessWords::reopen(const std::vector<AccessKind>& kinds) {
    std::string panes;
    for (std::size_t i = 0; i < kinds.size(); ++i) panes += (i ? " and " : "") + AccessKinds::pane(kinds[i]);
    return "If Orvan Companion is on under " + panes + " in System Settings, macOS applies " +
           (kinds.size() == 1 ? "it" : "them") +
           " once the companion reopens. If it is off there, switch it on first.";
}

std::string AccessWords::stale(AccessKind kind, bool lines) {
    return "Still not allowed after reopening. If Orvan Companion shows on under " + AccessKinds::pane(kind) +
           ", macOS is holding an entry from an earlier build of the companion, which no longer matches this one. "
           "Remove Orvan Companion there with the minus button" +
           (lines ? ", or run this in Terminal" : "") + ". Then choose Allow and switch it on again.";
}

std::string AccessWords::elsewhere(AccessKind kind) {
    return "Orvan Companion did not start the bridge sharing this screen, so macOS decides " + AccessKinds::pane(kind) +
           " for that bridge, not for the companion. Stop that bridge (orvan down, if orvan up started it), then quit "
           "and reopen Orvan Companion so it starts its own.";
}

std::string AccessWords::note(const MarkChange& change, const std::string& bundle) {
    if (auto* moved = std::get_if<MarkChange::Bundle>(&change.what))
        return "This version of Orvan Companion has a new bundle ID, " + bundle + ", in place of " + moved->from + "." +
               identityTail;
    return "This version of Orvan Companion is signed differently from the copy that ran here before." + identityTail;
}

std::vector<std::string> AccessWords::lines(AccessKind kind, const std::string& bundle) {
    if (bundle.empty() || bundle.front() == '-') return {};
    for (char c : bundle) {
        bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.';
        if (!plain) return {};
    }
    std::vector<std::string> out;
    for (const auto& service : AccessKinds::services(kind)) out.push_back("tccutil reset " + service + " " + bundle);
    return out;
}

} // namespace orvan
