#include "phones/JoinApprovalView.h"

#include "phones/JoinWords.h"

namespace orvan {

using namespace std::chrono_literals;

JoinApprovalView::JoinApprovalView(Bridge& bridge, AccountWords::Place place)
    : bridge_(bridge), place_(std::move(place)) {
    watch_ = bridge_.observe([this] { joinsChanged(); });
}

JoinApprovalView::~JoinApprovalView() {
    arming_.cancel();
    alive_.cancel();
}

void JoinApprovalView::appeared() {
    arming_.cancel();
    arming_ = Cancel();
    spawn(arm(arming_));
}

void JoinApprovalView::joinsChanged() {
    if (bridge_.joins == joins_) return;
    joins_ = bridge_.joins;
    std::vector<std::string> shown;
    for (const auto& join : joins_) shown.push_back(join.shown());
    if (shown != shown_) {
        shown_ = std::move(shown);
        appeared();
    }
    if (std::any_of(joins_.begin(), joins_.end(), [](const JoinRequest& j) { return j.guestRole(); }))
        spawn(loadNames(alive_));
}

Task<void> JoinApprovalView::arm(Cancel cancel) {
    assign(armed, false);
    // A newer change cancels this wait without arming; its own task arms later.
    bool slept = co_await bridge_.clock().sleep(1s, cancel);
    if (!slept) co_return;
    if (cancel.cancelled()) co_return;
    assign(armed, true);
}

Task<void> JoinApprovalView::loadNames(Cancel alive) {
    auto scope = co_await bridge_.scope();
    if (alive.cancelled() || !scope) co_return;
    names = scope->names();
    publish();
}

ui::Node JoinApprovalView::build(TimePoint now) const {
    Bridge* b = &bridge_;
    ui::Nodes rows;
    for (const auto& join : bridge_.joins) {
        ui::Nodes lines;
        lines.push_back(ui::text(JoinWords::title(join, bridge_.name)).style(ui::TextStyle::Headline));
        if (auto platform = JoinWords::platform(join); !platform.empty())
            lines.push_back(ui::text(platform).tone(ui::Tone::Dim));
        lines.push_back(ui::text(JoinWords::code(join)).style(ui::TextStyle::Title).key("code"));
        lines.push_back(ui::text(JoinWords::check(join)));
        for (auto& line : JoinWords::sees(join, names, now, place_))
            lines.push_back(ui::text(std::move(line)).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
        const bool open = !bridge_.joinBusy && join.answerable();
        lines.push_back(ui::hstack({
            ui::button("Deny", [b, join] { spawn(b->answerJoin(join, false)); })
                .role(ui::Role::Destructive)
                .enabled(open)
                .help(JoinWords::denyHelp)
                .key("deny"),
            ui::button("Approve", [b, join] { spawn(b->answerJoin(join, true)); })
                .role(ui::Role::Primary)
                .enabled(open && armed)
                .help(JoinWords::approveHelp)
                .key("approve"),
        }));
        rows.push_back(ui::vstack(std::move(lines)).key("join:" + join.id));
    }
    if (rows.empty()) rows.push_back(ui::text(JoinWords::nobody).tone(ui::Tone::Dim));
    if (!bridge_.joinNote.empty()) rows.push_back(ui::text(bridge_.joinNote).tone(ui::Tone::Danger).key("joinNote"));
    return ui::vstack(std::move(rows)).key("joins");
}

} // namespace orvan
