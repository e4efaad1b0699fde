#pragma once
// Runs the closures of a view tree on behalf of its widgets. A closure changes models, and a
// model change asks for a render; neither may happen in the middle of a render pass, when the
// tree being reconciled is still in use. So a call that arrives during a render is held until
// the pass is over. After every action the host is told, so that a control the user changed
// (a switch flipped, a choice made) is brought back to what the tree says if the model refused.
// Held by shared pointer: a closure may close the very window whose dispatcher is running it.

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace orvan::ui::qt {

class ActionDispatcher : public std::enable_shared_from_this<ActionDispatcher> {
public:
    void run(std::function<void()> call) { run(std::move(call), true); }
    // A field reporting what is being typed: an action, but not one that may move the focus.
    void runTyping(std::function<void()> call) { run(std::move(call), false); }

    // Called after every action; the host asks for a render here.
    void setAfterAction(std::function<void()> hook) { afterAction_ = std::move(hook); }

    // Render passes nest (a sheet's content renders inside its window's pass).
    void beginRender() { ++depth_; }
    void endRender();
    bool rendering() const { return depth_ > 0; }

    // How many actions other than typing have run so far. A renderer compares it across renders to
    // tell a render that answers the user (and may move the keyboard focus) from one that answers
    // a poll, or a keystroke, which must leave the focus where the user is typing.
    std::uint64_t actionsRun() const { return actionsRun_; }

private:
    void run(std::function<void()> call, bool deliberate);

    int depth_ = 0;
    std::uint64_t actionsRun_ = 0;
    std::vector<std::pair<std::function<void()>, bool>> held_;
    std::function<void()> afterAction_;
};

} // namespace orvan::ui::qt
