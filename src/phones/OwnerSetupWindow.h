#pragma once
// The one owner setup window of the program. It won't close while a code may still work: its
// close box only begins the cancelling, and it goes when the flow says so. Quitting cancels a
// code that may live as a last act.

#include "bridge/Bridge.h"
#include "foundation/Observable.h"
#include "phones/OwnerSetupModel.h"
#include "platform/Presenter.h"

#include <memory>

namespace orvan {

class OwnerSetupWindow final : public Observable {
public:
    explicit OwnerSetupWindow(Bridge& bridge) : bridge_(bridge) {}

    // Brings the window forward, or makes it with a new code.
    void show();
    // The close box: true when the window may go now; otherwise the ending has begun.
    bool shouldClose();
    // Whether quitting now has a code to cancel.
    bool endsOnQuit() const { return model_ && model_->flow.endsOnQuit(); }
    // The cancel sent while the program ends, with a one-second time-out; the caller waits at
    // most `quitWait` for it.
    Task<void> quit();
    static constexpr Duration quitWait = std::chrono::seconds(1);

    OwnerSetupModel* model() { return model_.get(); }
    bool shown() const { return model_ != nullptr; }
    void attach(Presenter* presenter);

private:
    Bridge& bridge_;
    Presenter* presenter_ = nullptr;
    std::unique_ptr<OwnerSetupModel> model_;
    Observable::Subscription watch_;
};

} // namespace orvan
