#pragma once
// The program's one set of models and real adapters, shared by the window and the headless view.
// Nothing else in the program knows every model.

#include "accounts/Accounts.h"
#include "bridge/Bridge.h"
#include "bridge/DeskView.h"
#include "computers/Hosts.h"
#include "computers/Remotes.h"
#include "connections/LidWake.h"
#include "connections/Tunnel.h"
#include "phones/JoinApprovalView.h"
#include "phones/OwnerSetupButton.h"
#include "phones/OwnerSetupWindow.h"
#include "platform/linux/FreedesktopNotifications.h"
#include "diagnostics/CrashReporter.h"
#include "access/FilesAccessModel.h"
#include "access/Folders.h"
#include "feedback/FeedbackView.h"
#include "platform/linux/LoadedImages.h"
#include "platform/linux/LinuxDiagnostics.h"
#include "platform/linux/LinuxTerminal.h"
#include "platform/AppActivity.h"
#include "platform/linux/BuildIdentity.h"
#include "platform/linux/LogindPower.h"
#include "platform/linux/PortalPrivacyGrants.h"
#include "platform/linux/PosixProcesses.h"
#include "platform/linux/TerminalClipboard.h"
#include "platform/linux/XdgDesktop.h"
#include "platform/linux/XdgMail.h"
#include "platform/FilePicker.h"
#include "platform/linux/QtClock.h"
#include "platform/linux/QtLocalApi.h"
#include "platform/linux/QtTools.h"
#include "platform/linux/QtWeb.h"
#include "updates/UpdateContext.h"
#include "platform/linux/XdgAutostart.h"
#include "sandboxes/Sandboxes.h"

#include <QTimer>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvan::app {

class Companion {
public:
    Companion(Environment environment, std::string executable, std::vector<std::string> arguments);

    // Before the first window: carry the earlier name's folder and settings over.
    void willFinishLaunching();
    // After: settle the login entry.
    void didFinishLaunching();
    // With the main window: start supervising.
    void startDesk();
    // Every deliberate end of the process goes through here.
    void quitting() {
        // First, while the bridge may still be ours and running: a setup code must not outlive us.
        endOwnerSetup();
        accounts_->cancelReads();
        sandboxesPoll_.cancel();
        tunnelPoll_.cancel();
        bridge_->releaseLidHold();
        bridge_->stopIfOwned();
        // Whatever the model believed, no lock is left behind by a deliberate end.
        lidWake_.release();
    }

    Bridge& bridge() { return *bridge_; }
    Accounts& accounts() { return *accounts_; }
    Sandboxes& sandboxes() { return *sandboxes_; }
    Tunnel& tunnel() { return *tunnel_; }
    Hosts& hosts() { return *hosts_; }
    // The join window's contents and the owner setup window, drawn by whichever front end runs.
    JoinApprovalView& joinView() { return *joinView_; }
    OwnerSetupWindow& ownerSetup() { return *ownerSetup_; }
    OwnerSetupButton& ownerSetupButton() { return *ownerSetupButton_; }
    const AccountWords::Place& place() const { return place_; }
    Folders& folders() { return *folders_; }
    FilesAccessModel& files() { return *files_; }
    FeedbackView& feedback() { return *feedback_; }
    // Opens the feedback window's model with the clipboard and chooser the front end brought.
    void openFeedback();
    Remotes& remotes() { return *remotes_; }
    DeskState& deskState() { return desk_; }
    // The desktop program brings the display's clipboard; the text view keeps the terminal's.
    void useClipboard(std::unique_ptr<Clipboard> clipboard) { clipboard_ = std::move(clipboard); }
    // The desktop program brings its file chooser; the text view's views take typed paths.
    void useFilePicker(std::unique_ptr<FilePicker> picker) { filePicker_ = std::move(picker); }
    FilePicker& filePicker() { return *filePicker_; }
    // Pages, files and folders handed to the desktop; raising the window is the front end's hook.
    XdgDesktop& desktop() { return desktop_; }
    Clipboard& clipboard() { return *clipboard_; }
    Clock& clock() { return clock_; }
    // Told by a front end with windows whether the program is in front.
    AppActivity& activity() { return activity_; }
    const Environment& environment() const { return environment_; }
    std::string versionLabel() const;

    // The main window's tree, the same for every front end. `changed` draws again after the view's
    // own state changed; `wordsTimer`, when given, is armed for the moment a phrase that moves with
    // the time alone next reads differently, and stopped when none will.
    ui::Node buildDesk(ThemeStore& themes, std::function<void()> changed, QTimer* wordsTimer = nullptr);

private:
    Environment environment_;
    QtClock clock_;
    PosixProcesses processes_;
    XdgAutostart login_;
    // Where an account's sign-in runs.
    LinuxTerminal terminal_{environment_};
    LogindPower power_;
    LidWake lidWake_{power_};
    PortalPrivacyGrants grants_{environment_};
    // The privacy grants and the updates judge by the same pinned release key.
    BuildIdentity identity_{environment_, ORVAN_BUNDLE_ID, UpdateSignature::keyFromHex(ORVAN_RELEASE_KEY)};
    AppActivity activity_;
    std::unique_ptr<QtLocalApi> api_;
    // The release server, the tools the swap runs, and what the update models need to know.
    QtWeb web_;
    QtTools tools_;
    UpdateContext updates_;
    // The program's own crash and hang reports, and the queue that hands them to the bridge.
    std::unique_ptr<CrashReporter> reporter_;
    std::unique_ptr<LinuxDiagnostics> diagnostics_;
    std::unique_ptr<Bridge> bridge_;
    std::unique_ptr<Accounts> accounts_;
    std::unique_ptr<Sandboxes> sandboxes_;
    // The Sandboxes section's poll, started when a bridge first answers.
    Cancel sandboxesPoll_;
    bool sandboxesPolling_ = false;
    std::unique_ptr<Tunnel> tunnel_;
    // The Connections section's poll, started like the Sandboxes one.
    Cancel tunnelPoll_;
    bool tunnelPolling_ = false;
    std::unique_ptr<Hosts> hosts_;
    // Whether the computers were read since a bridge last began answering.
    bool hostsRead_ = false;
    // The remote desktops, read once when a bridge first answers; nothing polls them.
    std::unique_ptr<Remotes> remotes_;
    bool remotesRead_ = false;
    // The Folders and Files sections, read when a bridge first answers, and the feedback window.
    LoadedImages images_{LoadedImages::besideProgram()};
    std::unique_ptr<Folders> folders_;
    std::unique_ptr<FilesAccessModel> files_;
    bool accessRead_ = false;
    std::unique_ptr<FeedbackView> feedback_;
    Observable::Subscription bridgeReady_;
    bool accountsRead_ = false;
    DeskState desk_;
    // Cancels a setup code that may still work, waiting at most a second for the bridge.
    void endOwnerSetup();
    FreedesktopNotifications notifications_{QStringLiteral("Orvan Companion")};
    AccountWords::Place place_ = AccountWords::placeFrom(environment_);
    // After the bridge, so they go before it.
    std::unique_ptr<JoinApprovalView> joinView_;
    std::unique_ptr<OwnerSetupWindow> ownerSetup_;
    std::unique_ptr<OwnerSetupButton> ownerSetupButton_;
    std::unique_ptr<Clipboard> clipboard_ = std::make_unique<TerminalClipboard>();
    XdgMail mail_;
    XdgDesktop desktop_{environment_};
    std::unique_ptr<FilePicker> filePicker_ = std::make_unique<NoFilePicker>();
};

} // namespace orvan::app
