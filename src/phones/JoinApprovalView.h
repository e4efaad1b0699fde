#pragma once
// The join window's contents: each waiting request with its code, and Approve and Deny. Approve
// stays off for a second after any change of the requests, so a click meant for something else,
// or one made just as a code was replaced, can't let anyone in.

#include "accounts/AccountWords.h"
#include "bridge/Bridge.h"
#include "foundation/Async.h"
#include "foundation/Observable.h"
#include "phones/ScopeList.h"
#include "ui/Node.h"

#include <string>
#include <vector>

namespace orvan {

class JoinApprovalView final : public Observable {
public:
    JoinApprovalView(Bridge& bridge, AccountWords::Place place);
    ~JoinApprovalView() override;

    ScopeNames names;
    bool armed = false;

    // The window came forward: arming starts over.
    void appeared();
    ui::Node build(TimePoint now) const;

private:
    void joinsChanged();
    Task<void> arm(Cancel cancel);
    Task<void> loadNames(Cancel alive);

    Bridge& bridge_;
    AccountWords::Place place_;
    std::vector<std::string> shown_;
    std::vector<JoinRequest> joins_;
    Cancel arming_;
    Cancel alive_;
    Observable::Subscription watch_;
};

} // namespace orvan
