#include "computers/HostSignInStep.h"

namespace orvan {

HostSignInStep HostSignInStep::of(const HostSignInState& state) {
    auto orElse = [&](const char* fallback) {
        return failed(state.message.empty() ? std::string(fallback) : state.message);
    };
    if (state.isWaiting()) return {Kind::waiting, state, {}};
    if (state.state == "starting") return starting();
    if (state.state == "verifying") return {Kind::verifying, {}, {}};
    if (state.state == "done") return {Kind::done, {}, {}};
    // Waiting, but without a page this computer may open.
    if (state.state == "show-link" || state.state == "waiting-for-code")
        return failed("That computer did not give a sign-in page this Mac can open.");
    if (state.state == "failed") return orElse("The sign-in did not finish. Try again.");
    if (state.state == "canceled") return orElse("The sign-in was stopped.");
    return orElse("The sign-in stopped. Try again.");
}

} // namespace orvan
