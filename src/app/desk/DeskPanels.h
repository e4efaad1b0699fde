#pragma once
// The join request window and the owner setup window of the desktop program, made when first
// asked for and kept for next time.
//
// The owner setup window shows a code that makes whoever scans it this computer's owner, so it
// should stay out of screen sharing and capture. Neither display system lets a program ask that:
// on X11 any client can read any window's pixels, and Wayland has no protocol through which a
// window can exclude itself from a screencast (what a portal's capture shows is the compositor's
// choice). So the window is shown like any other, and what keeps the code short-lived is the flow:
// it is cancelled on every way out, and its picture goes the moment the window begins to close.

#include "app/Companion.h"
#include "platform/Presenter.h"
#include "ui/qt/TonePalette.h"
#include "ui/qt/WindowHost.h"

#include <QObject>
#include <functional>
#include <memory>

class QEvent;

namespace orvan::app {

class DeskPanels final : public Presenter {
public:
    DeskPanels(Companion& companion, std::shared_ptr<UserDefaults> defaults);
    ~DeskPanels() override;
    void present(WindowId window) override;
    void dismiss(WindowId window) override;
    void setTonePalette(const ui::qt::TonePalette& tones);
    ui::qt::WindowHost* join() { return join_.get(); }
    ui::qt::WindowHost* ownerSetup() { return ownerSetup_.get(); }

private:
    // Decides whether a close box may close the window: false keeps it open.
    struct CloseGate : QObject {
        std::function<bool()> mayClose;
        bool eventFilter(QObject* watched, QEvent* event) override;
    };
    ui::qt::WindowHost& make(std::unique_ptr<ui::qt::WindowHost>& slot, ui::qt::WindowSetup setup,
                             ui::qt::WindowHost::View view, CloseGate& gate);
    static void bringForward(ui::qt::WindowHost& host);

    Companion& companion_;
    std::shared_ptr<UserDefaults> defaults_;
    std::optional<ui::qt::TonePalette> tones_;
    std::unique_ptr<ui::qt::WindowHost> join_;
    std::unique_ptr<ui::qt::WindowHost> ownerSetup_;
    CloseGate joinGate_;
    CloseGate ownerSetupGate_;
    Observable::Subscription bridge_;
    Observable::Subscription joinView_;
    Observable::Subscription ownerSetupModel_;
};

} // namespace orvan::app
