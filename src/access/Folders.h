#pragma once
// The direct-thread folders as last read from the bridge. The section that shows them reads the
// list when it appears; a change is one request at a time, followed by a fresh read.

#include "access/ThreadFolder.h"
#include "foundation/Async.h"
#include "foundation/Carryover.h"
#include "foundation/Json.h"
#include "foundation/Observable.h"
#include "platform/LocalApi.h"

#include <string>
#include <vector>

namespace orvan {

class Folders final : public Observable {
public:
    Folders(LocalApi& api, Environment environment);
    ~Folders() override;

    // Published fields.
    std::vector<ThreadFolder> list;
    bool loaded = false;
    bool busy = false;
    std::string note;

    Task<void> refresh();
    Task<void> add(std::string path);
    Task<void> remove(std::string id);
    // Posts `body` to `path`; `failed` is the sentence when the bridge has none of its own.
    Task<void> send(std::string path, Json body, std::string failed);

private:
    LocalApi& api_;
    Environment environment_;
    Cancel alive_;
};

} // namespace orvan
