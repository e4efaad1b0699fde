#pragma once
// The draft of the add sheet: which agent, which of the four ways, and the fields of that way.
// `draft` says what to send, or nothing while the form is not complete.

#include "accounts/AccountProvider.h"
#include "accounts/BedrockFields.h"
#include "accounts/FoundLogin.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct AccountForm {
    enum class Way { found, fresh, apikey, bedrock };
    using Texts = std::map<std::string, std::string>;

    // What `Accounts::add` takes: the fields, the key sent apart, and the secret merged in.
    struct Draft {
        Texts fields;
        std::string key;
        Texts secret;
    };

    AccountProvider provider = AccountProvider::claude;
    Way way = Way::found;
    std::string foundID;
    std::string label;
    std::string key;
    std::string region;
    BedrockAuth bedrockAuth = BedrockAuth::apikey;
    std::string accessKeyID;
    std::string secretAccessKey;
    std::string sessionToken;
    std::string profile;
    std::string model;

    static std::vector<Way> ways(AccountProvider provider);
    static std::string raw(Way way);
    static std::string wayLabel(Way way);
    static std::optional<Way> parseWay(const std::string& raw);

    std::optional<Draft> draft(const std::vector<FoundLogin>& found, const std::vector<std::string>& profiles) const;
    std::vector<FoundLogin> candidates(const std::vector<FoundLogin>& found) const;
    std::optional<FoundLogin> picked(const std::vector<FoundLogin>& found) const;
    // Keeps `foundID` naming a login that is still there.
    void settle(const std::vector<FoundLogin>& found);
    // A form preset to adopt `login`, for "Add as account".
    static AccountForm adopting(const FoundLogin& login);
    void settleProfile(const std::vector<std::string>& profiles);
    // Whenever the way, the agent or the sign-in changes, and when the sheet closes.
    void clearSecrets();
};

} // namespace orvan
