#include "access/AccessTrail.h"

#include "access/AccessDecision.h"

#include <QUuid>

namespace orvan {

AccessTrail AccessTrail::fresh() {
    AccessTrail trail;
    trail.launch = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
    return trail;
}

void AccessTrail::asked(AccessKind kind) {
    sent[kind] = launch;
    away.erase(kind);
    back.erase(kind);
}

void AccessTrail::resigned() {
    // Only this launch's asking waits for a return: an earlier launch's entry is a leftover.
    for (const auto& [kind, by] : sent)
        if (by == launch) away.insert(kind);
}

void AccessTrail::activated() { back.insert(away.begin(), away.end()); }

bool AccessTrail::settle(AccessKind kind) {
    away.erase(kind);
    back.erase(kind);
    return sent.erase(kind) > 0;
}

std::map<std::string, std::string> AccessTrail::saved() const {
    std::map<std::string, std::string> out;
    for (const auto& [kind, by] : sent) out[AccessKinds::raw(kind)] = by;
    return out;
}

std::map<AccessKind, std::string> AccessTrail::marks(const std::optional<std::map<std::string, std::string>>& saved) {
    std::map<AccessKind, std::string> out;
    if (!saved) return out;
    for (const auto& [raw, by] : *saved) {
        auto kind = AccessKinds::fromRaw(raw);
        if (kind && !by.empty()) out[*kind] = by;
    }
    return out;
}

AccessState AccessTrail::state(AccessKind kind, bool app, std::optional<bool> helper, bool bridgeOwned) const {
    auto by = sent.find(kind);
    return AccessDecision::state(app, helper, bridgeOwned,
                                 by == sent.end() ? std::nullopt : std::optional<std::string>(by->second), launch,
                                 back.contains(kind));
}

} // namespace orvan
