// Any bytes as the bridge's tunnel answer, then through every line drawn from it: no crash, no
// exception, a reason never past its bound, and the quick note only ever its one known sentence.
#include "connections/Connections.h"
#include "connections/TunnelState.h"
#include "foundation/Json.h"
#include "foundation/Text.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace orvan;
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    try {
        auto state = decodeJson<TunnelState>(bytes);
        if (!state) return 0;
        (void)Connections::targetLine(*state);
        (void)Connections::domainLine(*state);
        (void)Connections::quickLine(*state);
        (void)Connections::tailscaleLine(*state);
        if (Text::characterCount(Connections::reason(state->reason)) > 300) std::abort();
        if (auto note = Connections::quickNote(*state); note && *note != Connections::unchecked) std::abort();
        // What the owner types goes through the same cleaning; the fields' text is any text.
        (void)Connections::problem(state->hostname, state->reason, state->token);
        (void)Connections::save(state->hostname, state->quickReason);
    } catch (...) {
        std::abort();
    }
    return 0;
}
