#pragma once
// What the Accounts section and its detail sheet remember between renders.

#include <optional>
#include <string>

namespace orvan {

struct AccountsViewState {
    // The row whose detail is open, by id.
    std::optional<std::string> opened;
    bool renaming = false;
    std::string draft;
    bool removing = false;
};

} // namespace orvan
