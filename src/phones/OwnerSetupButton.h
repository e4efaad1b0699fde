#pragma once
// Whether the main window offers owner setup: asked of the bridge every 5 seconds, and only while
// it answers at all.

#include "bridge/Bridge.h"
#include "foundation/Async.h"
#include "foundation/Observable.h"

namespace orvan {

class OwnerSetupButton final : public Observable {
public:
    explicit OwnerSetupButton(Bridge& bridge) : bridge_(bridge) {}
    ~OwnerSetupButton() override { alive_.cancel(); }

    bool available = false;

    // Starts the poll; a second call does nothing. It ends with the model.
    void start();
    Task<void> read();

private:
    Task<void> poll(Cancel alive);

    Bridge& bridge_;
    Cancel alive_;
    bool polling_ = false;
};

} // namespace orvan
