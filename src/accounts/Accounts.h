#pragma once
// The agents' accounts as the bridge keeps them: the list, the fallback chain, the logins found on
// this computer, the plan meters, and the changes the owner makes to them. The bridge does the work;
// this model asks, and says in one sentence what did not happen.

#include "accounts/AccountWords.h"
#include "accounts/AccountsList.h"
#include "accounts/AccountsRefresh.h"
#include "accounts/BedrockModels.h"
#include "accounts/CompanionAccount.h"
#include "accounts/FoundLogin.h"
#include "accounts/UsageList.h"
#include "foundation/Async.h"
#include "foundation/Carryover.h"
#include "foundation/Observable.h"
#include "platform/LocalApi.h"
#include "platform/Terminal.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace orvan {

struct AccountsSetup {
    // Where the key file and ORVAN_DIR come from.
    Environment environment;
    // The current user's home folder, read once.
    std::string userHome;
    // Where a sign-in runs; none means no terminal can be opened.
    Terminal* terminal = nullptr;
};

class Accounts final : public Observable {
public:
    using Texts = std::map<std::string, std::string>;

    Accounts(LocalApi& api, Clock& clock, AccountsSetup setup);
    ~Accounts() override;

    // Published fields, in their declared order.
    std::vector<CompanionAccount> list;
    std::vector<std::string> chain;
    bool autoSwitch = false;
    std::vector<FoundLogin> found;
    std::vector<std::string> awsProfiles;
    bool loaded = false;
    bool busy = false;
    std::string note;
    std::string orderNote;
    int orderSaves = 0; // not published
    std::map<std::string, std::string> rowNote;
    std::set<std::string> waiting;
    std::set<std::string> making;
    std::optional<UsageList> usage;
    bool usageBusy = false;
    std::string usageNote;
    // The bridge's auto-resume switch: absent until read, and while this bridge keeps no such setting.
    std::optional<bool> autoResume;
    bool autoResumeUnsupported = false;
    std::string autoResumeNote;
    // By account id: the line a sign-in would have run, kept when this session can show no terminal
    // window, so the text view can hand it to the owner for another shell. Never holds a secret.
    std::map<std::string, std::string> signInLine;

    // Not published.
    std::string userHome;
    AccountsRefresh plan;
    // The locale and time zone that times are told in, read once from the environment.
    AccountWords::Place place;

    std::string accountsFolder() const;
    Clock& clock() { return clock_; }

    // Reads the list. With `useCurrent` the generation is the plan's at the moment of the call.
    Task<void> refresh(int generation, bool useCurrent = false);
    // Answers the new row, or absent when the bridge did not add it.
    Task<std::optional<CompanionAccount>> add(Texts fields, std::string key, Texts secret);
    Task<void> replaceKey(CompanionAccount account, Texts fields);
    Task<bool> rename(std::string id, std::string label);
    Task<void> remove(CompanionAccount account);
    // Answers the sentence that refuses, or nothing when saved.
    Task<std::optional<std::string>> saveBedrock(std::string id, Json settings);
    // The listed models, or the sentence that says why there are none.
    Task<std::variant<std::vector<BedrockModel>, std::string>> bedrockModels(Json body);
    Task<void> signIn(CompanionAccount account);
    Task<void> makeToken(CompanionAccount account);

    // The fallback order: shown at once, and only the last save started has a say on the screen.
    Task<void> saveOrder(std::vector<std::string> chain, bool autoSwitch);

    Task<void> readAutoResume();
    Task<void> setAutoResume(bool on);

    // Both lists at once; the section's first read, and the read after a change that moves meters.
    Task<void> refreshAll(bool fresh);
    // The usage alone; "Check again" asks for a fresh one.
    void readUsage(bool fresh);
    // Stops every read; answers still in flight change nothing.
    void cancelReads();

private:
    void show(AccountsList decoded);
    void setRowNote(const std::string& id, std::optional<std::string> sentence);
    Task<HttpAnswer> send(std::string path, std::optional<Json> body, Duration timeout);
    void launchUsage(const std::optional<UsageReadStep>& step);
    Task<void> performUsageRead(bool fresh, int run, int generation, Cancel task);
    void showUsageBusy() { assign(usageBusy, plan.usageBusy()); }

    LocalApi& api_;
    Clock& clock_;
    AccountsSetup setup_;
    Cancel alive_;
    // The running usage read's token; absent when none runs.
    std::optional<Cancel> usageTask_;
};

} // namespace orvan
