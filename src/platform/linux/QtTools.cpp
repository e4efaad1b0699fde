#include "platform/linux/QtTools.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QTimer>

#include <memory>

namespace orvan {

namespace {
// The coroutine resumes inside the process's own signals, so the process is let go on a later turn
// of the loop, never under its own feet.
struct LetGo {
    void operator()(QProcess* p) const {
        p->disconnect();
        p->deleteLater();
    }
};
} // namespace

Task<CommandResult> QtTools::run(ToolCall call) {
    CommandResult result;
    std::unique_ptr<QProcess, LetGo> owned(new QProcess);
    QProcess& process = *owned;
    process.setProgram(QString::fromStdString(call.executable.string()));
    QStringList arguments;
    for (const auto& a : call.arguments) arguments << QString::fromStdString(a);
    process.setArguments(arguments);
    QProcessEnvironment environment;
    for (const auto& [name, value] : call.environment) environment.insert(QString::fromStdString(name), QString::fromStdString(value));
    process.setProcessEnvironment(environment);
    if (call.directory) process.setWorkingDirectory(QString::fromStdString(call.directory->string()));
    process.setStandardInputFile(QProcess::nullDevice());
    if (!call.capture) process.setStandardOutputFile(QProcess::nullDevice());
    if (call.capture && call.errors) process.setProcessChannelMode(QProcess::MergedChannels);
    else process.setStandardErrorFile(QProcess::nullDevice());

    std::string output;
    bool overflow = false;
    auto wake = std::make_shared<Wakeup>();
    QObject::connect(&process, &QProcess::readyReadStandardOutput, &process, [&] {
        QByteArray piece = process.readAllStandardOutput();
        if (output.size() + static_cast<std::size_t>(piece.size()) > outputCap) overflow = true;
        else output.append(piece.constData(), static_cast<std::size_t>(piece.size()));
    });
    QObject::connect(&process, &QProcess::finished, &process, [wake] { wake->fire(true); });
    QObject::connect(&process, &QProcess::errorOccurred, &process, [wake, &process](QProcess::ProcessError e) {
        if (e == QProcess::FailedToStart || process.state() == QProcess::NotRunning) wake->fire(false);
    });
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&deadline, &QTimer::timeout, &process, [wake] { wake->fire(false); });
    deadline.start(std::chrono::duration_cast<std::chrono::milliseconds>(call.timeout));
    process.start();
    bool finished = co_await *wake;
    deadline.stop();
    if (!finished) {
        if (process.state() != QProcess::NotRunning) {
            process.terminate();
            if (!process.waitForFinished(2000)) {
                process.kill();
                process.waitForFinished(2000);
            }
        }
        co_return result;
    }
    QByteArray rest = call.capture ? process.readAllStandardOutput() : QByteArray();
    if (output.size() + static_cast<std::size_t>(rest.size()) > outputCap) overflow = true;
    else output.append(rest.constData(), static_cast<std::size_t>(rest.size()));
    if (process.exitStatus() != QProcess::NormalExit) co_return result;
    result.code = process.exitCode();
    if (!overflow) result.output = std::move(output);
    co_return result;
}

} // namespace orvan
