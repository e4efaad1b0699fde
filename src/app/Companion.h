#pragma once
// The program's one set of models and real adapters, shared by the window and the headless view.
// Nothing else in the program knows every model.

#include "accounts/Accounts.h"
#include "bridge/Bridge.h"
#include "bridge/DeskView.h"
#include "platform/linux/PosixProcesses.h"
#include "platform/linux/QtClock.h"
#include "platform/linux/QtLocalApi.h"
#include "platform/linux/XdgAutostart.h"
#include "sandboxes/Sandboxes.h"

#include <memory>
#include <string>
#include <vector>

namespace orvan::app {

class Companion {
public:
    Companion(Environment environment, std::string executable, std::vector<std::string> arguments);

    // Before the first window: carry the earlier name's folder and settings over.
    void willFinishLaunching();
    // After: settle the login entry.
    void didFinishLaunching();
    // With the main window: start supervising.
    void startDesk();
    // Every deliberate end of the process goes through here.
    void quitting() {
        accounts_->cancelReads();
        sandboxesPoll_.cancel();
        bridge_->stopIfOwned();
    }

    Bridge& bridge() { return *bridge_; }
    Accounts& accounts() { return *accounts_; }
    Sandboxes& sandboxes() { return *sandboxes_; }
    DeskState& deskState() { return desk_; }
    Clock& clock() { return clock_; }
    const Environment& environment() const { return environment_; }
    std::string versionLabel() const;

private:
    Environment environment_;
    QtClock clock_;
    PosixProcesses processes_;
    XdgAutostart login_;
    std::unique_ptr<QtLocalApi> api_;
    std::unique_ptr<Bridge> bridge_;
    std::unique_ptr<Accounts> accounts_;
    std::unique_ptr<Sandboxes> sandboxes_;
    // The Sandboxes section's poll, started when a bridge first answers.
    Cancel sandboxesPoll_;
    bool sandboxesPolling_ = false;
    Observable::Subscription bridgeReady_;
    bool accountsRead_ = false;
    DeskState desk_;
};

} // namespace orvan::app
