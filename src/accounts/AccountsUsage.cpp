// The accounts model's usage read: slow, asked for often, and never run twice at once.

#include "accounts/Accounts.h"

#include "bridge/LocalRequest.h"

namespace orvan {

namespace {
constexpr Duration usageTimeout = std::chrono::seconds(60);
}

Task<void> Accounts::refreshAll(bool fresh) {
    int generation = plan.beginPair();
    launchUsage(plan.requestUsage(fresh, generation));
    showUsageBusy();
    co_await refresh(generation);
}

void Accounts::readUsage(bool fresh) {
    launchUsage(plan.requestUsage(fresh, plan.currentGeneration()));
    showUsageBusy();
}

void Accounts::cancelReads() {
    plan.cancel();
    if (usageTask_) usageTask_->cancel();
    usageTask_.reset();
    assign(usageBusy, false);
}

void Accounts::launchUsage(const std::optional<UsageReadStep>& step) {
    if (!step || step->kind != UsageReadStep::Kind::start) return;
    usageTask_ = Cancel();
    spawn(performUsageRead(step->fresh, step->run, step->generation, *usageTask_));
}

Task<void> Accounts::performUsageRead(bool fresh, int run, int generation, Cancel task) {
    Cancel alive = alive_;
    HttpAnswer answer = co_await send(UsageList::path(fresh), std::nullopt, usageTimeout);
    if (alive.cancelled()) co_return;
    if (task.cancelled() || !plan.accepts(generation)) {
        launchUsage(plan.usageFinished(run));
        showUsageBusy();
        co_return;
    }
    std::optional<UsageList> decoded;
    if (LocalRequest::ok(answer)) decoded = decodeJson<UsageList>(answer.body);
    if (decoded) {
        assign(usage, std::move(decoded));
        assign(usageNote, "");
    } else if (answer.failure) {
        assign(usageNote, "The bridge did not answer.");
    } else {
        assign(usageNote, LocalRequest::message(answer.body).value_or("The plan meters were not read."));
    }
    launchUsage(plan.usageFinished(run));
    showUsageBusy();
}

} // namespace orvan
