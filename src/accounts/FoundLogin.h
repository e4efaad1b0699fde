#pragma once
// A login found on this computer that no account uses yet, which the owner may adopt.

#include "foundation/Json.h"

#include <optional>
#include <string>

namespace orvan {

struct FoundLogin {
    std::string provider;
    std::string home;
    bool isDefault = false;
    bool signedIn = false;

    bool operator==(const FoundLogin&) const = default;

    // "default" for the provider's default login, otherwise its folder.
    std::string adoptHome() const { return isDefault ? std::string("default") : home; }
    std::string id() const { return provider + "|" + adoptHome(); }

    // Fails without a provider, and for a login that is not the default yet names no home.
    static std::optional<FoundLogin> decode(const Json& j);
};

} // namespace orvan
