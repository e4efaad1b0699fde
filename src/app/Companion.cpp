#include "app/Companion.h"

#include "app/AppInfo.h"
#include "bridge/Carryover.h"
#include "feedback/FeedbackShrink.h"
#include "foundation/Files.h"
#include "updates/CompanionVersion.h"
#include "updates/InstallTarget.h"
#include "updates/UpdateFeed.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QTimer>

namespace orvan::app {

namespace {
// The bundled bridge: beside this executable, else where an installed copy keeps it.
std::vector<std::filesystem::path> bundledBridge(const std::string& executable) {
    std::filesystem::path dir = std::filesystem::path(executable).parent_path();
    return {dir / "orvan", dir.parent_path() / "libexec" / "orvan-companion" / "orvan"};
}

std::string userHome(const Environment& environment) {
    auto home = environment.find("HOME");
    if (home != environment.end() && !home->second.empty()) return home->second;
    return QDir::homePath().toStdString();
}

// The running bundle is the folder above bin/; its Info.json holds the downloads base of this build.
UpdateContext updateContext(const Environment& environment, const std::string& executable) {
    UpdateContext context;
    context.environment = environment;
    context.running = std::filesystem::path(executable).parent_path().parent_path().lexically_normal();
    context.candidates = InstallTarget::candidates(userHome(environment));
    context.currentVersion = AppInfo::shortVersion;
    context.system = UpdateFeed::system();
    if (auto info = BundleInfo::read(context.running); info && info->downloads) context.downloadsBase = *info->downloads;
    if (auto folder = environment.find("TMPDIR"); folder != environment.end() && !folder->second.empty())
        context.temporary = folder->second;
    // A release build pins its release key; a development build has none and checks no release.
    context.signature = UpdateSignature(UpdateSignature::keyFromHex(ORVAN_RELEASE_KEY));
    return context;
}

// The name a new computer's form signs in as: the login's own.
std::string userName(const Environment& environment) {
    for (const char* name : {"USER", "LOGNAME"}) {
        auto found = environment.find(name);
        if (found != environment.end() && !found->second.empty()) return found->second;
    }
    return QDir::home().dirName().toStdString();
}

// The login entry opens the desktop program, whichever front end is running now: it picks the
// text view by itself when the session has no display.
std::filesystem::path desktopProgram(const std::string& executable) {
    return std::filesystem::path(executable).parent_path() / "orvan-companion";
}
} // namespace

Companion::Companion(Environment environment, std::string executable, std::vector<std::string> arguments)
    : environment_(std::move(environment)), login_(environment_, desktopProgram(executable), std::move(arguments)) {
    BridgeSetup setup;
    setup.host = "127.0.0.1";
    setup.port = 8787;
    setup.environment = environment_;
    setup.bundled = bundledBridge(executable);
    setup.loginItem = &login_;
    setup.lid = &lidWake_;
    setup.grants = &grants_;
    setup.identity = &identity_;
    setup.activity = &activity_;
    setup.program = desktopProgram(executable);
    setup.terminate = [] { QTimer::singleShot(0, qApp, [] { QCoreApplication::quit(); }); };
    setup.openFile = [this](const std::filesystem::path& file) {
        std::string error;
        processes_.launch(ChildSpec{"/usr/bin/xdg-open", {file.string()}, environment_}, error);
    };
    if (!setup.defaults) setup.defaults = UserDefaults::domain(AppInfo::bundleId, environment_);
    api_ = std::make_unique<QtLocalApi>(QString::fromStdString("http://" + setup.host + ":" + std::to_string(setup.port)));
    reporter_ = std::make_unique<CrashReporter>(*api_, clock_, environment_, setup.defaults);
    diagnostics_ = std::make_unique<LinuxDiagnostics>(DataFolder::bridge(environment_), AppInfo::shortVersion, AppInfo::buildNumber);
    setup.reporter = reporter_.get();
    setup.diagnostics = diagnostics_.get();
    setup.notifications = &notifications_;
    updates_ = updateContext(environment_, executable);
    updates_.web = &web_;
    updates_.tools = &tools_;
    setup.updates = &updates_;
    bridge_ = std::make_unique<Bridge>(*api_, clock_, processes_, std::move(setup));
    accounts_ = std::make_unique<Accounts>(*api_, clock_, AccountsSetup{environment_, userHome(environment_), &terminal_});
    sandboxes_ = std::make_unique<Sandboxes>(*api_, clock_, environment_);
    tunnel_ = std::make_unique<Tunnel>(*api_, clock_, environment_);
    hosts_ = std::make_unique<Hosts>(*api_, clock_, environment_);
    joinView_ = std::make_unique<JoinApprovalView>(*bridge_, place_);
    ownerSetup_ = std::make_unique<OwnerSetupWindow>(*bridge_);
    ownerSetupButton_ = std::make_unique<OwnerSetupButton>(*bridge_);
    folders_ = std::make_unique<Folders>(*api_, environment_);
    files_ = std::make_unique<FilesAccessModel>(
        *api_, FilesAccessSetup{environment_, bridge_->setup().defaults, &identity_, &desktop_, userHome(environment_)});
    FeedbackSetup feedback;
    feedback.environment = environment_;
    feedback.defaults = bridge_->setup().defaults;
    feedback.appVersion = AppInfo::shortVersion;
    std::string version = versionLabel();
    if (version.rfind("Version ", 0) == 0) version.erase(0, 8);
    feedback.appLine = "Orvan Companion " + version;
    feedback.system = LinuxDiagnostics::osVersion();
    feedback.model = FeedbackShrink::model();
    feedback.images = &images_;
    feedback.mail = &mail_;
    feedback_ = std::make_unique<FeedbackView>(*api_, std::move(feedback));
    remotes_ = std::make_unique<Remotes>(*api_, environment_);
}

void Companion::startDesk() {
    // The Accounts section stands in the main window for its whole life, so it reads both lists
    // whenever a bridge starts answering: at the start, and again after a bridge came back.
    bridgeReady_ = bridge_->observe([this] {
        if (bridge_->ready && !accountsRead_) spawn(accounts_->refreshAll(false));
        // The auto-resume switch stands beside the accounts and is read with them.
        if (bridge_->ready && !accountsRead_) spawn(accounts_->readAutoResume());
        accountsRead_ = bridge_->ready;
        // The Sandboxes section is always in the window, so its poll runs from the first answer on;
        // a bridge that goes away costs it only failed reads until it is back.
        if (bridge_->ready && !sandboxesPolling_) {
            sandboxesPolling_ = true;
            spawn(sandboxes_->poll(sandboxesPoll_));
        }
        // The computers' section is always in the window: it reads as it would on appearing each
        // time a bridge starts answering, the list first and then the computers worth checking.
        if (bridge_->ready && !hostsRead_) spawn(hosts_->open());
        hostsRead_ = bridge_->ready;
        // The remote desktops' section reads its list once, as it first appears.
        if (bridge_->ready && !remotesRead_) {
            remotesRead_ = true;
            spawn(remotes_->refresh());
        }
        // The Folders and Files sections stand in the window for its whole life: read as they appear.
        if (bridge_->ready && !accessRead_) {
            spawn(folders_->refresh());
            spawn(files_->load());
        }
        accessRead_ = bridge_->ready;
        if (bridge_->ready && !tunnelPolling_) {
            tunnelPolling_ = true;
            spawn(tunnel_->poll(tunnelPoll_));
        }
    });
    bridge_->start();
    ownerSetupButton_->start();
    // Asked once the window is up, until the owner answers under the current revision.
    const Consent consent = Consent::load(*bridge_->setup().defaults, AppInfo::shortVersion);
    if (consent.needsAsking()) {
        desk_.askConsent = true;
        desk_.consentOn = consent.on;
    }
}

void Companion::willFinishLaunching() {
    if (!Carryover::env("ORVAN_DIR", environment_)) Carryover::moveFolder(DataFolder::dataHome(environment_));
    Carryover::copySettings(Carryover::oldBundle, AppInfo::bundleId, environment_);
}

void Companion::didFinishLaunching() {
    auto defaults = UserDefaults::domain(AppInfo::bundleId, environment_);
    Carryover::carryLogin(login_.launchedAtLogin(), login_.status() == LoginItem::Status::Enabled, *defaults,
                          [this](std::string& error) { return login_.registerItem(error); });
}

ui::Node Companion::buildDesk(ThemeStore& themes, std::function<void()> changed, QTimer* wordsTimer) {
    DeskContext context;
    context.versionLabel = versionLabel();
    context.changed = std::move(changed);
    context.themes = &themes;
    context.accounts = accounts_.get();
    context.sandboxes = sandboxes_.get();
    context.tunnel = tunnel_.get();
    context.clipboard = clipboard_.get();
    context.mail = &mail_;
    context.hosts = hosts_.get();
    context.filePicker = filePicker_.get();
    context.userName = userName(environment_);
    context.remotes = remotes_.get();
    context.desktop = &desktop_;
    context.folders = folders_.get();
    context.files = files_.get();
    context.home = userHome(environment_);
    context.ownerSetup = ownerSetupButton_.get();
    context.showOwnerSetup = [this] { ownerSetup_->show(); };
    context.consentDefaults = bridge_->setup().defaults.get();
    context.appVersion = AppInfo::shortVersion;
    std::optional<TimePoint> wordsChange;
    if (wordsTimer) context.wordsChange = &wordsChange;
    const TimePoint now = clock_.now();
    ui::Node tree = DeskView::build(*bridge_, desk_, now, context);
    if (wordsTimer && wordsChange)
        wordsTimer->start(std::max(std::chrono::ceil<std::chrono::milliseconds>(*wordsChange - now), std::chrono::milliseconds(0)));
    else if (wordsTimer)
        wordsTimer->stop();
    return tree;
}

void Companion::openFeedback() {
    feedback_->setClipboard(clipboard_.get());
    feedback_->setPicker(filePicker_.get());
    feedback_->open();
}

void Companion::endOwnerSetup() {
    if (!ownerSetup_ || !ownerSetup_->endsOnQuit()) return;
    // Shared with the request, which may answer after this wait gave up.
    auto loop = std::make_shared<QEventLoop>();
    auto done = std::make_shared<bool>(false);
    spawn([](OwnerSetupWindow& window, std::shared_ptr<QEventLoop> loop, std::shared_ptr<bool> done) -> Task<void> {
        co_await window.quit();
        *done = true;
        loop->quit();
    }(*ownerSetup_, loop, done));
    if (*done) return;
    QTimer::singleShot(std::chrono::duration_cast<std::chrono::milliseconds>(OwnerSetupWindow::quitWait), loop.get(),
                       [loop] { loop->quit(); });
    loop->exec();
}

std::string Companion::versionLabel() const {
    return CompanionVersion::label(AppInfo::shortVersion, AppInfo::buildNumber);
}

} // namespace orvan::app
