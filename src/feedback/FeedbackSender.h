#pragma once
// Hands a finished report to the bridge, which passes it to the relay. The owner's consent is read
// again at the moment of sending, so a switch turned off while the window stood open still holds.

#include "feedback/Feedback.h"
#include "foundation/Async.h"
#include "foundation/Carryover.h"
#include "foundation/Json.h"
#include "foundation/UserDefaults.h"
#include "platform/LocalApi.h"

#include <memory>
#include <string>

namespace orvan {

class FeedbackSender {
public:
    // The relay files the report in the developer's tracker before the bridge answers.
    static constexpr Duration timeout = std::chrono::seconds(120);

    FeedbackSender(LocalApi& api, std::shared_ptr<UserDefaults> defaults, std::string appVersion, Environment environment);

    Task<Feedback::Outcome> send(Json body);

private:
    LocalApi& api_;
    std::shared_ptr<UserDefaults> defaults_;
    std::string appVersion_;
    Environment environment_;
};

} // namespace orvan
