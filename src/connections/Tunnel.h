#pragma once
// The bridge's tunnels as last read. The section that shows them keeps this fresh with `poll`; sends
// are one at a time, and the poll goes on while one is out.

#include "connections/TunnelState.h"
#include "foundation/Async.h"
#include "foundation/Carryover.h"
#include "foundation/Json.h"
#include "foundation/Observable.h"
#include "platform/LocalApi.h"

#include <optional>
#include <string>

namespace orvan {

class Tunnel final : public Observable {
public:
    Tunnel(LocalApi& api, Clock& clock, Environment environment);
    ~Tunnel() override;

    // Published fields.
    std::optional<TunnelState> state;
    // The bridge is older than these calls.
    bool unavailable = false;
    bool busy = false;
    std::string note;

    Task<void> refresh();
    // Posts `body`; `failed` is the sentence when the bridge has none of its own.
    Task<void> send(Json body, std::string failed);
    // Reads at once, then every five seconds, until `cancel` (or the model's end).
    Task<void> poll(Cancel cancel);

private:
    LocalApi& api_;
    Clock& clock_;
    Environment environment_;
    Cancel alive_;
};

} // namespace orvan
