#include "platform/linux/LinuxTerminal.h"

#include <QCoroProcess>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <memory>

namespace orvan {

namespace {
// A terminal that is still running this long after it started has opened its window; one that
// ended with an error by then did not.
constexpr int settleMs = 2000;
constexpr qsizetype errorBound = 4096;
constexpr int startMs = 5000;

std::string variable(const Environment& environment, const char* name) {
    auto found = environment.find(name);
    return found == environment.end() ? std::string() : found->second;
}

// How each known terminal takes a command to run: most after -e, some after -x or --.
const std::vector<LinuxTerminal::Candidate>& known() {
    static const std::vector<LinuxTerminal::Candidate> list = {
        {"gnome-terminal", {"--"}}, {"konsole", {"-e"}},   {"xfce4-terminal", {"-x"}}, {"mate-terminal", {"-x"}},
        {"kitty", {}},              {"foot", {}},          {"alacritty", {"-e"}},      {"wezterm", {"start", "--"}},
        {"xterm", {"-e"}},
    };
    return list;
}
} // namespace

bool LinuxTerminal::hasDisplay() const {
    return !variable(environment_, "DISPLAY").empty() || !variable(environment_, "WAYLAND_DISPLAY").empty();
}

std::vector<LinuxTerminal::Candidate> LinuxTerminal::candidates() const {
    std::vector<Candidate> out;
    std::string chosen = variable(environment_, "TERMINAL");
    if (!chosen.empty()) out.push_back({chosen, {"-e"}});
    out.push_back({"x-terminal-emulator", {"-e"}});
    for (const auto& c : known()) out.push_back(c);
    return out;
}

Task<TerminalRun> LinuxTerminal::run(std::string line) {
    if (!hasDisplay()) co_return TerminalRun{TerminalRun::Outcome::noDisplay, {}};
    QProcessEnvironment env;
    for (const auto& [name, value] : environment_) env.insert(QString::fromStdString(name), QString::fromStdString(value));
    const QStringList path = QString::fromStdString(variable(environment_, "PATH")).split(':', Qt::SkipEmptyParts);
    for (const auto& candidate : candidates()) {
        const QString program = QString::fromStdString(candidate.program);
        const QString found = program.contains('/') ? program : QStandardPaths::findExecutable(program, path);
        if (found.isEmpty()) continue;
        QStringList arguments;
        for (const auto& a : candidate.arguments) arguments << QString::fromStdString(a);
        arguments << "/bin/sh" << "-c" << QString::fromStdString(line);
        // Owned by itself once it outlives this call: a terminal window stays as long as the owner keeps it.
        auto* process = new QProcess;
        process->setProcessEnvironment(env);
        process->setStandardOutputFile(QProcess::nullDevice());
        process->setStandardInputFile(QProcess::nullDevice());
        auto errors = std::make_shared<std::string>();
        QObject::connect(process, &QProcess::readyReadStandardError, process, [process, errors] {
            QByteArray chunk = process->readAllStandardError();
            if (static_cast<qsizetype>(errors->size()) < errorBound)
                errors->append(chunk.constData(), static_cast<std::size_t>(std::min(chunk.size(), errorBound - static_cast<qsizetype>(errors->size()))));
        });
        process->setProgram(found);
        process->setArguments(arguments);
        // Starting only forks and execs, so it is answered at once; a program that can't run says
        // so through an error the awaitable start would miss, leaving it to its long time-out.
        process->start();
        if (!process->waitForStarted(startMs)) {
            delete process;
            continue;
        }
        const bool ended = co_await qCoro(*process).waitForFinished(settleMs);
        if (!ended) {
            QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
            co_return TerminalRun{TerminalRun::Outcome::opened, {}};
        }
        const bool good = process->exitStatus() == QProcess::NormalExit && process->exitCode() == 0;
        process->deleteLater();
        co_return TerminalRun{good ? TerminalRun::Outcome::opened : TerminalRun::Outcome::failed, *errors};
    }
    co_return TerminalRun{TerminalRun::Outcome::notLaunched, {}};
}

} // namespace orvan
