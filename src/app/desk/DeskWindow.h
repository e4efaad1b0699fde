#pragma once
// The desktop front: the "Remote control" window and, where the desktop has one, the tray icon
// with its menu.

#include "app/Companion.h"
#include "app/FrontEnd.h"
#include "app/desk/DeskPanels.h"
#include "appearance/ThemeStore.h"
#include "foundation/Observable.h"
#include "ui/qt/MenuHost.h"
#include "ui/qt/SharingBarWindow.h"
#include "ui/qt/WindowHost.h"

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>
#include <QTimer>
#include <functional>
#include <memory>

namespace orvan::app {

class DeskWindow final : public FrontEnd {
public:
    DeskWindow(Companion& companion, ThemeStore& themes);
    ~DeskWindow() override;
    void show();
    // The window opens at launch, except at login when a tray icon stands in for it.
    void launched(bool atLogin) override {
        if (!(atLogin && hasTray())) show();
    }
    void bringForward() override { show(); }
    // Commands from --send act on the window's own tree.
    CommandAnswer command(const std::string& line) override;
    bool hasTray() const { return tray_ != nullptr; }
    ui::qt::WindowHost& host() { return *desk_; }

    // Remembered once the owner has been told how to bring a closed window back.
    static constexpr const char* toldHowBackKey = "window.desk.toldHowBack";

private:
    struct CloseWatch : QObject {
        std::function<void()> closed;
        bool eventFilter(QObject* watched, QEvent* event) override;
    };
    void closedWithoutTray();
    void modelChanged();
    void updateTrayIcon();
    void lookChanged();

    Companion& companion_;
    ThemeStore& themes_;
    std::unique_ptr<ui::qt::WindowHost> desk_;
    std::unique_ptr<QMenu> menu_;
    std::unique_ptr<ui::qt::MenuHost> menuHost_;
    std::unique_ptr<QSystemTrayIcon> tray_;
    ui::qt::SharingBarWindow sharingBar_;
    // The join request and owner setup windows.
    std::unique_ptr<DeskPanels> panels_;
    Observable::Subscription ownerSetupButton_;
    std::string traySymbol_;
    ui::Tone trayTone_ = ui::Tone::Normal;
    QObject context_;
    CloseWatch closeWatch_;
    QTimer wordsTimer_;
    Observable::Subscription subscription_;
    Observable::Subscription accounts_;
    Observable::Subscription sandboxes_;
    Observable::Subscription tunnel_;
    Observable::Subscription hosts_;
    Observable::Subscription remotes_;
    Observable::Subscription look_;
    Observable::Subscription folders_;
    Observable::Subscription files_;
    Observable::Subscription feedback_;
    // The "Send feedback" window, made when first opened.
    std::unique_ptr<ui::qt::WindowHost> feedbackWindow_;
    CloseWatch feedbackClose_;
    void openFeedback();
};

} // namespace orvan::app
