#pragma once
// Carries out the owner setup flow's steps: the requests to the bridge and the waits between them.
// One step runs at a time, each begun by the end of the one before.

#include "bridge/Bridge.h"
#include "foundation/Async.h"
#include "foundation/Observable.h"
#include "phones/OwnerSetupFlow.h"

#include <functional>
#include <optional>
#include <string>

namespace orvan {

class OwnerSetupModel final : public Observable {
public:
    explicit OwnerSetupModel(Bridge& bridge);
    ~OwnerSetupModel() override;

    OwnerSetupFlow flow;
    std::optional<std::string> picture; // the code's PNG, only while it is on screen
    // Runs when the flow has nothing left to do; the window goes then.
    std::function<void()> onClose;
    OwnerSetupStep first;

    void perform(OwnerSetupStep step);
    void again();
    // The picture goes at once, so a closing window no longer shows a live code.
    void close();
    Bridge& bridge() { return bridge_; }

private:
    Task<void> run(OwnerSetupStep step, Cancel alive);

    Bridge& bridge_;
    Cancel alive_;
};

} // namespace orvan
