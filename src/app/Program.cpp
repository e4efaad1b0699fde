#include "app/Program.h"

#include "app/AppInfo.h"
#include "app/SignalQuit.h"
#include "app/SingleInstance.h"

#include <cstdio>
#include <cstring>

namespace orvan::app {

bool hasFlag(int argc, char** argv, const char* flag) {
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], flag) == 0) return true;
    return false;
}

std::optional<std::string> valueOf(int argc, char** argv, const char* flag) {
    for (int i = 1; i + 1 < argc; ++i)
        if (std::strcmp(argv[i], flag) == 0) return std::string(argv[i + 1]);
    return std::nullopt;
}

std::vector<std::string> valuesOf(int argc, char** argv, const char* flag) {
    std::vector<std::string> values;
    for (int i = 1; i + 1 < argc; ++i)
        if (std::strcmp(argv[i], flag) == 0) values.emplace_back(argv[++i]);
    return values;
}

bool wantsHeadless(int argc, char** argv, const Environment& environment) {
    if (hasFlag(argc, argv, "--headless")) return true;
    auto set = [&](const char* name) {
        auto it = environment.find(name);
        return it != environment.end() && !it->second.empty();
    };
    return !set("DISPLAY") && !set("WAYLAND_DISPLAY") && !set("QT_QPA_PLATFORM");
}

std::optional<int> answerInfo(int argc, char** argv) {
    if (hasFlag(argc, argv, "--version")) {
        std::printf("Orvan Companion %s (%s)\n", AppInfo::shortVersion, AppInfo::buildNumber);
        return 0;
    }
    if (hasFlag(argc, argv, "--help")) {
        std::printf("Usage: orvan-companion [--headless] [--launched-at-login] [--snapshot FILE.png] [--version]\n"
                    "       orvan-companion --send COMMAND [--send COMMAND ...]\n"
                    "Supervises the local bridge on 127.0.0.1:8787 and shows its state: a tray icon and the\n"
                    "\"Remote control\" window, or, with --headless or without a display, the window as text.\n"
                    "\n"
                    "The text view numbers its controls and takes commands on standard input, one per line\n"
                    "(type help there for the list). Options for it:\n"
                    "  --quiet-frames  print only the lines that changed, and the answers (for logs)\n"
                    "  --invert        draw codes for terminals with light text on a dark background\n"
                    "\n"
                    "--send hands a command to the running companion and prints its answer, as in\n"
                    "  orvan-companion --send \"press Rename\" --send 'type \"Name this Mac\" Studio' --send \"press Save\"\n"
                    "It exits 0 when every command was accepted, 1 when one was refused, 2 when none runs.\n");
        return 0;
    }
    return std::nullopt;
}

int run(QCoreApplication& app, int argc, char** argv,
        const std::function<std::unique_ptr<FrontEnd>(Companion&)>& makeFrontEnd) {
    if (auto commands = valuesOf(argc, argv, "--send"); !commands.empty()) return SingleInstance::send(commands, stdout);
    if (SingleInstance::askRunningToShow()) {
        std::fputs("Orvan Companion is already running; its window was brought forward.\n", stderr);
        return 0;
    }
    Companion companion(Carryover::processEnvironment(), QCoreApplication::applicationFilePath().toStdString(),
                        std::vector<std::string>(argv + 1, argv + argc));
    companion.willFinishLaunching();
    std::unique_ptr<FrontEnd> front = makeFrontEnd(companion);
    SingleInstance instance([&] { front->bringForward(); },
                            [&](const std::string& line) { return front->command(line); });
    companion.didFinishLaunching();

    // Every way out passes here, so our own bridge never outlives a deliberate quit.
    QObject::connect(&app, &QCoreApplication::aboutToQuit, [&] { companion.quitting(); });
    quitOnSignals([] { QCoreApplication::quit(); });

    front->launched(hasFlag(argc, argv, "--launched-at-login"));
    companion.startDesk();
    return app.exec();
}

} // namespace orvan::app
