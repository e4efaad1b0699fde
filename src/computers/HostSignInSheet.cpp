#include "computers/HostSignInSheet.h"

#include "computers/HostSignIn.h"

namespace orvan {

using namespace std::chrono_literals;

namespace {
constexpr Duration startTimeout = 90s;
constexpr Duration stateTimeout = 15s;
constexpr Duration codeTimeout = 15s;
constexpr Duration cancelTimeout = 40s;

// The cancel goes out on its own: the sheet that asked for it may be gone before it is answered.
Task<void> cancelThere(Hosts& hosts, std::string target, std::string tool) {
    co_await hosts.signInCall(HostSignInSheet::cancelPath, std::move(target), std::move(tool), std::nullopt,
                              cancelTimeout);
}
} // namespace

HostSignInSheet::HostSignInSheet(Hosts& hosts, CompanionHost host, Desktop* desktop, Clipboard* clipboard)
    : hosts_(hosts), host_(std::move(host)), desktop_(desktop), clipboard_(clipboard) {}

HostSignInSheet::~HostSignInSheet() {
    endWork();
    alive_.cancel();
}

void HostSignInSheet::endWork() {
    if (work_) work_->cancel();
    work_.reset();
}

Task<void> HostSignInSheet::readTools() {
    Cancel alive = alive_;
    auto read = co_await hosts_.signInTools(host_);
    if (alive.cancelled() || !read) co_return;
    assign(tools, std::move(read->tools));
    assign(running, std::move(read->running));
}

Task<void> HostSignInSheet::open() {
    hosts_.clearNote();
    co_await readTools();
}

void HostSignInSheet::applyStep(const HostSignInState& state) {
    HostSignInStep next = HostSignInStep::of(state);
    if (next.kind == HostSignInStep::Kind::done && tool) assign(resultLine, HostSignIn::result(state, *tool, host_.name));
    assign(step, std::move(next));
}

Task<void> HostSignInSheet::begin(std::string chosen) {
    endWork();
    Cancel work;
    work_ = work;
    shown_ = false;
    assign(tool, chosen);
    assign(step, HostSignInStep::starting());
    assign(pasted, "");
    assign(line, "");
    assign(copied, false);
    hosts_.clearNote();
    co_await follow(std::move(chosen), work);
}

Task<void> HostSignInSheet::follow(std::string chosen, Cancel work) {
    Clock& clock = hosts_.clock();
    auto started = co_await hosts_.signInCall(startPath, host_.target, chosen, std::nullopt, startTimeout);
    if (work.cancelled()) co_return;
    if (auto* sentence = std::get_if<std::string>(&started)) {
        assign(step, HostSignInStep::failed(*sentence));
        co_return;
    }
    HostSignInState state = std::get<HostSignInState>(std::move(started));
    const TimePoint deadline = clock.now() + HostSignIn::wait;
    for (;;) {
        if (work.cancelled()) co_return;
        HostSignInStep next = HostSignInStep::of(state);
        const auto kind = next.kind;
        if (kind == HostSignInStep::Kind::done) {
            assign(resultLine, HostSignIn::result(state, chosen, host_.name));
            assign(step, std::move(next));
            co_await readTools();
            co_return;
        }
        assign(step, std::move(next));
        if (kind == HostSignInStep::Kind::failed) {
            co_await readTools();
            co_return;
        }
        if (kind == HostSignInStep::Kind::waiting && !shown_) {
            shown_ = true;
            if (!state.code.empty()) copyCode();
            openPage();
        }
        const bool slept = co_await clock.sleep(HostSignIn::poll, work);
        if (!slept) co_return;
        if (work.cancelled()) co_return;
        if (clock.now() >= deadline) {
            assign(step, HostSignInStep::failed("No one finished signing in in time. Try again."));
            co_return;
        }
        auto polled = co_await hosts_.signInCall(statePath, host_.target, chosen, std::nullopt, stateTimeout);
        if (work.cancelled()) co_return;
        // A read that failed leaves the state as it was: the bridge may be busy, and the deadline
        // guards the end.
        if (auto* read = std::get_if<HostSignInState>(&polled)) state = std::move(*read);
    }
}

Task<void> HostSignInSheet::send() {
    auto code = HostSignIn::cleanCode(pasted);
    if (!code || !tool || sending) co_return;
    Cancel alive = alive_;
    // A code for one sign-in never moves the step of the one that replaced it.
    std::optional<Cancel> work = work_;
    assign(sending, true);
    assign(line, "");
    auto answer = co_await hosts_.signInCall(codePath, host_.target, *tool, code, codeTimeout);
    if (alive.cancelled()) co_return;
    const bool current = work && !work->cancelled();
    if (auto* state = std::get_if<HostSignInState>(&answer)) {
        if (current) applyStep(*state);
        assign(pasted, "");
    } else {
        assign(line, std::get<std::string>(answer));
    }
    assign(sending, false);
}

Task<void> HostSignInSheet::stop() {
    Cancel alive = alive_;
    endWork();
    if (tool) co_await hosts_.signInCall(cancelPath, host_.target, *tool, std::nullopt, cancelTimeout);
    if (alive.cancelled()) co_return;
    co_await readTools();
    if (alive.cancelled()) co_return;
    assign(tool, std::nullopt);
    assign(step, HostSignInStep::starting());
}

Task<void> HostSignInSheet::back() {
    Cancel alive = alive_;
    endWork();
    co_await readTools();
    if (alive.cancelled()) co_return;
    assign(tool, std::nullopt);
    assign(step, HostSignInStep::starting());
}

void HostSignInSheet::close(const std::function<void()>& done) {
    if (tool && step.running()) {
        endWork();
        spawn(cancelThere(hosts_, host_.target, *tool));
    }
    if (done) done();
}

void HostSignInSheet::openPage() {
    if (step.kind != HostSignInStep::Kind::waiting || !step.state.url || !desktop_) return;
    desktop_->openUrl(*step.state.url);
}

void HostSignInSheet::copyCode() {
    if (step.kind != HostSignInStep::Kind::waiting || step.state.code.empty() || !clipboard_) return;
    assign(copied, clipboard_->putText(step.state.code, false));
}

} // namespace orvan
