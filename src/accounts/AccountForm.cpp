#include "accounts/AccountForm.h"

#include "accounts/AccountLabel.h"
#include "foundation/Text.h"

#include <algorithm>

namespace orvan {

std::vector<AccountForm::Way> AccountForm::ways(AccountProvider provider) {
    if (provider == AccountProvider::claude) return {Way::found, Way::fresh, Way::apikey, Way::bedrock};
    if (!AccountProviders::takesNewLogin(provider)) return {Way::found, Way::apikey};
    return {Way::found, Way::fresh, Way::apikey};
}

std::string AccountForm::raw(Way way) {
    switch (way) {
    case Way::found: return "found";
    case Way::fresh: return "new";
    case Way::apikey: return "apikey";
    case Way::bedrock: return "bedrock";
    }
    return "found";
}

std::string AccountForm::wayLabel(Way way) {
    switch (way) {
    case Way::found: return "Use a login already on this Mac";
    case Way::fresh: return "Sign in with a new account";
    case Way::apikey: return "Use an API key";
    case Way::bedrock: return "Use Amazon Bedrock";
    }
    return "";
}

std::optional<AccountForm::Way> AccountForm::parseWay(const std::string& text) {
    for (auto w : {Way::found, Way::fresh, Way::apikey, Way::bedrock})
        if (raw(w) == text) return w;
    return std::nullopt;
}

std::vector<FoundLogin> AccountForm::candidates(const std::vector<FoundLogin>& found) const {
    std::vector<FoundLogin> out;
    for (const auto& login : found)
        if (AccountProviders::parse(login.provider) == provider) out.push_back(login);
    return out;
}

std::optional<FoundLogin> AccountForm::picked(const std::vector<FoundLogin>& found) const {
    auto list = candidates(found);
    for (const auto& login : list)
        if (login.id() == foundID) return login;
    if (list.empty()) return std::nullopt;
    return list.front();
}

void AccountForm::settle(const std::vector<FoundLogin>& found) {
    auto login = picked(found);
    foundID = login ? login->id() : std::string();
}

AccountForm AccountForm::adopting(const FoundLogin& login) {
    AccountForm form;
    form.provider = AccountProviders::parse(login.provider).value_or(AccountProvider::claude);
    form.way = Way::found;
    form.foundID = login.id();
    return form;
}

void AccountForm::settleProfile(const std::vector<std::string>& profiles) {
    if (std::find(profiles.begin(), profiles.end(), profile) != profiles.end()) return;
    profile = profiles.empty() ? std::string() : profiles.front();
}

void AccountForm::clearSecrets() {
    // Overwritten before they are let go, so the typed text doesn't linger in freed memory.
    for (auto* secret : {&key, &accessKeyID, &secretAccessKey, &sessionToken}) {
        std::fill(secret->begin(), secret->end(), '\0');
        secret->clear();
    }
}

std::optional<AccountForm::Draft> AccountForm::draft(const std::vector<FoundLogin>& found,
                                                     const std::vector<std::string>&) const {
    auto cleaned = AccountLabel::clean(label);
    if (!cleaned) return std::nullopt;
    auto allowed = ways(provider);
    if (std::find(allowed.begin(), allowed.end(), way) == allowed.end()) return std::nullopt;
    Draft out;
    out.fields = {{"provider", AccountProviders::raw(provider)}, {"label", *cleaned}};
    switch (way) {
    case Way::found: {
        auto login = picked(found);
        if (!login) return std::nullopt;
        out.fields["kind"] = "login";
        out.fields["home"] = login->adoptHome();
        return out;
    }
    case Way::fresh:
        out.fields["kind"] = "login";
        out.fields["home"] = "";
        return out;
    case Way::apikey: {
        std::string k = Text::trimmed(key);
        if (k.empty()) return std::nullopt;
        out.fields["kind"] = "apikey";
        out.fields["home"] = "";
        out.key = k;
        return out;
    }
    case Way::bedrock: {
        auto r = BedrockFields::region(region);
        auto m = BedrockFields::model(model);
        auto s = BedrockFields::secret(bedrockAuth, key, accessKeyID, secretAccessKey, sessionToken);
        if (!r.ok() || !m.ok() || !s) return std::nullopt;
        out.fields["kind"] = "bedrock";
        out.fields["region"] = *r.value;
        out.fields["model"] = *m.value;
        out.fields["auth"] = BedrockAuths::raw(bedrockAuth);
        if (bedrockAuth == BedrockAuth::profile) {
            std::string p = Text::trimmed(profile);
            if (p.empty()) return std::nullopt;
            out.fields["profile"] = p;
        }
        out.secret = *s;
        return out;
    }
    }
    return std::nullopt;
}

} // namespace orvan
