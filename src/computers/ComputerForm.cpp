#include "computers/ComputerForm.h"

#include "foundation/Text.h"

#include <charconv>

namespace orvan {

namespace {
// A decimal whole number, sign allowed; anything else, and a number too big, is 0, which the
// bridge takes as its own default port.
int portNumber(const std::string& text) {
    std::string t = Text::trimmed(text);
    if (!t.empty() && t.front() == '+') t.erase(0, 1);
    if (t.empty() || t.front() == '+') return 0;
    int value = 0;
    auto [end, error] = std::from_chars(t.data(), t.data() + t.size(), value);
    if (error != std::errc() || end != t.data() + t.size()) return 0;
    return value;
}
} // namespace

ComputerForm ComputerForm::startingAs(std::string user) {
    ComputerForm form;
    form.user = std::move(user);
    return form;
}

const std::vector<ComputerForm::SignIn>& ComputerForm::signIns() {
    static const std::vector<SignIn> all{SignIn::autoSignIn, SignIn::key, SignIn::password};
    return all;
}

std::string ComputerForm::id(SignIn signIn) {
    switch (signIn) {
    case SignIn::autoSignIn: return "auto";
    case SignIn::key: return "key";
    case SignIn::password: return "password";
    }
    return "auto";
}

std::string ComputerForm::label(SignIn signIn) {
    switch (signIn) {
    case SignIn::autoSignIn: return "SSH agent or config";
    case SignIn::key: return "Key file";
    case SignIn::password: return "Password";
    }
    return "SSH agent or config";
}

std::string ComputerForm::systemName(const std::optional<std::string>& os) {
    const std::string word = os.value_or("");
    if (word == "darwin") return "macOS";
    if (word == "freebsd") return "FreeBSD";
    if (word == "windows") return "Windows";
    if (word == "other") return "Another system";
    return "Linux";
}

Json ComputerForm::body() const {
    Json out = {
        {"name", Text::trimmed(name)},
        {"address", Text::trimmed(address)},
        {"port", portNumber(port)},
        {"user", Text::trimmed(user)},
        {"auth", id(signIn)},
        {"terminalOnly", terminalOnly},
    };
    if (signIn == SignIn::key) out["key"] = Text::trimmed(key);
    // A secret goes only with a kind of sign-in that uses one; a passphrase's blanks are its own.
    if (signIn != SignIn::autoSignIn && !secret.empty()) out["secret"] = secret;
    if (!fingerprint.empty()) out["fingerprint"] = fingerprint;
    return out;
}

} // namespace orvan
