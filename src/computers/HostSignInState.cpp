#include "computers/HostSignInState.h"

#include "computers/HostSignIn.h"
#include "foundation/Text.h"

namespace orvan {

std::optional<HostSignInState> HostSignInState::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    HostSignInState s;
    std::optional<std::string> url;
    Fields f(j);
    f.loose("state", s.state, "")
        .loose("url", url)
        .loose("code", s.code, "")
        .loose("paste", s.paste, false)
        .loose("lands", s.lands, "")
        .loose("label", s.label, "")
        .loose("message", s.message, "");
    for (std::string* text : {&s.state, &s.code, &s.lands, &s.label, &s.message}) *text = Text::trimmed(*text);
    if (url) s.url = HostSignIn::page(Text::trimmed(*url));
    return s;
}

} // namespace orvan
