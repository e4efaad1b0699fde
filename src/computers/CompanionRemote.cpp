#include "computers/CompanionRemote.h"

#include "computers/RemoteForm.h"

#include <algorithm>

namespace orvan {

std::optional<CompanionRemote> CompanionRemote::decode(const Json& j) {
    CompanionRemote r;
    Fields f(j);
    f.required("id", r.id)
        .required("name", r.name)
        .required("protocol", r.protocol)
        .required("host", r.host)
        .required("port", r.port)
        .optional("user", r.user)
        .optional("secret", r.secret)
        .optional("fingerprint", r.fingerprint);
    return f.result(std::move(r));
}

std::string CompanionRemote::line() const {
    std::string upper = protocol;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c); });
    std::string out = upper + " · ";
    if (user && !user->empty()) out += *user + " at ";
    out += host;
    if (port != RemoteForm::defaultPort(protocol)) out += ":" + std::to_string(port);
    return out;
}

std::optional<RemotesList> RemotesList::decode(const Json& j) {
    RemotesList l;
    Fields f(j);
    f.required("remotes", l.remotes);
    return f.result(std::move(l));
}

std::optional<RemoteFound> RemoteFound::decode(const Json& j) {
    RemoteFound r;
    Fields f(j);
    f.required("ok", r.ok)
        .optional("error", r.error)
        .optional("message", r.message)
        .optional("name", r.name)
        .optional("w", r.w)
        .optional("h", r.h)
        .optional("security", r.security)
        .optional("fingerprint", r.fingerprint)
        .optional("confirm", r.confirm);
    return f.result(std::move(r));
}

} // namespace orvan
