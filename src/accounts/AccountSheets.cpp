#include "accounts/AccountSheets.h"

#include "accounts/BedrockFields.h"
#include "accounts/BedrockModelField.h"
#include "foundation/Text.h"

namespace orvan {

namespace {
bool takesKeys(const CompanionAccount& account) {
    return account.isBedrock() && account.bedrock && account.bedrock->auth == "keys";
}
std::string shownLabel(const CompanionAccount& account) {
    return account.label.empty() ? AccountProviders::name(account.provider) : account.label;
}
} // namespace

namespace AccountKeySheet {

namespace {
Task<void> save(Accounts& accounts, AccountsViewState& s, CompanionAccount account, Accounts::Texts fields,
                std::function<void()> changed) {
    s.clearKeys();
    s.keying = false;
    if (changed) changed();
    co_await accounts.replaceKey(std::move(account), fields);
    for (auto& [name, value] : fields) std::fill(value.begin(), value.end(), '\0');
    if (changed) changed();
}
} // namespace

ui::Node build(Accounts& accounts, AccountsViewState& state, const CompanionAccount& account,
               std::function<void()> changed) {
    Accounts* m = &accounts;
    AccountsViewState* s = &state;
    auto redraw = [changed] {
        if (changed) changed();
    };
    auto cancel = [s, redraw] {
        s->clearKeys();
        s->keying = false;
        redraw();
    };
    const bool keys = takesKeys(account);
    ui::Nodes body;
    std::optional<Accounts::Texts> fields;
    if (keys) {
        body.push_back(ui::text("The keys go to this Mac's Keychain, in place of the ones this account had. Saved keys "
                                "are never shown."));
        body.push_back(ui::secureField("key.accessKeyID", "Access key ID", state.accessKeyID,
                                       [s, redraw](const std::string& t) { s->accessKeyID = t; redraw(); })
                           .help("Starts with AKIA, or ASIA for temporary keys. Kept in this Mac's Keychain."));
        body.push_back(ui::secureField("key.secretAccessKey", "Secret access key", state.secretAccessKey,
                                       [s, redraw](const std::string& t) { s->secretAccessKey = t; redraw(); })
                           .help("Kept in this Mac's Keychain. It is never shown again."));
        body.push_back(ui::secureField("key.sessionToken", "Session token", state.sessionToken,
                                       [s, redraw](const std::string& t) { s->sessionToken = t; redraw(); })
                           .placeholder("Only for temporary keys")
                           .help("Only temporary keys have one. Kept in this Mac's Keychain with them."));
        fields = BedrockFields::secret(BedrockAuth::keys, "", state.accessKeyID, state.secretAccessKey,
                                       state.sessionToken);
    } else {
        body.push_back(ui::text("The key goes to this Mac's Keychain, in place of any key this account had. A saved "
                                "key is never shown."));
        body.push_back(ui::secureField("key.key", "Key", state.key, [s, redraw](const std::string& t) { s->key = t; redraw(); })
                           .help("Kept in this Mac's Keychain. It is never shown again."));
        fields = BedrockFields::secret(BedrockAuth::apikey, state.key, "", "", "");
    }
    body.push_back(ui::hstack({
        ui::button("Cancel", cancel).role(ui::Role::Cancel),
        ui::button("Save",
                   [m, s, account, fields, changed] {
                       if (fields) spawn(save(*m, *s, account, *fields, changed));
                   })
            .role(ui::Role::Primary)
            .enabled(fields.has_value() && !accounts.busy),
    }).key("buttons"));
    return ui::sheet((keys ? "Access keys for " : "Key for ") + shownLabel(account), std::move(body), cancel)
        .key("accountKey");
}

} // namespace AccountKeySheet

namespace BedrockSettingsSheet {

namespace {
Task<void> save(Accounts& accounts, AccountsViewState& s, std::string id, Json settings,
                std::function<void()> changed) {
    auto refused = co_await accounts.saveBedrock(id, std::move(settings));
    if (refused) {
        s.settingsNote = *refused;
    } else {
        s.settingBedrock = false;
        s.settingsNote.clear();
    }
    if (changed) changed();
}
} // namespace

void open(AccountsViewState& state, const CompanionAccount& account) {
    state.settingBedrock = true;
    state.region = account.bedrock ? account.bedrock->region : std::string();
    state.model = account.bedrock ? account.bedrock->model : std::string();
    state.settingsNote.clear();
    state.settingsModels = {};
}

ui::Node build(Accounts& accounts, AccountsViewState& state, const CompanionAccount& account,
               std::function<void()> changed) {
    Accounts* m = &accounts;
    AccountsViewState* s = &state;
    auto cancel = [s, changed] {
        s->settingBedrock = false;
        s->settingsNote.clear();
        if (changed) changed();
    };
    ui::Nodes body;
    body.push_back(ui::text("Threads on this account run Claude in this AWS Region, on this model unless your iPhone "
                            "picks another. How it signs in stays as it is."));
    body.push_back(ui::field("bedrock.region", "Region", state.region, [s](const std::string& t) { s->region = t; })
                       .help("The AWS Region that runs Claude for this account. Claude must be enabled there in your "
                             "AWS account."));
    std::string id = account.id;
    auto listBody = [s, id]() { return BedrockFields::listBody(id, s->region); };
    for (auto& node : BedrockModelField::build(accounts, state.settingsModels, state.model, "bedrock", listBody, changed))
        body.push_back(std::move(node));
    if (!state.settingsNote.empty()) body.push_back(ui::text(state.settingsNote).tone(ui::Tone::Danger).key("settingsNote"));
    body.push_back(ui::hstack({
        ui::button("Cancel", cancel).role(ui::Role::Cancel),
        ui::button("Save",
                   [m, s, id, changed] {
                       auto checked = BedrockFields::settings(s->region, s->model);
                       if (!checked.ok()) {
                           s->settingsNote = checked.refusal;
                           if (changed) changed();
                           return;
                       }
                       spawn(save(*m, *s, id, *checked.value, changed));
                   })
            .role(ui::Role::Primary)
            .enabled(!accounts.busy)
            .help("Saves the region and model. Your iPhone lists the new region's models."),
    }).key("buttons"));
    return ui::sheet("Region and model", std::move(body), cancel).key("bedrockSettings");
}

} // namespace BedrockSettingsSheet

} // namespace orvan
