#pragma once
// The system's privacy grants that sharing the screen needs. Where a desktop has no such grant
// the adapter answers "allowed" rather than invent one; where it has no settings page for one,
// `open` opens nothing and says why.

#include "access/AccessKind.h"

#include <string>

namespace orvan {

class PrivacyGrants {
public:
    virtual ~PrivacyGrants() = default;
    virtual bool allows(AccessKind kind) = 0;
    // Asks the system for the grant; answers whether it was given. A refusal opens the settings.
    virtual bool ask(AccessKind kind) = 0;
    // Opens the settings page of the grant; answers whether one opened, else `why` says so.
    virtual bool open(AccessKind kind, std::string& why) = 0;
};

} // namespace orvan
