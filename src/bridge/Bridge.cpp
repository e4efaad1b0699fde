#include "bridge/Bridge.h"

#include "bridge/LocalRequest.h"
#include "foundation/Text.h"
#include "phones/PhoneWords.h"

#include <unistd.h>

namespace orvan {

using namespace std::chrono_literals;

namespace {
constexpr Duration statusTimeout = 4s;
constexpr Duration writeTimeout = 8s;
constexpr Duration pollPause = 2s;
constexpr Duration probePause = 250ms;
constexpr int probes = 20;
constexpr const char* foreignPortLine =
    "Another user's program holds port 8787 on this Mac, so the companion won't send it your key.";

bool isExecutableFile(const std::filesystem::path& path) {
    std::error_code ec;
    return std::filesystem::is_regular_file(path, ec) && ::access(path.c_str(), X_OK) == 0;
}
} // namespace

Bridge::Bridge(LocalApi& api, Clock& clock, Processes& processes, BridgeSetup setup)
    : api_(api), clock_(clock), processes_(processes), setup_(std::move(setup)) {
    if (setup_.defaults) ownersSeen = OwnerNotices::load(*setup_.defaults);
}

Bridge::~Bridge() {
    // The loops hold the model weakly: they see this and end. The child is left as it is.
    alive_.cancel();
}

Task<HttpAnswer> Bridge::send(std::string path, std::optional<Json> body, Duration timeout) {
    HttpAnswer answer = co_await LocalRequest::send(api_, std::move(path), std::move(body), timeout, setup_.environment);
    co_return answer;
}

Task<bool> Bridge::healthy() {
    // Touches no field: callers check that the model is still here.
    HttpAnswer answer = co_await api_.send(LocalRequest::health());
    co_return answer.isHttp() && answer.status == 200;
}

std::optional<std::filesystem::path> Bridge::bridgeBinary() const {
    if (auto chosen = Carryover::env("ORVAN_COMPANION_BIN", setup_.environment); chosen && isExecutableFile(*chosen))
        return std::filesystem::path(*chosen);
    for (const auto& candidate : setup_.bundled)
        if (isExecutableFile(candidate)) return candidate;
    return std::nullopt;
}

std::string Bridge::commandPath(const std::optional<std::string>& path) {
    std::string given = path.value_or("/usr/bin:/bin:/usr/sbin:/sbin");
    std::vector<std::string> pieces;
    size_t start = 0;
    while (start <= given.size()) {
        size_t end = given.find(':', start);
        if (end == std::string::npos) end = given.size();
        if (end > start) pieces.push_back(given.substr(start, end - start));
        start = end + 1;
    }
    auto has = [&](const std::string& p) { return std::find(pieces.begin(), pieces.end(), p) != pieces.end(); };
    if (!has("/usr/local/bin")) pieces.insert(pieces.begin(), "/usr/local/bin");
    if (!has("/opt/homebrew/bin")) pieces.insert(pieces.begin(), "/opt/homebrew/bin");
    std::string joined;
    for (size_t i = 0; i < pieces.size(); ++i) joined += (i ? ":" : "") + pieces[i];
    return joined;
}

void Bridge::start() {
    if (poll_) return;
    if (setup_.loginItem) assign(loginOn, setup_.loginItem->status() == LoginItem::Status::Enabled);
    startDiagnostics();
    loadLid();
    loadAccess();
    poll_ = pollLoop(alive_);
    if (!updatePoll_) updatePoll_ = updatePollLoop(alive_);
}

Task<void> Bridge::pollLoop(Cancel alive) {
    pollRunning_ = true;
    co_await ensure();
    while (!alive.cancelled()) {
        co_await refresh();
        if (alive.cancelled()) break;
        refreshLid();
        bool slept = co_await clock_.sleep(pollPause, alive);
        if (!slept) break;
    }
}

Task<void> Bridge::updatePollLoop(Cancel alive) {
    updatePollRunning_ = true;
    bool slept = co_await clock_.sleep(8s, alive);
    while (slept && !alive.cancelled()) {
        co_await checkForUpdate(false);
        slept = co_await clock_.sleep(std::chrono::hours(4), alive);
    }
}

Task<void> Bridge::ensure() {
    Cancel alive = alive_;
    bool answering = co_await healthy();
    if (alive.cancelled()) co_return;
    if (answering) {
        assign(ready, true);
        backoff.reset();
        co_return;
    }
    if (child) co_return;
    auto binary = bridgeBinary();
    if (!binary) {
        assign(line, "This copy of the companion is incomplete. Copy the whole app again.");
        co_return;
    }
    ChildSpec plan;
    plan.executable = *binary;
    plan.arguments = {"--addr", ":" + std::to_string(setup_.port)};
    plan.environment = setup_.environment;
    auto inherited = setup_.environment.find("PATH");
    plan.environment["PATH"] =
        commandPath(inherited == setup_.environment.end() ? std::nullopt : std::optional(inherited->second));
    plan.environment["ORVAN_QUIET"] = "1";
    if (stopped) co_return;

    startedByUs = true;
    std::string error;
    auto launched = processes_.launch(plan, error);
    if (!launched) {
        assign(line, "Remote control did not start. The companion keeps trying.");
        co_return;
    }
    child = launched;

    for (int attempt = 0; attempt < probes; ++attempt) {
        bool answered = co_await healthy();
        if (alive.cancelled()) co_return;
        if (answered) {
            assign(ready, true);
            co_return;
        }
        bool slept = co_await clock_.sleep(probePause, alive);
        if (alive.cancelled()) co_return;
        if (!slept) break;
    }
    assign(line, launched->isRunning() ? "Remote control is not answering yet."
                                       : "Remote control did not start. The companion keeps trying.");
}

Task<void> Bridge::refresh() {
    Cancel alive = alive_;
    HttpAnswer answer = co_await send("/companion/status", std::nullopt, statusTimeout);
    if (alive.cancelled()) co_return;
    if (answer.foreignListener) {
        // Nothing of ours can listen there while it does, so there is nothing to relaunch.
        assign(line, foreignPortLine);
        assign(ready, false);
        co_return;
    }
    if (answer.failure) {
        bool answering = co_await healthy();
        if (alive.cancelled()) co_return;
        if (answering) {
            assign(ready, true);
            co_return;
        }
        if (ready) assign(line, "Reaching this Mac.");
        assign(ready, false);
        co_await recover();
        co_return;
    }
    if (answer.status != 200) co_return;
    auto status = CompanionStatus::read(answer.body);
    if (!status) co_return;

    assign(ready, true);
    backoff.reset();
    assign(name, status->name && !status->name->empty() ? *status->name : std::string("This Mac"));
    assign(line, status->line.value_or(""));
    assign(on, status->on.value_or(false));
    auto guests = co_await withGuests(status->phones.value_or(std::vector<CompanionPhone>{}));
    if (alive.cancelled()) co_return;
    assign(phones, std::move(guests));
    noteOwners();
    if (folded) folded();
    co_await refreshJoins();
    if (alive.cancelled()) co_return;
    showScreen(status->screen.value_or(CompanionScreen{}));
    passDiagnostics(status->diagnostics, status->diagnosticsAnswered);
    if (status->tulm != tulm) assign(tulm, status->tulm);
    if (!sidebarBusy) {
        std::string side = status->sidebar.value_or("");
        if (side == "left" || side == "right" || side.empty()) assign(sidebar, side);
    }
}

Task<std::vector<CompanionPhone>> Bridge::withGuests(std::vector<CompanionPhone> phones) {
    if (!PhoneWords::needsDevices(phones)) co_return phones;
    HttpAnswer answer = co_await send(PhoneWords::devicesPath, std::nullopt, statusTimeout);
    if (!LocalRequest::ok(answer)) co_return phones;
    auto devices = PhoneWords::devices(answer.body);
    if (!devices) co_return phones;
    co_return PhoneWords::merge(phones, *devices);
}

Task<void> Bridge::recover() {
    if (stopped || !startedByUs) co_return;
    // A running child that doesn't answer gets more time; asking is how an exit is noticed.
    if (child && child->isRunning()) co_return;
    if (child) child.reset();
    if (!backoff.take(clock_.now())) co_return;
    assign(line, "Remote control stopped. Starting it again.");
    co_await ensure(); // touches nothing after its last wait
}

Task<void> Bridge::toggle() {
    if (!ready) co_return;
    // Bodies are built before the co_await: GCC 12 can't keep an initializer list alive across one.
    Json body = {{"on", !on}};
    Cancel alive = alive_;
    co_await send("/companion/remote", std::move(body), writeTimeout);
    if (alive.cancelled()) co_return;
    co_await refresh();
}

void Bridge::stopIfOwned() {
    stopped = true;
    if (startedByUs && child) {
        child->terminate();
        child.reset();
    }
}

Task<bool> Bridge::rename(std::string proposed) {
    std::string trimmed = Text::trimmed(proposed);
    if (trimmed.empty()) {
        assign(nameNote, "Type a name first.");
        co_return false;
    }
    assign(nameNote, "");
    Json body = {{"name", trimmed}};
    Cancel alive = alive_;
    HttpAnswer answer = co_await send("/companion/name", std::move(body), writeTimeout);
    if (alive.cancelled()) co_return false;
    if (answer.isHttp() && answer.status == 204) {
        co_await refresh();
        co_return !alive.cancelled();
    }
    assign(nameNote, "That name was not saved.");
    co_return false;
}

Task<void> Bridge::setSidebar(std::string position) {
    if (position != "left" && position != "right") co_return;
    if (sidebarBusy) co_return;
    assign(sidebarBusy, true);
    assign(sidebarNote, "");
    Json body = {{"position", position}};
    Cancel alive = alive_;
    HttpAnswer answer = co_await send("/companion/sidebar", std::move(body), writeTimeout);
    if (alive.cancelled()) co_return;
    if (answer.isHttp() && answer.status == 204) {
        assign(sidebar, position);
        co_await refresh();
        if (alive.cancelled()) co_return;
        assign(sidebarBusy, false);
        co_return;
    }
    assign(sidebarNote, "Tulm did not move the sidebar.");
    assign(sidebarBusy, false);
}

} // namespace orvan
