#include "computers/RemoteForm.h"

#include "foundation/Text.h"

#include <algorithm>
#include <charconv>

namespace orvan {

namespace {
// Empty is the protocol's usual port; anything that isn't a whole number goes as 0, which the
// bridge refuses with its own words.
int portNumber(const std::string& text, const std::string& proto) {
    const std::string t = Text::trimmed(text);
    if (t.empty()) return RemoteForm::defaultPort(proto);
    int value = 0;
    auto [end, error] = std::from_chars(t.data(), t.data() + t.size(), value);
    if (error != std::errc() || end != t.data() + t.size()) return 0;
    return value;
}
} // namespace

bool RemoteForm::ready() const {
    if (Text::trimmed(host).empty()) return false;
    return !rdp() || !Text::trimmed(user).empty();
}

Json RemoteForm::body() const {
    Json out{{"name", Text::trimmed(name)},
             {"protocol", proto},
             {"host", Text::trimmed(host)},
             {"port", portNumber(port, proto)}};
    if (rdp()) {
        out["user"] = Text::trimmed(user);
        if (const std::string d = Text::trimmed(domain); !d.empty()) out["domain"] = d;
    }
    if (!fingerprint.empty()) out["fingerprint"] = fingerprint;
    if (!password.empty()) out["password"] = password;
    return out;
}

void RemoteForm::wipePassword() {
    std::fill(password.begin(), password.end(), '\0');
    password.clear();
}

} // namespace orvan
