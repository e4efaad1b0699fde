// Bridge's update operations: checking the feed, turning a release down, and installing it.
#include "bridge/Bridge.h"

#include "access/Relaunch.h"
#include "updates/InstallTarget.h"
#include "updates/UpdateContext.h"
#include "updates/UpdateFeed.h"
#include "updates/UpdateInstaller.h"
#include "updates/UpdatePlan.h"
#include "updates/UpdateStore.h"
#include "updates/UpdateWords.h"

#include <unistd.h>

namespace orvan {

Task<void> Bridge::checkForUpdate(bool manual) {
    if (updateBusy || !setup_.updates) co_return;
    UpdateContext& context = *setup_.updates;
    assign(updateBusy, true);
    assign(updateNote, std::string(manual ? UpdateWords::checking : UpdateWords::checkingQuietly));
    Cancel alive = alive_;
    auto latest = co_await UpdateFeed::latest(*context.web, UpdateFeed::manifestURL(context.downloadsBase));
    if (alive.cancelled()) co_return;
    assign(updateBusy, false);
    if (auto* notice = std::get_if<UpdateNotice>(&latest)) {
        // An automatic check that fails leaves a ready release and its words alone.
        if (manual || updateReady.empty()) assign(updateNote, notice->text);
        co_return;
    }
    const UpdateManifest& release = std::get<UpdateManifest>(latest);
    UpdatePlan plan = UpdatePlan::decide(context.currentVersion, release, context.system,
                                         UpdateStore::dismissed(setup_.environment), manual);
    // A copy the Debian package installed is the package manager's to replace: it is told, not asked.
    if ((plan.kind == UpdatePlan::Kind::prompt || plan.kind == UpdatePlan::Kind::quiet) &&
        InstallTarget::packaged(context.running, context.dpkgInfo)) {
        readyRelease.reset();
        assign(updateReady, std::string());
        assign(updatePrompt, false);
        assign(updateNote, UpdateWords::readyFromPackages(plan.version));
        co_return;
    }
    switch (plan.kind) {
    case UpdatePlan::Kind::prompt:
    case UpdatePlan::Kind::quiet:
        readyRelease = release;
        assign(updateReady, plan.version);
        assign(updateNote, UpdateWords::ready(plan.version));
        assign(updatePrompt, plan.kind == UpdatePlan::Kind::prompt);
        break;
    case UpdatePlan::Kind::current:
        readyRelease.reset();
        assign(updateReady, std::string());
        assign(updateNote, std::string(manual ? UpdateWords::latest : UpdateWords::latestQuietly));
        break;
    case UpdatePlan::Kind::unsupported:
        readyRelease.reset();
        assign(updateReady, std::string());
        assign(updateNote, UpdateWords::unsupported(plan.version, plan.minimum));
        break;
    }
}

void Bridge::dismissUpdate() {
    if (readyRelease) UpdateStore::dismiss(setup_.environment, readyRelease->version);
    assign(updatePrompt, false);
}

Task<void> Bridge::installUpdate() {
    if (updateBusy || !readyRelease || !setup_.updates) co_return;
    UpdateContext& context = *setup_.updates;
    auto target = InstallTarget::target(context.running, context.candidates);
    if (!target) {
        assign(updatePrompt, false);
        assign(updateNote, std::string(UpdateWords::noTarget));
        co_return;
    }
    if (InstallTarget::packaged(target->url, context.dpkgInfo)) {
        assign(updatePrompt, false);
        assign(updateNote, std::string(UpdateWords::packaged));
        co_return;
    }
    std::error_code ec;
    const bool same = std::filesystem::weakly_canonical(target->url, ec) == std::filesystem::weakly_canonical(context.running, ec);
    assign(updatePrompt, false);
    assign(updateBusy, true);
    assign(updateNote, std::string(same ? UpdateWords::downloading : UpdateWords::downloadingElsewhere));
    Cancel alive = alive_;
    UpdateManifest release = *readyRelease;
    auto prepared = co_await UpdateInstaller::prepare(context, release, context.signature.runningTeam());
    if (alive.cancelled()) co_return;
    if (auto* sentence = std::get_if<std::string>(&prepared)) {
        assign(updateBusy, false);
        assign(updateNote, *sentence);
        co_return;
    }
    const auto ready = std::get<UpdateInstaller::Prepared>(prepared);
    auto giveUp = [&] {
        assign(updateBusy, false);
        assign(updateNote, std::string(UpdateInstaller::notInstalled));
        std::filesystem::remove_all(ready.work, ec);
    };
    if (target->admin) {
        assign(updateNote, std::string(UpdateWords::asking));
        bool allowed = co_await UpdateInstaller::authorize(context);
        if (alive.cancelled()) co_return;
        if (!allowed) {
            giveUp();
            co_return;
        }
    }
    if (same) {
        assign(updateNote, std::string(UpdateWords::installing));
        bool begun = co_await UpdateInstaller::beginSwap(context, ready.staged, ready.work, target->url,
                                                         context.pid ? context.pid : static_cast<int>(::getpid()), false,
                                                         target->admin);
        if (alive.cancelled()) co_return;
        if (!begun) {
            // The scripts never started, so the work folder is left for nobody: it goes too.
            giveUp();
            co_return;
        }
    } else {
        assign(updateNote, std::string(UpdateWords::installingElsewhere));
        bool replaced = co_await UpdateInstaller::replaceNow(context, ready.staged, target->url, target->admin);
        if (alive.cancelled()) co_return;
        if (!replaced) {
            giveUp();
            co_return;
        }
        // The new copy starts once this one is gone, so it doesn't hand itself over to this one.
        std::optional<int> bridgePid;
        if (startedByUs && child && child->isRunning()) bridgePid = child->processIdentifier();
        Relaunch::begin(processes_, target->url / "bin" / InstallTarget::bundleName,
                        context.pid ? context.pid : static_cast<int>(::getpid()), bridgePid, setup_.environment);
        std::filesystem::remove_all(ready.work, ec);
    }
    releaseLidHold();
    stopIfOwned();
    if (setup_.terminate) setup_.terminate();
}

} // namespace orvan
