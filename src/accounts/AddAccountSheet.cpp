#include "accounts/AddAccountSheet.h"

#include "accounts/AccountHome.h"
#include "accounts/AccountLabel.h"
#include "accounts/BedrockModelField.h"
#include "foundation/Text.h"

#include <algorithm>

namespace orvan::AddAccountSheet {

namespace {

using Way = AccountForm::Way;

std::string wayWords(Way way) {
    switch (way) {
    case Way::found:
        return "The account uses that login as it is. Removing the account later leaves the login on this Mac.";
    case Way::fresh:
        return "The bridge makes a folder of its own for this login. After Add, Terminal opens for you to sign in.";
    case Way::apikey:
        return "Threads on this account use the key, not a login. It goes to this Mac's Keychain and is never shown "
               "again.";
    case Way::bedrock:
        return "Threads on this account run Claude through Amazon Bedrock, billed to your AWS account. A key goes to "
               "this Mac's Keychain and is never shown again; a profile's credentials stay in your AWS settings.";
    }
    return "";
}

void close(AccountsViewState& s) {
    s.form.clearSecrets();
    s.form = AccountForm{};
    s.adding = false;
    s.offerSignIn.reset();
    s.formModels = {};
}

Task<void> add(Accounts& accounts, AccountsViewState& s, std::function<void()> changed) {
    auto draft = s.form.draft(accounts.found, accounts.awsProfiles);
    s.form.clearSecrets();
    if (!draft) co_return;
    const Way way = s.form.way;
    auto row = co_await accounts.add(draft->fields, draft->key, draft->secret);
    std::fill(draft->key.begin(), draft->key.end(), '\0');
    for (auto& [name, value] : draft->secret) std::fill(value.begin(), value.end(), '\0');
    if (row) {
        if (way == Way::fresh && row->status == "needs_login") s.offerSignIn = row->id;
        else close(s);
    }
    if (changed) changed();
}

Task<void> signInNow(Accounts& accounts, AccountsViewState& s, std::string id, std::function<void()> changed) {
    close(s);
    if (changed) changed();
    auto row = std::find_if(accounts.list.begin(), accounts.list.end(), [&](const auto& a) { return a.id == id; });
    CompanionAccount account;
    account.id = id;
    if (row != accounts.list.end()) account = *row;
    co_await accounts.signIn(std::move(account));
    if (changed) changed();
}

std::string loginTitle(const FoundLogin& login, const std::string& userHome) {
    if (login.isDefault) return "Default login";
    return AccountHome::tilde(login.home, userHome);
}

} // namespace

void open(AccountsViewState& state, const Accounts& accounts, std::optional<FoundLogin> preset) {
    close(state);
    state.adding = true;
    if (preset) state.form = AccountForm::adopting(*preset);
    state.form.settle(accounts.found);
    state.form.settleProfile(accounts.awsProfiles);
}

ui::Node build(Accounts& accounts, AccountsViewState& state, std::function<void()> changed) {
    if (!state.adding) return ui::nothing();
    Accounts* m = &accounts;
    AccountsViewState* s = &state;
    AccountForm& form = state.form;
    auto redraw = [changed] {
        if (changed) changed();
    };
    auto dismiss = [s, redraw] {
        close(*s);
        redraw();
    };

    if (state.offerSignIn) {
        std::string id = *state.offerSignIn;
        std::string provider = AccountProviders::name(form.provider);
        return ui::sheet("Add an account",
                         {ui::text("Sign in opens Terminal with " + provider +
                                   "'s sign-in for this account. Finish signing in there, then come back here."),
                          ui::hstack({
                              ui::button("Later", dismiss)
                                  .role(ui::Role::Cancel)
                                  .help("Sign in later from the account's Sign in."),
                              ui::button("Sign in", [m, s, id, changed] { spawn(signInNow(*m, *s, id, changed)); })
                                  .role(ui::Role::Primary)
                                  .enabled(!accounts.busy),
                          }).key("offer")},
                         dismiss)
            .key("addAccount");
    }

    // The lists may change under an open sheet; the picks follow them.
    form.settle(accounts.found);
    if (form.way == Way::bedrock && form.bedrockAuth == BedrockAuth::profile) form.settleProfile(accounts.awsProfiles);

    ui::Nodes body;
    std::vector<ui::Choice> providers;
    for (auto p : AccountProviders::all) providers.push_back({AccountProviders::name(p), AccountProviders::raw(p)});
    body.push_back(ui::picker("Provider", providers, AccountProviders::raw(form.provider),
                              [s, m, redraw](const std::string& value) {
                                  auto chosen = AccountProviders::parse(value);
                                  if (!chosen || *chosen == s->form.provider) return;
                                  s->form.provider = *chosen;
                                  s->form.clearSecrets();
                                  auto allowed = AccountForm::ways(*chosen);
                                  if (std::find(allowed.begin(), allowed.end(), s->form.way) == allowed.end())
                                      s->form.way = allowed.front();
                                  s->form.settle(m->found);
                                  redraw();
                              })
                       .pickerAs(ui::PickerStyle::Menu)
                       .help("The agent this account is for.")
                       .key("provider"));
    std::vector<ui::Choice> ways;
    for (auto w : AccountForm::ways(form.provider)) ways.push_back({AccountForm::wayLabel(w), AccountForm::raw(w)});
    body.push_back(ui::picker("Way", ways, AccountForm::raw(form.way),
                              [s, redraw](const std::string& value) {
                                  auto chosen = AccountForm::parseWay(value);
                                  if (!chosen || *chosen == s->form.way) return;
                                  s->form.way = *chosen;
                                  s->form.clearSecrets();
                                  redraw();
                              })
                       .pickerAs(ui::PickerStyle::Radio)
                       .key("way"));
    if (!AccountProviders::takesNewLogin(form.provider))
        body.push_back(ui::text("Cursor keeps one sign-in per Mac user. Use an API key for a second Cursor account.")
                           .tone(ui::Tone::Dim)
                           .style(ui::TextStyle::Caption));
    body.push_back(ui::text(wayWords(form.way)).tone(ui::Tone::Dim).style(ui::TextStyle::Caption).key("wayWords"));

    switch (form.way) {
    case Way::found: {
        auto candidates = form.candidates(accounts.found);
        if (candidates.empty()) {
            body.push_back(ui::text("No " + AccountProviders::name(form.provider) + " login was found on this Mac.")
                               .tone(ui::Tone::Warning)
                               .key("noLogin"));
        } else {
            std::vector<ui::Choice> logins;
            for (const auto& login : candidates) logins.push_back({loginTitle(login, accounts.userHome), login.id()});
            auto picked = form.picked(accounts.found);
            body.push_back(ui::picker("Login", logins, picked ? picked->id() : std::string(),
                                      [s, redraw](const std::string& id) {
                                          s->form.foundID = id;
                                          redraw();
                                      })
                               .pickerAs(ui::PickerStyle::Menu)
                               .help("The logins on this Mac that no account uses yet.")
                               .key("login"));
        }
        break;
    }
    case Way::fresh: break;
    case Way::apikey:
        body.push_back(ui::secureField("account.key", "API key", form.key,
                                       [s, redraw](const std::string& text) { s->form.key = text; redraw(); })
                           .help("Kept in this Mac's Keychain. It is never shown again."));
        break;
    case Way::bedrock: {
        body.push_back(ui::field("account.region", "Region", form.region,
                                 [s, redraw](const std::string& text) { s->form.region = text; redraw(); })
                           .placeholder("us-east-1")
                           .help("The AWS Region that runs Claude for this account, such as us-east-1, eu-west-3 or "
                                 "ap-southeast-2. Claude must be enabled there in your AWS account."));
        std::vector<ui::Choice> auths;
        for (auto a : {BedrockAuth::apikey, BedrockAuth::keys, BedrockAuth::profile})
            auths.push_back({BedrockAuths::label(a), BedrockAuths::raw(a)});
        body.push_back(ui::picker("Signs in", auths, BedrockAuths::raw(form.bedrockAuth),
                                  [s, m, redraw](const std::string& value) {
                                      auto chosen = BedrockAuths::parse(value);
                                      if (!chosen || *chosen == s->form.bedrockAuth) return;
                                      s->form.bedrockAuth = *chosen;
                                      s->form.clearSecrets();
                                      s->form.settleProfile(m->awsProfiles);
                                      redraw();
                                  })
                           .help("A Bedrock API key, an access key pair, or a profile in this Mac's AWS settings.")
                           .key("auth"));
        if (form.bedrockAuth == BedrockAuth::apikey) {
            body.push_back(ui::secureField("account.bedrockKey", "Bedrock API key", form.key,
                                           [s, redraw](const std::string& text) { s->form.key = text; redraw(); })
                               .help("A Bedrock API key from the AWS console. Kept in this Mac's Keychain. It is never "
                                     "shown again."));
        } else if (form.bedrockAuth == BedrockAuth::keys) {
            body.push_back(ui::secureField("account.accessKeyID", "Access key ID", form.accessKeyID,
                                           [s, redraw](const std::string& text) { s->form.accessKeyID = text; redraw(); })
                               .help("Starts with AKIA, or ASIA for temporary keys. Kept in this Mac's Keychain."));
            body.push_back(ui::secureField("account.secretAccessKey", "Secret access key", form.secretAccessKey,
                                           [s, redraw](const std::string& text) { s->form.secretAccessKey = text; redraw(); })
                               .help("Kept in this Mac's Keychain. It is never shown again."));
            body.push_back(ui::secureField("account.sessionToken", "Session token", form.sessionToken,
                                           [s, redraw](const std::string& text) { s->form.sessionToken = text; redraw(); })
                               .placeholder("Only for temporary keys")
                               .help("Only temporary keys have one. Kept in this Mac's Keychain with them."));
        } else if (accounts.awsProfiles.empty()) {
            body.push_back(ui::text("No AWS profile was found in ~/.aws/config or ~/.aws/credentials.")
                               .tone(ui::Tone::Warning)
                               .key("noProfile"));
        } else {
            std::vector<ui::Choice> profiles;
            for (const auto& p : accounts.awsProfiles) profiles.push_back({p, p});
            body.push_back(ui::picker("Profile", profiles, form.profile,
                                      [s, redraw](const std::string& p) {
                                          s->form.profile = p;
                                          redraw();
                                      })
                               .pickerAs(ui::PickerStyle::Menu)
                               .help("A profile in this Mac's AWS settings. Its credentials stay there; threads use it "
                                     "by name.")
                               .key("profile"));
        }
        auto listBody = [s]() -> std::optional<Json> {
            const AccountForm& f = s->form;
            auto secret = BedrockFields::secret(f.bedrockAuth, f.key, f.accessKeyID, f.secretAccessKey, f.sessionToken);
            if (!secret) return std::nullopt;
            return BedrockFields::listBody(f.region, f.bedrockAuth, f.profile, *secret);
        };
        for (auto& node : BedrockModelField::build(accounts, state.formModels, form.model, "account", listBody, changed))
            body.push_back(std::move(node));
        break;
    }
    }

    body.push_back(ui::field("account.newLabel", "Label", form.label, [s, redraw](const std::string& text) { s->form.label = text; redraw(); })
                       .placeholder("Such as Personal or Work")
                       .help("Your own words, 1 to 40 characters. Your iPhone shows it."));
    if (Text::characterCount(Text::trimmed(form.label)) > AccountLabel::most)
        body.push_back(ui::text("A label is at most 40 characters.").tone(ui::Tone::Danger).key("labelTooLong"));
    if (!accounts.note.empty()) body.push_back(ui::text(accounts.note).tone(ui::Tone::Danger).key("note"));
    const bool complete = form.draft(accounts.found, accounts.awsProfiles).has_value();
    body.push_back(ui::hstack({
        ui::button("Close", dismiss).role(ui::Role::Cancel),
        accounts.busy ? ui::spinner("Adding…")
                      : ui::button("Add", [m, s, changed] { spawn(add(*m, *s, changed)); })
                            .role(ui::Role::Primary)
                            .enabled(complete)
                            .help("Adds the account to this Mac. Your iPhone lists it.")
                            .key("add"),
    }).key("buttons"));
    return ui::sheet("Add an account", std::move(body), dismiss).key("addAccount");
}

} // namespace orvan::AddAccountSheet
