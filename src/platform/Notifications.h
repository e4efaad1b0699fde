#pragma once
// Desktop notifications: a notice with one action, withdrawn when what it told of is over. Where
// the session has no notification service, posting does nothing.

#include <functional>
#include <string>

namespace orvan {

struct Notice {
    std::string title;
    std::string body;
    std::string action; // the action's label
};

class Notifications {
public:
    virtual ~Notifications() = default;
    // Posts the notice under `tag`, replacing one posted under the same tag; `chosen` runs when the
    // owner picks its action, on the main thread.
    virtual void post(const std::string& tag, const Notice& notice, std::function<void()> chosen) = 0;
    virtual void withdraw(const std::string& tag) = 0;
};

} // namespace orvan
