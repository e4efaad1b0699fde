#include "computers/HostSignInTool.h"

namespace orvan {

std::optional<HostSignInTool> HostSignInTool::decode(const Json& j) {
    HostSignInTool t;
    Fields f(j);
    f.required("tool", t.tool)
        .optional("installed", t.installed, false)
        .optional("headless", t.headless, false)
        .optional("signedIn", t.signedIn, false)
        .optional("lands", t.lands, "")
        .optional("note", t.note, "");
    return f.result(std::move(t));
}

} // namespace orvan

namespace orvan {

std::optional<HostSignInList> HostSignInList::decode(const Json& j) {
    HostSignInList l;
    Fields f(j);
    f.optional("tools", l.tools).optional("signIns", l.signIns);
    return f.result(std::move(l));
}

} // namespace orvan
