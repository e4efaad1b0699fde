#pragma once
// The Files section's model: the stage of asking, the bridge's last report, and the asking itself,
// which opens each folder in turn so the system puts its question while the owner is here.

#include "access/FilesAccess.h"
#include "foundation/Async.h"
#include "foundation/Carryover.h"
#include "foundation/Observable.h"
#include "foundation/UserDefaults.h"
#include "platform/CodeIdentity.h"
#include "platform/Desktop.h"
#include "platform/LocalApi.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct FilesAccessSetup {
    Environment environment;
    std::shared_ptr<UserDefaults> defaults;
    const CodeIdentity* identity = nullptr;
    Desktop* desktop = nullptr;
    std::filesystem::path home;
};

class FilesAccessModel final : public Observable {
public:
    // A report read while the owner may still be answering the system's questions waits this long.
    static constexpr Duration askedTimeout = std::chrono::seconds(120);

    FilesAccessModel(LocalApi& api, FilesAccessSetup setup);
    ~FilesAccessModel() override;

    // Published fields.
    FilesAccess::Stage stage = FilesAccess::Stage::notAsked;
    std::optional<std::vector<FolderAccess>> answer;
    bool busy = false;
    std::string note;

    Task<void> load();
    Task<void> check(Duration timeout = std::chrono::seconds(8));
    Task<void> ask();
    // The system's settings, where a refused folder is turned on by hand.
    void openSettings(bool fullDisk);

private:
    // True when the bridge answered with a report.
    Task<bool> read(Duration timeout);

    LocalApi& api_;
    FilesAccessSetup setup_;
    Cancel alive_;
};

} // namespace orvan
