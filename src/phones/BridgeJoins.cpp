// The join requests of the supervisor: read after every status, brought forward in their own
// window and on the desktop, and answered with exactly what the owner was shown.
#include "bridge/Bridge.h"

#include "bridge/LocalRequest.h"
#include "phones/JoinApprovals.h"
#include "phones/JoinWords.h"

namespace orvan {

using namespace std::chrono_literals;

namespace {
constexpr Duration readTimeout = 4s;
constexpr Duration answerTimeout = 8s;
constexpr const char* noticeBody = "Open the request and check the code they read you.";
constexpr const char* noticeAction = "Review";

std::string noticeTag(const std::string& id) { return "join:" + id; }

// Worked out outside the coroutine: GCC 12 frees the temporaries of a short-circuited condition
// twice inside one.
std::string answerNote(const HttpAnswer& answer, bool approve) {
    if (answer.isHttp() && answer.status == 409 && JoinApprovals::refusal(answer.body) == "join_changed")
        return JoinApprovals::changed;
    if (LocalRequest::ok(answer)) return {};
    std::optional<std::string> said;
    if (answer.isHttp()) said = LocalRequest::message(answer.body);
    return said.value_or(approve ? JoinWords::notApproved : JoinWords::notDenied);
}
} // namespace

Task<void> Bridge::refreshJoins() {
    Cancel alive = alive_;
    HttpAnswer answer = co_await send(JoinApprovals::path, std::nullopt, readTimeout);
    if (alive.cancelled()) co_return;
    // Anything but a good list reads as nobody waiting: a bridge out of reach shows no request.
    std::vector<JoinRequest> read;
    std::vector<JoinedNotice> notices;
    if (LocalRequest::ok(answer)) {
        if (auto list = JoinRequest::list(answer.body)) {
            read = std::move(*list);
            notices = JoinedNotice::list(answer.body);
        }
    }
    assign(joins, std::move(read));
    assign(joined, std::move(notices));
    const bool wasShown = joinWindow.shown();
    switch (joinQueue.take(joins)) {
    case JoinStep::open: joinWindow.show(); break;
    case JoinStep::close: joinWindow.hide(); break;
    case JoinStep::stay: break;
    }
    if (joinWindow.shown() != wasShown) publish(); // the text view draws the window in its frame

    if (!setup_.notifications) co_return;
    std::set<std::string> present;
    for (const auto& join : joins) {
        present.insert(join.id);
        if (joinsNotified.contains(join.id)) continue;
        joinsNotified.insert(join.id);
        // Never the code: whoever sees the desktop must not learn what to read back.
        Notice notice{JoinWords::who(join) + " wants to join\u2026", noticeBody, noticeAction};
        Cancel still = alive_;
        setup_.notifications->post(noticeTag(join.id), notice, [this, still] {
            if (!still.cancelled()) showJoins();
        });
    }
    for (auto it = joinsNotified.begin(); it != joinsNotified.end();) {
        if (present.contains(*it)) {
            ++it;
            continue;
        }
        setup_.notifications->withdraw(noticeTag(*it));
        it = joinsNotified.erase(it);
    }
}

void Bridge::showJoins() {
    if (joins.empty()) return;
    const bool wasShown = joinWindow.shown();
    joinWindow.show();
    if (!wasShown) publish();
}

Task<void> Bridge::answerJoin(JoinRequest join, bool approve) {
    if (joinBusy || join.id.empty() || !join.answerable()) co_return;
    assign(joinBusy, true);
    assign(joinNote, "");
    Json body = JoinApprovals::body(join);
    Cancel alive = alive_;
    std::string path = JoinApprovals::deny(join.id);
    if (approve) path = JoinApprovals::approve(join.id);
    HttpAnswer answer = co_await send(std::move(path), std::move(body), answerTimeout);
    if (alive.cancelled()) co_return;
    assign(joinNote, answerNote(answer, approve));
    co_await refreshJoins();
    if (alive.cancelled()) co_return;
    co_await refresh();
    if (alive.cancelled()) co_return;
    assign(joinBusy, false);
}

} // namespace orvan
