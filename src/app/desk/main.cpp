// Orvan Companion: the tray icon and the "Remote control" window. Without a display it hands over
// to the text-only program beside it, which links no GUI library.

#include "app/AppInfo.h"
#include "app/HeadlessView.h"
#include "app/Program.h"
#include "app/desk/DeskWindow.h"
#include "appearance/ThemeStore.h"
#include "ui/qt/InkStyle.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <cstdio>
#include <unistd.h>

using namespace orvan;

namespace {

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

// The text-only program beside this one; absent when it isn't there.
std::optional<std::string> textProgram(const char* self) {
    char path[4096];
    ssize_t n = ::readlink("/proc/self/exe", path, sizeof path - 1);
    std::string exe = n > 0 ? std::string(path, static_cast<size_t>(n)) : std::string(self);
    std::string text = exe.substr(0, exe.rfind('/') + 1) + "orvan-companion-text";
    if (::access(text.c_str(), X_OK) != 0) return std::nullopt;
    return text;
}

} // namespace

int main(int argc, char** argv) {
    if (auto answered = app::answerInfo(argc, argv)) return *answered;
    QCoreApplication::setApplicationName(QStringLiteral("Orvan Companion"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("quillmere.com"));
    if (app::wantsHeadless(argc, argv, Carryover::processEnvironment())) {
        if (auto text = textProgram(argv[0])) {
            argv[0] = text->data();
            ::execv(text->c_str(), argv);
        }
        // No text program beside us: show the text from here, with the GUI libraries loaded but unused.
        QCoreApplication app(argc, argv);
        return app::run(app, argc, argv, [](app::Companion& companion) -> std::unique_ptr<app::FrontEnd> {
            return std::make_unique<app::HeadlessView>(companion, stdout);
        });
    }
    QApplication app(argc, argv);
    QApplication::setApplicationDisplayName(QStringLiteral("Orvan Companion"));
    QGuiApplication::setDesktopFileName(QString::fromLatin1(AppInfo::bundleId));
    auto snapshot = app::valueOf(argc, argv, "--snapshot");
    return app::run(app, argc, argv, [&](app::Companion& companion) -> std::unique_ptr<app::FrontEnd> {
        // The look is applied before the first window is drawn, and follows the desktop from then on.
        ui::qt::InkStyle::install(ThemeStore::shared());
        auto window = std::make_unique<app::DeskWindow>(companion, ThemeStore::shared());
        if (snapshot) snapshotWhenSettled(companion, *window, *snapshot);
        return window;
    });
}
