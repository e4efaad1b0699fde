// The bridge model's screen sharing: turning it on and off, ending every viewer, the log, and the
// floating bar that follows who watches.

#include "bridge/Bridge.h"
#include "bridge/LocalRequest.h"
#include "foundation/Files.h"
#include "screen/SharingWords.h"

namespace orvan {

using namespace std::chrono_literals;

Task<void> Bridge::setScreen(bool wanted) {
    Json body = {{"on", wanted}};
    Cancel alive = alive_;
    co_await send("/companion/screen", std::move(body), 8s);
    if (alive.cancelled()) co_return;
    // The outcome is read from the status that follows: a failed write leaves the switch where the
    // bridge says it is.
    co_await refresh();
    if (alive.cancelled()) co_return;
    // Turning sharing on is the moment the first grant is asked for; a leftover entry isn't asked again.
    auto it = access.find(AccessKind::screen);
    if (wanted && it != access.end() && it->second == AccessState::ask) ask(AccessKind::screen);
}

Task<void> Bridge::stopScreen() {
    Cancel alive = alive_;
    // A POST with no body at all, so no Content-Type either.
    HttpRequest request = LocalRequest::make("/companion/screen/stop", std::nullopt, 8s, setup_.environment);
    request.method = "POST";
    co_await api_.send(std::move(request));
    if (alive.cancelled()) co_return;
    co_await refresh();
}

std::filesystem::path Bridge::screenLog() const {
    // The bridge writes it in its own folder: ORVAN_DIR when given, else the standard one.
    if (auto chosen = Carryover::env("ORVAN_DIR", setup_.environment)) return std::filesystem::path(*chosen) / "screen.log";
    return DataFolder::standard(setup_.environment) / "screen.log";
}

void Bridge::openScreenLog() {
    std::error_code ec;
    auto log = screenLog();
    if (!std::filesystem::is_regular_file(log, ec) || !setup_.openFile) return;
    setup_.openFile(log);
}

void Bridge::showScreen(const CompanionScreen& next) {
    // Assigned only on a change, so views don't redraw for an unchanged screen.
    if (next != screen) assign(screen, next);
    judgeAccess();
    auto text = SharingWords::bar(screen);
    if (!text) {
        sharingBar.hide();
        return;
    }
    Cancel alive = alive_;
    Bridge* self = this;
    sharingBar.show(*text, SharingWords::first(screen), [alive, self] {
        // The bar may outlive the model for a moment; then the button does nothing.
        if (!alive.cancelled()) spawn(self->stopScreen());
    });
}

} // namespace orvan
