// The companion as text only: the "Remote control" window printed whenever it changes. It links
// no GUI library, so a machine without a display pays only for what it shows.

#include "app/AppInfo.h"
#include "app/HeadlessView.h"
#include "app/Program.h"
#include "platform/linux/CrashHandler.h"

#include <QCoreApplication>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

using namespace orvan;

int main(int argc, char** argv) {
    // Started with standard input closed, the first file opened would take its place and be
    // read as commands.
    if (::fcntl(STDIN_FILENO, F_GETFD) == -1) ::open("/dev/null", O_RDONLY);
    if (auto answered = app::answerInfo(argc, argv)) return *answered;
    // First, so that a crash anywhere after it is caught and reported at the next start.
    CrashHandler::installForProgram(Carryover::processEnvironment(), AppInfo::shortVersion, AppInfo::buildNumber);
    QCoreApplication::setApplicationName(QStringLiteral("Orvan Companion"));
    QCoreApplication app(argc, argv);
    return app::run(app, argc, argv, [](app::Companion& companion) -> std::unique_ptr<app::FrontEnd> {
        return std::make_unique<app::HeadlessView>(companion, stdout);
    });
}
