#pragma once
// The sign-in sheet of one computer: what can sign in there, and one agent's sign-in at a time,
// run there by the bridge and finished by the owner in this computer's browser. The loop that
// follows a sign-in belongs to the sheet; a new sign-in, the sheet's end or its model's end stops it.

#include "computers/HostSignInStep.h"
#include "computers/Hosts.h"
#include "foundation/Async.h"
#include "foundation/Observable.h"
#include "platform/Clipboard.h"
#include "platform/Desktop.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

class HostSignInSheet final : public Observable {
public:
    // The desktop and the clipboard may be missing; the sheet then shows the page and the code.
    HostSignInSheet(Hosts& hosts, CompanionHost host, Desktop* desktop, Clipboard* clipboard);
    ~HostSignInSheet() override;

    std::optional<std::vector<HostSignInTool>> tools;
    std::map<std::string, HostSignInState> running;
    // The agent being signed in.
    std::optional<std::string> tool;
    HostSignInStep step;
    // What the owner pasted from the page.
    std::string pasted;
    bool sending = false;
    // The sentence about a code that did not go.
    std::string line;
    bool copied = false;
    std::string resultLine;

    const CompanionHost& host() const { return host_; }
    Hosts& hosts() const { return hosts_; }
    bool hasClipboard() const { return clipboard_ != nullptr; }

    // When the sheet opens: what is there and what runs.
    Task<void> open();
    Task<void> begin(std::string tool);
    Task<void> send();
    Task<void> stop();
    Task<void> back();
    // Stops a running sign-in there by a call of its own, which outlives the sheet; then `done`.
    void close(const std::function<void()>& done);
    // Opens the page again, and copies the code again.
    void openPage();
    void copyCode();
    void setPasted(std::string text) { assign(pasted, std::move(text)); }

    static constexpr const char* startPath = "/companion/hosts/signin";
    static constexpr const char* statePath = "/companion/hosts/signin/state";
    static constexpr const char* codePath = "/companion/hosts/signin/code";
    static constexpr const char* cancelPath = "/companion/hosts/signin/cancel";

private:
    Task<void> follow(std::string tool, Cancel work);
    Task<void> readTools();
    void endWork();
    void applyStep(const HostSignInState& state);

    Hosts& hosts_;
    CompanionHost host_;
    Desktop* desktop_;
    Clipboard* clipboard_;
    Cancel alive_;
    std::optional<Cancel> work_;
    // The page of this sign-in was opened: the poll may see it waiting many times.
    bool shown_ = false;
};

} // namespace orvan
