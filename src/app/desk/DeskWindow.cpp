#include "app/desk/DeskWindow.h"

#include "app/AppInfo.h"
#include "app/Scenes.h"
#include "app/TreeCommands.h"
#include "bridge/MenuDesk.h"
#include "feedback/FeedbackWindow.h"
#include "platform/linux/gui/QtClipboard.h"
#include "platform/linux/gui/QtFilePicker.h"
#include "ui/qt/InkStyle.h"
#include "ui/qt/SymbolIcons.h"
#include "ui/qt/TonePalette.h"

#include <QApplication>
#include <QClipboard>
#include <QLayout>
#include <QMenuBar>
#include <QMessageBox>
#include <QShortcut>
#include <QWidget>

namespace orvan::app {

namespace {
// The bundle's share folder, beside bin/ wherever the folder was put.
QString bundleShare() { return QCoreApplication::applicationDirPath() + QStringLiteral("/../share"); }
// Where a window of the scene opens the first time, how small it may get, and where its size is kept.
ui::qt::WindowSetup setupFor(const Scenes::Scene& scene, const Environment& environment) {
    ui::qt::WindowSetup shape;
    shape.id = scene.id;
    shape.title = scene.title;
    shape.minimumSize = QSize(scene.minimumWidth, scene.minimumHeight);
    shape.defaultSize = QSize(scene.defaultWidth, scene.defaultHeight);
    shape.defaults = UserDefaults::domain(AppInfo::bundleId, environment);
    return shape;
}
} // namespace

DeskWindow::DeskWindow(Companion& companion, ThemeStore& themes) : companion_(companion), themes_(themes) {
    companion_.useClipboard(std::make_unique<QtClipboard>());
    companion_.useFilePicker(std::make_unique<QtFilePicker>());
    companion_.desktop().onActivate([this] { show(); });
    desk_ = std::make_unique<ui::qt::WindowHost>(setupFor(Scenes::desk, companion.environment()), [this] {
        return companion_.buildDesk(themes_, [this] { desk_->requestRender(); }, &wordsTimer_);
    });
    desk_->setTonePalette(ui::qt::InkStyle::tones(themes_));

    // The tray's menu; without a tray the same menu heads the main window, so quitting, updates,
    // feedback and the join and sharing rows stay within reach.
    {
        menu_ = std::make_unique<QMenu>(QStringLiteral("&Companion"));
        menuHost_ = std::make_unique<ui::qt::MenuHost>(menu_.get(), [this] {
            MenuContext context;
            context.versionLabel = companion_.versionLabel();
            context.openDesk = [this] { show(); };
            context.quit = [] { QCoreApplication::quit(); };
            context.openFeedback = [this] { openFeedback(); };
            context.copy = [](const std::string& text) {
                QClipboard* clipboard = QGuiApplication::clipboard();
                clipboard->clear();
                clipboard->setText(QString::fromStdString(text));
            };
            return MenuDesk::build(companion_.bridge(), context);
        });
        menuHost_->setTonePalette(ui::qt::InkStyle::tones(themes_));
    }
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        if (QWidget* window = desk_->window(); window && window->layout()) {
            auto* bar = new QMenuBar(window);
            bar->addMenu(menu_.get());
            window->layout()->setMenuBar(bar);
        }
    } else {
        tray_ = std::make_unique<QSystemTrayIcon>();
        tray_->setContextMenu(menu_.get());
        tray_->setToolTip(QStringLiteral("Orvan Companion"));
        QObject::connect(tray_.get(), &QSystemTrayIcon::activated, &context_, [this](QSystemTrayIcon::ActivationReason r) {
            if (r == QSystemTrayIcon::Trigger || r == QSystemTrayIcon::DoubleClick) show();
        });
        updateTrayIcon();
        tray_->show();
    }
    // The window is not the program: closing it hides it, and the bridge stays up for the phone.
    QApplication::setQuitOnLastWindowClosed(false);
    if (QWidget* window = desk_->window()) {
        window->installEventFilter(&closeWatch_);
        auto* quit = new QShortcut(QKeySequence::Quit, window);
        QObject::connect(quit, &QShortcut::activated, &context_, [] { QCoreApplication::quit(); });
    }
    closeWatch_.closed = [this] { closedWithoutTray(); };

    subscription_ = companion_.bridge().observe([this] { modelChanged(); });
    accounts_ = companion_.accounts().observe([this] { desk_->requestRender(); });
    sandboxes_ = companion_.sandboxes().observe([this] { desk_->requestRender(); });
    tunnel_ = companion_.tunnel().observe([this] { desk_->requestRender(); });
    hosts_ = companion_.hosts().observe([this] { desk_->requestRender(); });
    remotes_ = companion_.remotes().observe([this] { desk_->requestRender(); });
    // The bar floats in a window of its own, and the grants are judged again when the owner comes
    // back from the settings where they were given.
    sharingBar_.setTonePalette(ui::qt::InkStyle::tones(themes_));
    companion_.bridge().sharingBar.attach(&sharingBar_);
    panels_ = std::make_unique<DeskPanels>(companion_, UserDefaults::domain(AppInfo::bundleId, companion_.environment()));
    panels_->setTonePalette(ui::qt::InkStyle::tones(themes_));
    ownerSetupButton_ = companion_.ownerSetupButton().observe([this] { desk_->requestRender(); });
    QObject::connect(qApp, &QGuiApplication::applicationStateChanged, &context_, [this](Qt::ApplicationState state) {
        companion_.activity().setActive(state == Qt::ApplicationActive);
    });
    look_ = themes_.observe([this] { lookChanged(); });
    folders_ = companion_.folders().observe([this] { desk_->requestRender(); });
    files_ = companion_.files().observe([this] { desk_->requestRender(); });
    feedback_ = companion_.feedback().observe([this] {
        if (!feedbackWindow_) return;
        if (!companion_.feedback().isOpen) {
            if (QWidget* window = feedbackWindow_->window()) window->hide();
            return;
        }
        feedbackWindow_->requestRender();
    });
    wordsTimer_.setSingleShot(true);
    wordsTimer_.setTimerType(Qt::CoarseTimer);
    QObject::connect(&wordsTimer_, &QTimer::timeout, &context_, [this] { desk_->requestRender(); });
}

DeskWindow::~DeskWindow() { companion_.bridge().sharingBar.attach(nullptr); }

bool DeskWindow::CloseWatch::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::Close && closed) closed();
    return false;
}

void DeskWindow::closedWithoutTray() {
    if (tray_) return;
    auto defaults = UserDefaults::domain(AppInfo::bundleId, companion_.environment());
    if (defaults->boolean(toldHowBackKey) == true) return;
    defaults->set(toldHowBackKey, true);
    // Said once: without a tray icon, nothing on screen shows that the companion still runs.
    auto* box = new QMessageBox(QMessageBox::Information, QStringLiteral("Orvan Companion"),
                                QStringLiteral("Orvan Companion keeps running, so your iPhone can still reach this Mac."),
                                QMessageBox::Ok);
    box->setInformativeText(QStringLiteral("To open this window again, start Orvan Companion once more from your "
                                           "applications menu or with the orvan-companion command. To quit, press "
                                           "Ctrl+Q in the window."));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->show();
}

void DeskWindow::openFeedback() {
    if (!feedbackWindow_) {
        feedbackWindow_ = std::make_unique<ui::qt::WindowHost>(setupFor(Scenes::feedback, companion_.environment()),
                                                               [this] { return FeedbackWindow::build(companion_.feedback()); });
        feedbackWindow_->setTonePalette(ui::qt::InkStyle::tones(themes_));
        // Closing the window is Cancel: a send under way stops, the pictures' files go.
        feedbackClose_.closed = [this] {
            if (companion_.feedback().isOpen) companion_.feedback().close();
        };
        if (QWidget* window = feedbackWindow_->window()) window->installEventFilter(&feedbackClose_);
    }
    companion_.openFeedback();
    feedbackWindow_->show();
    if (QWidget* window = feedbackWindow_->window()) {
        window->raise();
        window->activateWindow();
    }
}

void DeskWindow::show() {
    desk_->show();
    if (QWidget* window = desk_->window()) {
        window->raise();
        window->activateWindow();
    }
}

void DeskWindow::modelChanged() {
    desk_->requestRender();
    if (menuHost_) menuHost_->requestRender();
    updateTrayIcon();
}

void DeskWindow::lookChanged() {
    auto tones = ui::qt::InkStyle::tones(themes_);
    desk_->setTonePalette(tones);
    desk_->requestRender();
    sharingBar_.setTonePalette(tones);
    if (panels_) panels_->setTonePalette(tones);
    if (menuHost_) {
        menuHost_->setTonePalette(tones);
        menuHost_->requestRender();
    }
    traySymbol_.clear(); // the icon's accent or dim may have changed with the look
    updateTrayIcon();
}

void DeskWindow::updateTrayIcon() {
    if (!tray_) return;
    const Bridge& bridge = companion_.bridge();
    TrayIcon icon = MenuDesk::icon(bridge);
    // A bridge that doesn't answer gets a shape of its own, so the tray doesn't look merely "off".
    const char* state = !bridge.ready ? "unreachable" : bridge.watched() ? "watched" : bridge.on ? "on" : "off";
    if (!bridge.ready) icon.tone = ui::Tone::Warning;
    if (state == traySymbol_ && icon.tone == trayTone_) return;
    traySymbol_ = state;
    trayTone_ = icon.tone;
    QColor color = ui::qt::InkStyle::tones(themes_).color(icon.tone);
    tray_->setIcon(ui::qt::SymbolIcons::trayIcon(state, icon.symbol, color, bundleShare()));
}

CommandAnswer DeskWindow::command(const std::string& line) {
    return commandOnView(
        line,
        [this] {
            ui::Node tree = companion_.buildDesk(themes_, [this] { desk_->requestRender(); });
            // The floating bar's button answers typed commands too, ahead of the window's own.
            if (const auto& bar = companion_.bridge().sharingBar.view())
                tree.children.insert(tree.children.begin(), ui::section("", {bar->build()}).key("sharingBar"));
            return tree;
        },
        [this] { desk_->requestRender(); });
}

} // namespace orvan::app
