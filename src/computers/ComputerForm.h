#pragma once
// The add sheet's form, and what a test or an add sends from it. The secret lives only here, in
// memory, and goes into one request body; nothing writes it anywhere.

#include "foundation/Json.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct ComputerForm {
    enum class SignIn { autoSignIn, key, password };

    std::string name;
    // A host name, an address, or a Host of the user's SSH configuration.
    std::string address;
    std::string port = "22";
    std::string user;
    SignIn signIn = SignIn::autoSignIn;
    std::string key = "~/.ssh/id_ed25519";
    // The password, or the key's passphrase.
    std::string secret;
    // The host key the owner trusted.
    std::string fingerprint;
    bool terminalOnly = false;

    // A fresh form, signing in as `user` (this computer's user name).
    static ComputerForm startingAs(std::string user);

    // The ways to sign in, in the order they are offered.
    static const std::vector<SignIn>& signIns();
    static std::string id(SignIn signIn);
    static std::string label(SignIn signIn);
    // The system's name as people write it; anything unknown reads as Linux.
    static std::string systemName(const std::optional<std::string>& os);

    // The request body of a test and of an add.
    Json body() const;
};

} // namespace orvan
