#include "phones/OwnerSetupButton.h"

#include "phones/OwnerSetupAnswer.h"

namespace orvan {

using namespace std::chrono_literals;

void OwnerSetupButton::start() {
    if (polling_) return;
    polling_ = true;
    spawn(poll(alive_));
}

Task<void> OwnerSetupButton::read() {
    if (!bridge_.ready) {
        assign(available, false);
        co_return;
    }
    Cancel alive = alive_;
    HttpAnswer answer = co_await bridge_.local(OwnerSetupPaths::setup, std::nullopt, 4s);
    if (alive.cancelled()) co_return;
    std::optional<OwnerSetupStatus> status;
    if (answer.isHttp() && answer.status == 200) status = OwnerSetupStatus::read(answer.body);
    assign(available, status && status->available);
}

Task<void> OwnerSetupButton::poll(Cancel alive) {
    while (!alive.cancelled()) {
        co_await read();
        if (alive.cancelled()) co_return;
        bool slept = co_await bridge_.clock().sleep(5s, alive);
        if (!slept) co_return;
    }
}

} // namespace orvan
