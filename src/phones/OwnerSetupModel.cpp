#include "phones/OwnerSetupModel.h"

#include "bridge/LocalRequest.h"
#include "phones/PhoneInvite.h"
#include "ui/PngPixels.h"

namespace orvan {

using namespace std::chrono_literals;

namespace {
constexpr Duration writeTimeout = 8s;
constexpr Duration statusTimeout = 2s;

OwnerSetupAnswer answerOf(const HttpAnswer& answer) {
    return answer.isHttp() ? OwnerSetupAnswer::read(answer.status, answer.body) : OwnerSetupAnswer::none();
}

Duration seconds(double s) { return std::chrono::duration_cast<Duration>(std::chrono::duration<double>(s)); }
} // namespace

OwnerSetupModel::OwnerSetupModel(Bridge& bridge) : bridge_(bridge) { first = flow.start(); }

OwnerSetupModel::~OwnerSetupModel() { alive_.cancel(); }

void OwnerSetupModel::perform(OwnerSetupStep step) {
    if (!flow.showsCode()) picture.reset();
    publish();
    if (step.kind == OwnerSetupStep::Kind::nothing) return;
    spawn(run(step, alive_));
}

void OwnerSetupModel::again() { perform(flow.again()); }

void OwnerSetupModel::close() {
    picture.reset();
    perform(flow.close());
}

Task<void> OwnerSetupModel::run(OwnerSetupStep step, Cancel alive) {
    using Kind = OwnerSetupStep::Kind;
    switch (step.kind) {
    case Kind::nothing: co_return;
    case Kind::make: {
        HttpAnswer answer = co_await bridge_.local(OwnerSetupPaths::setup, Json::object(), writeTimeout);
        if (alive.cancelled()) co_return;
        perform(flow.made(answerOf(answer), bridge_.clock().now()));
        co_return;
    }
    case Kind::readCode: {
        HttpAnswer answer = co_await bridge_.local(OwnerSetupPaths::code, std::nullopt, writeTimeout);
        if (alive.cancelled()) co_return;
        const bool readable = answer.isHttp() && answer.status == 200 && PhoneInvite::isPNG(answer.body) &&
                              ui::readPngDarkness(answer.body).has_value();
        OwnerSetupAnswer read = answerOf(answer);
        if (readable) read = OwnerSetupAnswer{200, {}, {}, {}};
        OwnerSetupStep next = flow.codeRead(read, readable);
        if (flow.showsCode()) picture = std::move(answer.body);
        perform(next);
        co_return;
    }
    case Kind::check: {
        bool slept = co_await bridge_.clock().sleep(seconds(step.after), alive);
        if (!slept) co_return;
        HttpAnswer answer = co_await bridge_.local(OwnerSetupPaths::setup, std::nullopt, statusTimeout);
        if (alive.cancelled()) co_return;
        std::optional<OwnerSetupStatus> status;
        if (answer.isHttp() && answer.status == 200) status = OwnerSetupStatus::read(answer.body);
        perform(flow.checked(status, bridge_.clock().now()));
        co_return;
    }
    case Kind::end: {
        bool slept = co_await bridge_.clock().sleep(seconds(step.after), alive);
        if (!slept) co_return;
        HttpAnswer answer = co_await bridge_.local(OwnerSetupPaths::cancel, Json::object(), writeTimeout);
        if (alive.cancelled()) co_return;
        perform(flow.ended(answerOf(answer), bridge_.clock().now()));
        co_return;
    }
    case Kind::close: {
        bool slept = co_await bridge_.clock().sleep(seconds(step.after), alive);
        if (!slept) co_return;
        // May end this model: nothing of it is touched afterwards.
        if (auto done = onClose) done();
        co_return;
    }
    }
}

} // namespace orvan
