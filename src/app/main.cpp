// Orvan Companion: the tray icon and the "Remote control" window, or, with no display, the same
// window printed as text.

#include "app/AppInfo.h"
#include "app/Companion.h"
#include "app/DeskWindow.h"
#include "app/HeadlessView.h"
#include "app/SignalQuit.h"
#include "app/SingleInstance.h"
#include "appearance/ThemeStore.h"
#include "ui/qt/InkStyle.h"
#include "foundation/Carryover.h"

#include <QApplication>
#include <QCoreApplication>
#include <QTimer>
#include <QWidget>
#include <cstdio>
#include <cstring>
#include <chrono>
#include <memory>
#include <optional>

using namespace orvan;

namespace {

bool hasFlag(int argc, char** argv, const char* flag) {
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], flag) == 0) return true;
    return false;
}

// Headless when asked, or when no display can be reached and no platform was chosen by hand.
bool runHeadless(int argc, char** argv, const Environment& env) {
    if (hasFlag(argc, argv, "--headless")) return true;
    auto set = [&](const char* name) {
        auto it = env.find(name);
        return it != env.end() && !it->second.empty();
    };
    return !set("DISPLAY") && !set("WAYLAND_DISPLAY") && !set("QT_QPA_PLATFORM");
}

std::vector<std::string> arguments(int argc, char** argv) { return std::vector<std::string>(argv + 1, argv + argc); }

std::optional<std::string> valueOf(int argc, char** argv, const char* flag) {
    for (int i = 1; i + 1 < argc; ++i)
        if (std::strcmp(argv[i], flag) == 0) return std::string(argv[i + 1]);
    return std::nullopt;
}

// For people to look at the window without a desktop: once the bridge has told its state (or after
// ten seconds), the window is saved as a picture and the program quits as usual.
void snapshotWhenSettled(app::Companion& companion, app::DeskWindow& window, std::string file) {
    auto* poll = new QTimer(window.host().window());
    auto started = std::chrono::steady_clock::now();
    poll->setInterval(200);
    QObject::connect(poll, &QTimer::timeout, poll, [&companion, &window, file, started, poll] {
        bool settled = companion.bridge().ready && companion.bridge().line != "Starting remote control.";
        if (!settled && std::chrono::steady_clock::now() - started < std::chrono::seconds(10)) return;
        poll->stop();
        window.host().renderNow();
        QTimer::singleShot(300, poll, [&window, file] {
            window.host().window()->grab().save(QString::fromStdString(file));
            QCoreApplication::quit();
        });
    });
    poll->start();
}

int runCompanion(QCoreApplication& app, bool headless, int argc, char** argv) {
    if (app::SingleInstance::askRunningToShow()) {
        std::fputs("Orvan Companion is already running; its window was brought forward.\n", stderr);
        return 0;
    }
    app::Companion companion(Carryover::processEnvironment(), QCoreApplication::applicationFilePath().toStdString(),
                             arguments(argc, argv));
    companion.willFinishLaunching();

    std::unique_ptr<app::DeskWindow> window;
    std::unique_ptr<app::HeadlessView> text;
    if (headless) {
        text = std::make_unique<app::HeadlessView>(companion, stdout);
    } else {
        // The look is applied before the first window is drawn, and follows the desktop from then on.
        ui::qt::InkStyle::install(ThemeStore::shared());
        window = std::make_unique<app::DeskWindow>(companion, ThemeStore::shared());
    }
    app::SingleInstance instance([&] {
        if (window) window->show();
    });
    companion.didFinishLaunching();

    // Every way out passes here, so our own bridge never outlives a deliberate quit.
    QObject::connect(&app, &QCoreApplication::aboutToQuit, [&] { companion.quitting(); });
    app::quitOnSignals([] { QCoreApplication::quit(); });

    // The window opens at launch, except at login when a tray icon stands in for it.
    bool atLogin = hasFlag(argc, argv, "--launched-at-login");
    if (window && !(atLogin && window->hasTray())) window->show();
    if (text) text->renderNow();
    if (auto file = valueOf(argc, argv, "--snapshot"); file && window) snapshotWhenSettled(companion, *window, *file);
    companion.startDesk();
    return app.exec();
}

} // namespace

int main(int argc, char** argv) {
    if (hasFlag(argc, argv, "--version")) {
        std::printf("Orvan Companion %s (%s)\n", AppInfo::shortVersion, AppInfo::buildNumber);
        return 0;
    }
    if (hasFlag(argc, argv, "--help")) {
        std::printf("Usage: orvan-companion [--headless] [--launched-at-login] [--snapshot FILE.png] [--version]\n"
                    "Supervises the local bridge on 127.0.0.1:8787 and shows its state: a tray icon and the\n"
                    "\"Remote control\" window, or, with --headless or without a display, the window as text.\n");
        return 0;
    }
    QCoreApplication::setApplicationName(QStringLiteral("Orvan Companion"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("quillmere.com"));
    Environment env = Carryover::processEnvironment();
    if (runHeadless(argc, argv, env)) {
        QCoreApplication app(argc, argv);
        return runCompanion(app, true, argc, argv);
    }
    QApplication app(argc, argv);
    QApplication::setApplicationDisplayName(QStringLiteral("Orvan Companion"));
    QGuiApplication::setDesktopFileName(QString::fromLatin1(AppInfo::bundleId));
    return runCompanion(app, false, argc, argv);
}
