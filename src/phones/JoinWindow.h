#pragma once
// The floating window that holds the waiting join requests. The model says when it comes forward
// and when it goes; a front end draws it through the presenter.

#include "platform/Presenter.h"

namespace orvan {

class JoinWindow {
public:
    // Brings the window forward, making it the first time.
    void show();
    // Orders the window out, if it is up.
    void hide();
    // The owner closed it with the window's own close box.
    void closedByOwner() { shown_ = false; }
    bool shown() const { return shown_; }
    // From now on the window is drawn through `presenter`; one already up appears there at once.
    void attach(Presenter* presenter);

private:
    Presenter* presenter_ = nullptr;
    bool shown_ = false;
};

} // namespace orvan
