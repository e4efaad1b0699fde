#include "platform/linux/XdgDesktop.h"

#include <QProcess>
#include <QStandardPaths>

namespace orvan {

namespace {
// A path given as-is could start with "-" and be read as an option; an absolute one cannot.
std::string fullPath(const std::filesystem::path& path) {
    std::error_code error;
    const auto full = std::filesystem::absolute(path, error);
    return (error ? path : full).lexically_normal().string();
}
} // namespace

bool XdgDesktop::open(const std::string& target) {
    if (target.empty() || target.front() == '-') return false;
    const auto found = environment_.find("PATH");
    const QStringList path = QString::fromStdString(found == environment_.end() ? std::string() : found->second).split(':', Qt::SkipEmptyParts);
    const QString program = QStandardPaths::findExecutable(QStringLiteral("xdg-open"), path);
    if (program.isEmpty()) return false;
    QProcess process;
    process.setProgram(program);
    process.setArguments({QString::fromStdString(target)});
    QProcessEnvironment children;
    for (const auto& [name, value] : environment_) children.insert(QString::fromStdString(name), QString::fromStdString(value));
    process.setProcessEnvironment(children);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    return process.startDetached();
}

bool XdgDesktop::openUrl(const std::string& url) { return open(url); }
bool XdgDesktop::openFile(const std::filesystem::path& file) { return open(fullPath(file)); }
bool XdgDesktop::openFolder(const std::filesystem::path& folder) { return open(fullPath(folder)); }

} // namespace orvan
