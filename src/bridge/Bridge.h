#pragma once
// The one long-lived model: it keeps a bridge answering on the loopback port (launching its own
// when none answers, relaunching its own when it dies), folds the bridge's status into published
// fields every two seconds, and owns the operations on this computer as a whole.

#include "access/AccessKind.h"
#include "access/AccessRecord.h"
#include "access/AccessTrail.h"
#include "bridge/CompanionPhone.h"
#include "bridge/CompanionScreen.h"
#include "bridge/CompanionStatus.h"
#include "bridge/RestartBackoff.h"
#include "connections/LidWake.h"
#include "diagnostics/Consent.h"
#include "foundation/Async.h"
#include "foundation/Carryover.h"
#include "foundation/Observable.h"
#include "foundation/UserDefaults.h"
#include "platform/DiagnosticsSource.h"
#include "platform/AppActivity.h"
#include "platform/CodeIdentity.h"
#include "platform/LocalApi.h"
#include "platform/LoginItem.h"
#include "platform/Notifications.h"
#include "platform/PrivacyGrants.h"
#include "platform/Processes.h"
#include "screen/SharingBar.h"
#include "phones/JoinQueue.h"
#include "phones/JoinRequest.h"
#include "phones/JoinWindow.h"
#include "phones/JoinedNotice.h"
#include "phones/OwnerNotice.h"
#include "phones/OwnerNotices.h"
#include "phones/ScopeList.h"
#include "updates/UpdateManifest.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvan {

class CrashReporter;
struct UpdateContext;

// Where the bridge listens, and what the supervisor needs to know to launch one.
struct BridgeSetup {
    std::string host = "127.0.0.1";
    int port = 8787;
    // The companion's own environment: the child inherits it, and the key folder comes from it.
    Environment environment;
    // Where the bundled bridge executable may stand, in order of preference.
    std::vector<std::filesystem::path> bundled;
    // The login item; none in tests that don't need it.
    LoginItem* loginItem = nullptr;
    // The lid hold; without one the lid is left to the system.
    LidWake* lid = nullptr;
    // The privacy grants, the program's identity and whether it is in front; without grants
    // nothing is judged, without an identity the stored one is never questioned.
    PrivacyGrants* grants = nullptr;
    CodeIdentity* identity = nullptr;
    AppActivity* activity = nullptr;
    // What a relaunch opens again, and how this process then ends.
    std::filesystem::path program;
    std::function<void()> terminate;
    // Opens a file in the desktop's program for it.
    std::function<void(const std::filesystem::path&)> openFile;
    // The crash queue's hand-over and the program's own reports; without a reporter nothing is
    // handed over. The consent is read from `defaults`.
    CrashReporter* reporter = nullptr;
    DiagnosticsSource* diagnostics = nullptr;
    // Where what was already said about other owners is kept; without it nothing is kept.
    std::shared_ptr<UserDefaults> defaults;
    // Where a new join request is also told on the desktop; without it only the window comes forward.
    Notifications* notifications = nullptr;
    // The release feed, the download and the swap; without it no check or install runs.
    UpdateContext* updates = nullptr;
};

class Bridge final : public Observable {
public:
    Bridge(LocalApi& api, Clock& clock, Processes& processes, BridgeSetup setup);
    ~Bridge() override;

    // Published fields, in their declared order.
    std::string name = "This Mac";
    std::string nameNote;
    std::string phoneNote;
    bool phoneBusy = false;
    std::string line = "Starting remote control.";
    bool on = false;
    bool ready = false;
    std::vector<CompanionPhone> phones;
    bool loginOn = false;
    std::string loginNote;
    bool lidOn = false;
    std::string lidNote = "Closing the lid puts this Mac to sleep.";
    std::string updateNote;
    std::string updateReady;
    bool updatePrompt = false;
    bool updateBusy = false;
    // The release that "Update" installs; kept through a "Not now".
    std::optional<UpdateManifest> readyRelease;
    std::string sidebar;
    std::optional<std::string> tulm;
    std::string sidebarNote;
    bool sidebarBusy = false;
    CompanionScreen screen;
    std::map<AccessKind, AccessState> access;
    std::string accessNote;
    std::string relaunchNote;
    std::vector<OwnerNotice> ownerNotices;
    std::set<std::string> promotedHere;
    std::string joinNote;
    bool joinBusy = false;
    std::vector<JoinRequest> joins;
    std::vector<JoinedNotice> joined;
    JoinQueue joinQueue;
    JoinWindow joinWindow;
    // The requests told on the desktop, by id, so each is told once and withdrawn when it goes.
    std::set<std::string> joinsNotified;
    // Called once a status answer is folded in, before the join list is asked for: a front end
    // that waits to draw until its turn of the event loop draws the new status here instead, ahead
    // of the reads that follow it.
    std::function<void()> folded;

    // Supervision.
    std::shared_ptr<Child> child;
    bool startedByUs = false;
    RestartBackoff backoff;
    bool stopped = false;
    bool lidLoaded = false;
    bool lidHeld = false;
    // What the model listens to elsewhere (settings changes); ended with the model.
    std::vector<Observable::Subscription> observers;
    TimePoint diagnosticsSaid = distantPast();
    SharingBar sharingBar;
    AccessTrail trail = AccessTrail::fresh();
    AccessRecord kept;
    std::optional<CompanionMark> markPending;
    // A change of the consent is told to the bridge at the next status.
    Consent::Observation consentSeen;

    bool watched() const { return screen.watching && !screen.watching->empty(); }
    bool polling() const { return pollRunning_; }
    bool updatePolling() const { return updatePollRunning_; }

    // Starts supervising; a second call does nothing.
    void start();
    // Its first step: the crash reporter starts, and a consent change is told at the next status.
    void startDiagnostics();
    Task<void> ensure();
    Task<void> refresh();
    Task<void> recover();
    Task<bool> healthy();
    Task<void> toggle();
    // Stops supervising for good, and stops the child only if this process launched it.
    void stopIfOwned();

    // Opens the program at login, or stops doing so; an explicit choice ends the carrying over.
    void setLogin(bool on);

    // Keeps the machine up with the lid closed, or stops; the wish is kept for the next launch.
    void setLid(bool on);
    // Lets go of the lid hold; runs before every deliberate end of the process.
    void releaseLidHold();

    Task<bool> rename(std::string name);
    Task<void> setSidebar(std::string position);

    // Phones: a role change, a removal or a guest's new end, one at a time under `phoneBusy`.
    OwnerNotices ownersSeen;
    Task<void> setRole(std::string id, bool owner);
    Task<void> removePhone(std::string id);
    Task<void> extendGuest(CompanionPhone phone, int days);
    void dismissOwnerNotices();
    // What a guest can be given; nothing when it could not be read.
    Task<std::optional<ScopeList>> scope();

    // Join requests: the window comes forward on demand, and an answer carries exactly the code and
    // fingerprint the owner was shown.
    void showJoins();
    Task<void> answerJoin(JoinRequest join, bool approve);
    // One request of the local API, for the sheets that talk to the bridge themselves.
    Task<HttpAnswer> local(std::string path, std::optional<Json> body, Duration timeout);
    Clock& clock() { return clock_; }

    // Screen sharing and the grants it needs.
    Task<void> setScreen(bool on);
    Task<void> stopScreen();
    void openScreenLog();
    std::filesystem::path screenLog() const;
    void loadAccess();
    void judgeAccess();
    void ask(AccessKind kind);
    // Opens the system's page for a grant; answers whether one opened.
    bool openAccess(AccessKind kind);
    void dismissAccessNote();
    void relaunch();

    // Updates: a check of the feed (the automatic one every four hours), turning a release down,
    // and installing the ready one.
    Task<void> checkForUpdate(bool manual);
    void dismissUpdate();
    Task<void> installUpdate();

    std::optional<std::filesystem::path> bridgeBinary() const;
    static std::string commandPath(const std::optional<std::string>& path);

    const BridgeSetup& setup() const { return setup_; }

private:
    Task<HttpAnswer> send(std::string path, std::optional<Json> body, Duration timeout);
    Task<std::vector<CompanionPhone>> withGuests(std::vector<CompanionPhone> phones);
    Task<void> pollLoop(Cancel alive);
    Task<void> updatePollLoop(Cancel alive);

    // What each good status fans out into, in order. The phones' owner notices, the join queue, the
    // privacy judgement and sharing bar, and the diagnostics hand-over are filled in by their own
    // subsystems; until then these only carry what the status itself says.
    void noteOwners();
    Task<void> refreshJoins();
    void showScreen(const CompanionScreen& screen);
    void passDiagnostics(std::optional<bool> diagnostics, std::optional<bool> answered);
    Task<void> tellDiagnostics(bool allowed);
    // The lid hold and the release check are their own subsystems' work.
    void refreshLid();
    // Once, at the first start: the stored wish; with it off, a release, so the lock and the wish agree.
    void loadLid();

    LocalApi& api_;
    Clock& clock_;
    Processes& processes_;
    BridgeSetup setup_;
    Cancel alive_;
    bool pollRunning_ = false;
    bool updatePollRunning_ = false;
    std::optional<Task<void>> poll_;
    std::optional<Task<void>> updatePoll_;
};

} // namespace orvan
