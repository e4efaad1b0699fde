// Orvan Companion: the tray icon and the "Remote control" window. Without a display it hands over
// to the text-only program beside it, which links no GUI library.

#include "app/AppInfo.h"
#include "app/HeadlessView.h"
#include "app/Program.h"
#include "app/desk/DeskWindow.h"
#include "appearance/ThemeStore.h"
#include "platform/linux/CrashHandler.h"
#include "ui/qt/InkStyle.h"
#include "ui/qt/SymbolIcons.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <cstdio>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

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

std::string variable(const Environment& environment, const char* name) {
    auto it = environment.find(name);
    return it == environment.end() ? std::string() : it->second;
}

bool waylandAnswers(const Environment& environment, const std::string& display) {
    std::string path = display.front() == '/' ? display : variable(environment, "XDG_RUNTIME_DIR") + "/" + display;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return false;
    std::copy(path.begin(), path.end(), address.sun_path);
    int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    bool answered = fd >= 0 && ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    if (fd >= 0) ::close(fd);
    return answered;
}

// Why no window can be shown here although a display is named, or nothing when one can. Qt's
// platform plugin aborts the whole program on a display it can't open (a dead X server, an SSH
// session whose forwarding went stale), so we ask first.
std::optional<std::string> unreachableDisplay(const Environment& environment) {
    if (!variable(environment, "QT_QPA_PLATFORM").empty()) return std::nullopt; // chosen by hand
    std::string x = variable(environment, "DISPLAY"), wayland = variable(environment, "WAYLAND_DISPLAY");
    if (!x.empty()) {
        xcb_connection_t* connection = xcb_connect(x.c_str(), nullptr);
        bool answered = xcb_connection_has_error(connection) == 0;
        xcb_disconnect(connection);
        if (answered) return std::nullopt;
    }
    if (!wayland.empty() && waylandAnswers(environment, wayland)) return std::nullopt;
    return "Orvan Companion: the display " + (x.empty() ? wayland : x) +
           " can't be reached, so the window is shown here as text.";
}

} // namespace

int main(int argc, char** argv) {
    if (auto answered = app::answerInfo(argc, argv)) return *answered;
    // First, so that a crash anywhere after it is caught and reported at the next start.
    CrashHandler::installForProgram(Carryover::processEnvironment(), AppInfo::shortVersion, AppInfo::buildNumber);
    QCoreApplication::setApplicationName(QStringLiteral("Orvan Companion"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("quillmere.com"));
    Environment environment = Carryover::processEnvironment();
    bool headless = app::wantsHeadless(argc, argv, environment);
    if (!headless) {
        if (auto why = unreachableDisplay(environment)) {
            std::fprintf(stderr, "%s\n", why->c_str());
            headless = true;
        }
    }
    if (headless) {
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
    QApplication::setWindowIcon(ui::qt::SymbolIcons::appIcon(QCoreApplication::applicationDirPath() + "/../share"));
    auto snapshot = app::valueOf(argc, argv, "--snapshot");
    return app::run(app, argc, argv, [&](app::Companion& companion) -> std::unique_ptr<app::FrontEnd> {
        // The look is applied before the first window is drawn, and follows the desktop from then on.
        ui::qt::InkStyle::install(ThemeStore::shared());
        auto window = std::make_unique<app::DeskWindow>(companion, ThemeStore::shared());
        if (snapshot) snapshotWhenSettled(companion, *window, *snapshot);
        return window;
    });
}
