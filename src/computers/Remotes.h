#pragma once
// The remote desktops the phone opens through this computer: the list, testing a new one (with
// its certificate trusted on first use for RDP), adding and removing. The bridge holds the
// connections and keeps the passwords; nothing of a password stays here.

#include "computers/CompanionRemote.h"
#include "computers/RemoteForm.h"
#include "foundation/Async.h"
#include "foundation/Carryover.h"
#include "foundation/Observable.h"
#include "platform/LocalApi.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

class Remotes final : public Observable {
public:
    Remotes(LocalApi& api, Environment environment);
    ~Remotes() override;

    // Published fields, in their declared order.
    std::vector<CompanionRemote> list;
    // What the last good test found.
    std::optional<RemoteFound> found;
    std::string note;
    bool busy = false;

    // Only a good answer changes the list; anything else says nothing.
    Task<void> refresh();
    // Answered only once the bridge has reached the desktop and signed in, or given up.
    Task<void> test(RemoteForm form);
    Task<bool> add(RemoteForm form);
    // Reports nothing: a desktop that could not be removed stays in the list that follows.
    Task<void> remove(CompanionRemote remote);

    // A change of what would be reached: the last test found something else.
    void forgetFound() { assign(found, std::nullopt); }
    // A sheet opens on a clean slate.
    void clearNote() { assign(note, std::string()); }

    // Found, and for RDP with no trust still to give.
    bool tested(const RemoteForm& form) const;

private:
    Task<HttpAnswer> send(std::string path, std::optional<Json> body, Duration timeout);

    LocalApi& api_;
    Environment environment_;
    Cancel alive_;
};

} // namespace orvan
