#include "access/FilesAccessModel.h"

#include "bridge/LocalRequest.h"

namespace orvan {

FilesAccessModel::FilesAccessModel(LocalApi& api, FilesAccessSetup setup) : api_(api), setup_(std::move(setup)) {}

FilesAccessModel::~FilesAccessModel() { alive_.cancel(); }

Task<void> FilesAccessModel::load() {
    std::optional<FilesAsked> asked;
    if (setup_.defaults) asked = FilesAsked::load(*setup_.defaults);
    std::optional<std::string> team;
    std::string bundle;
    if (setup_.identity) {
        team = setup_.identity->team();
        bundle = setup_.identity->bundle();
    }
    assign(stage, FilesAccess::stage(team, bundle, asked));
    if (stage != FilesAccess::Stage::notAsked) co_await check();
}

Task<void> FilesAccessModel::check(Duration timeout) { co_await read(timeout); }

Task<bool> FilesAccessModel::read(Duration timeout) {
    Cancel alive = alive_;
    const HttpAnswer reply = co_await LocalRequest::send(api_, FilesAccess::path, std::nullopt, timeout, setup_.environment);
    // A failed read changes nothing and says nothing: the next look tells the truth.
    if (alive.cancelled() || !LocalRequest::ok(reply)) co_return false;
    auto rows = FilesAccess::list(reply.body);
    if (!rows) co_return false;
    assign(answer, std::move(rows));
    co_return true;
}

Task<void> FilesAccessModel::ask() {
    if (busy) co_return;
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, FilesAccess::asking);
    // One folder after the other, so each question stands alone on the screen.
    if (setup_.desktop)
        for (const char* name : FilesAccess::folders) setup_.desktop->openFolder(setup_.home / name);
    const bool reported = co_await read(askedTimeout);
    if (alive.cancelled()) co_return;
    std::string team, bundle;
    if (setup_.identity) {
        team = setup_.identity->team().value_or("");
        bundle = setup_.identity->bundle();
    }
    if (setup_.defaults) FilesAsked{team, bundle}.store(*setup_.defaults);
    assign(stage, FilesAccess::Stage::asked);
    if (!reported) assign(answer, FilesAccess::touched(setup_.home));
    assign(note, "");
    assign(busy, false);
}

void FilesAccessModel::openSettings(bool fullDisk) {
    if (setup_.desktop) setup_.desktop->openUrl(fullDisk ? FilesAccess::fullDisk : FilesAccess::filesAndFolders);
}

} // namespace orvan
