#pragma once
#include "foundation/Carryover.h"
#include "platform/PrivacyGrants.h"

#include <map>
#include <optional>

namespace orvan {

// On X11 nothing stands between a program and the screen or the input devices, so both grants
// are allowed. On Wayland the desktop portal decides, and it asks the user each time a helper
// starts to share; what can be known ahead is whether this desktop's portal offers to share a
// monitor (screen) and a pointer or keyboard (input) at all. A session whose portal doesn't
// answer counts as allowed: there is nothing to hold the grant back. No Linux desktop has a
// settings page for these grants, so `open` opens nothing and says so.
class PortalPrivacyGrants final : public PrivacyGrants {
public:
    explicit PortalPrivacyGrants(Environment environment);
    bool allows(AccessKind kind) override;
    bool ask(AccessKind kind) override;
    bool open(AccessKind kind, std::string& why) override;

    enum class Session { x11, wayland };
    static Session session(const Environment& environment);
    // The portal's answer for one kind from its property: absent when no portal answered.
    static bool offers(AccessKind kind, std::optional<unsigned> available);

private:
    std::optional<unsigned> available(AccessKind kind);

    Environment environment_;
    // A portal's offer doesn't change within a session; asked once per kind.
    std::map<AccessKind, std::optional<unsigned>> asked_;
};

} // namespace orvan
