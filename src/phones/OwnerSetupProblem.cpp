#include "phones/OwnerSetupProblem.h"

namespace orvan {

OwnerSetupProblem OwnerSetupProblem::from(const OwnerSetupAnswer& answer, const std::string& otherwise) {
    if (answer.status == 503 && answer.error == "busy") return of(Kind::busy);
    if (answer.status == 429) return of(Kind::tooMany);
    if (answer.status == 409) {
        if (answer.error == "owner_exists") return of(Kind::ownerExists);
        if (answer.error == "screen_shared") return of(Kind::screenShared);
        if (answer.error == "host") return of(Kind::host);
    }
    return failed(answer.message.empty() ? otherwise : answer.message);
}

} // namespace orvan
