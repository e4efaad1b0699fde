#pragma once
// The main window: one scrolling card of this computer's state and controls.

#include "access/AccessViewState.h"
#include "accounts/AccountsViewState.h"
#include "bridge/Bridge.h"
#include "computers/ComputersViewState.h"
#include "computers/RemotesViewState.h"
#include "connections/ConnectionsViewState.h"
#include "phones/PhonesViewState.h"
#include "sandboxes/SandboxesViewState.h"
#include "ui/Node.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace orvan {

// The window's own state, kept by whoever hosts the view.
struct DeskState {
    bool renaming = false;
    std::string draft;
    std::optional<CompanionPhone> removing;
    std::optional<CompanionPhone> promoting;
    std::optional<CompanionPhone> demoting;
    bool inviting = false;
    bool askConsent = false;
    bool consentOn = false;
    PhonesViewState phonesView;
    AccountsViewState accounts;
    SandboxesViewState sandboxes;
    ConnectionsViewState connections;
    ComputersViewState computers;
    AccessViewState access;
    RemotesViewState remotes;
};

class ThemeStore;
class Accounts;
class Sandboxes;
class Tunnel;
class Clipboard;
class Mail;
class Hosts;
class OwnerSetupButton;
class Folders;
class FilesAccessModel;
class FilePicker;
class Desktop;
class Remotes;

struct DeskContext {
    // The view state changed: draw again.
    std::function<void()> changed;
    std::string versionLabel;
    // The look; its section shows when there is one.
    ThemeStore* themes = nullptr;
    // The agents' accounts; their section shows when there is one.
    Accounts* accounts = nullptr;
    // This computer's sandboxes; their section shows when there is one.
    Sandboxes* sandboxes = nullptr;
    // The tunnels; their section shows when there is one.
    Tunnel* tunnel = nullptr;
    // The other computers; their section shows when there is one.
    Hosts* hosts = nullptr;
    // Where the view writes the first moment its words will change with the time alone (a guest's
    // "ends in 2 hours"), so the host draws again then; left absent when nothing will.
    std::optional<TimePoint>* wordsChange = nullptr;
    // The stored consent and the version its preset reads; the Privacy section shows with them.
    UserDefaults* consentDefaults = nullptr;
    std::string appVersion;
    // Where a copied or shared invite link goes; without them those buttons are off.
    Clipboard* clipboard = nullptr;
    Mail* mail = nullptr;
    // Whether owner setup is offered, and what opens its window; the button shows with both.
    const OwnerSetupButton* ownerSetup = nullptr;
    std::function<void()> showOwnerSetup;
    // The direct-thread folders and the files access; their sections show when there are these.
    Folders* folders = nullptr;
    FilesAccessModel* files = nullptr;
    std::filesystem::path home;
    // Where a page is opened in the browser; without it a view shows the address instead.
    Desktop* desktop = nullptr;
    // The remote desktops; their section shows when there is one.
    Remotes* remotes = nullptr;
    // Where a key file or a folder is chosen; without one, the views take a typed path.
    FilePicker* filePicker = nullptr;
    // The login name a new computer's form signs in as.
    std::string userName;
};

namespace DeskView {
ui::Node build(Bridge& bridge, DeskState& state, TimePoint now, const DeskContext& context);
} // namespace DeskView

} // namespace orvan
