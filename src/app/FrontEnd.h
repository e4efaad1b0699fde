#pragma once
// What the user sees of the companion: the window and tray, or the text view.

namespace orvan::app {

class FrontEnd {
public:
    virtual ~FrontEnd() = default;
    // Everything is in place and the supervisor is about to start.
    virtual void launched(bool atLogin) = 0;
    // A second launch asked this one to come forward.
    virtual void bringForward() {}
};

} // namespace orvan::app
