#pragma once
// What the Accounts section and its sheets remember between renders.

#include "accounts/AccountForm.h"
#include "accounts/BedrockModels.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

// The model menu beside a Bedrock model field: what the last load gave.
struct BedrockModelList {
    std::vector<BedrockModel> models;
    std::string note;
    bool loading = false;
    bool loaded = false;
};

struct AccountsViewState {
    // The row whose detail is open, by id.
    std::optional<std::string> opened;
    bool renaming = false;
    std::string draft;
    bool removing = false;

    // The add sheet: open, its draft, and after a new login was added the row that may sign in now.
    bool adding = false;
    AccountForm form;
    std::optional<std::string> offerSignIn;
    BedrockModelList formModels;

    // The key sheet over the open row: the key, or an access key pair. Cleared whatever happens.
    bool keying = false;
    std::string key;
    std::string accessKeyID;
    std::string secretAccessKey;
    std::string sessionToken;

    // The Bedrock settings sheet over the open row.
    bool settingBedrock = false;
    std::string region;
    std::string model;
    std::string settingsNote;
    BedrockModelList settingsModels;

    void clearKeys() {
        for (auto* secret : {&key, &accessKeyID, &secretAccessKey, &sessionToken}) {
            std::fill(secret->begin(), secret->end(), '\0');
            secret->clear();
        }
    }
};

} // namespace orvan
