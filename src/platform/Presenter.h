#pragma once
// The windows the models ask for by name. A front end with a display shows real windows; the
// text view prints each as its own block after the main window.

namespace orvan {

enum class WindowId { desk, join, ownerSetup };

class Presenter {
public:
    virtual ~Presenter() = default;
    // Makes the window when there is none yet, brings the program forward and the window to front.
    virtual void present(WindowId window) = 0;
    // Orders the window out; it is kept to be shown again.
    virtual void dismiss(WindowId window) = 0;
};

} // namespace orvan
