// The link between the status read, the bridge's copy of the consent and the crash queue.
#include "bridge/Bridge.h"

#include "diagnostics/ConsentSync.h"
#include "diagnostics/CrashConsent.h"
#include "diagnostics/CrashReporter.h"

namespace orvan {

namespace {
constexpr Duration sayPause = std::chrono::seconds(60);
constexpr Duration sayTimeout = std::chrono::seconds(8);
} // namespace

void Bridge::startDiagnostics() {
    if (setup_.reporter) setup_.reporter->start(setup_.diagnostics);
    if (!consentSeen) consentSeen = Consent::observeChanged([this] { diagnosticsSaid = distantPast(); });
}

void Bridge::passDiagnostics(std::optional<bool> bridgeSays, std::optional<bool> answered) {
    if (!setup_.defaults) return;
    const bool allowed = CrashConsent::allowed(*setup_.defaults);
    const bool refused = CrashConsent::refused(*setup_.defaults);
    const auto say = ConsentSync::say(bridgeSays, allowed, refused, answered);
    const TimePoint now = clock_.now();
    if (say && now - diagnosticsSaid >= sayPause) {
        diagnosticsSaid = now;
        spawn(tellDiagnostics(*say));
    }
    if (allowed && bridgeSays == true && setup_.reporter) setup_.reporter->handOver(false);
}

Task<void> Bridge::tellDiagnostics(bool allowed) {
    // The answer is not read, a failure included: the next status says how the bridge stands.
    Json body = {{"allowed", allowed}};
    co_await send("/companion/diagnostics", std::move(body), sayTimeout);
}

} // namespace orvan
