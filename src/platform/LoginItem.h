#pragma once
// Opening the program when the user logs in.

#include <string>

namespace orvan {

class LoginItem {
public:
    enum class Status { NotRegistered, Enabled, RequiresApproval, NotFound };

    virtual ~LoginItem() = default;
    // Each answers whether it worked; on failure `error` says why (never shown to the user as is).
    virtual bool registerItem(std::string& error) = 0;
    virtual bool unregisterItem(std::string& error) = 0;
    virtual Status status() const = 0;
    // Whether this very launch was made by the login mechanism.
    virtual bool launchedAtLogin() const = 0;
};

} // namespace orvan
