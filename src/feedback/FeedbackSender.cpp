#include "feedback/FeedbackSender.h"

#include "bridge/LocalRequest.h"
#include "diagnostics/Consent.h"
#include "feedback/FeedbackWords.h"

namespace orvan {

FeedbackSender::FeedbackSender(LocalApi& api, std::shared_ptr<UserDefaults> defaults, std::string appVersion,
                               Environment environment)
    : api_(api), defaults_(std::move(defaults)), appVersion_(std::move(appVersion)), environment_(std::move(environment)) {}

Task<Feedback::Outcome> FeedbackSender::send(Json body) {
    if (!defaults_ || !Consent::load(*defaults_, appVersion_).allows())
        co_return Feedback::Outcome::failed(FeedbackWords::sharingIsOff);
    const HttpAnswer answer = co_await LocalRequest::send(api_, Feedback::path, std::move(body), timeout, environment_);
    if (!answer.isHttp()) co_return Feedback::Outcome::failed(FeedbackWords::unreachable);
    co_return Feedback::outcome(answer.status, answer.body);
}

} // namespace orvan
