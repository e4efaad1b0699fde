#include "platform/linux/XdgMail.h"

#include <QProcess>
#include <QStandardPaths>

namespace orvan {

namespace {
QString tool() { return QStandardPaths::findExecutable(QStringLiteral("xdg-email")); }
} // namespace

bool XdgMail::canMail() const { return !tool().isEmpty(); }

bool XdgMail::compose(const MailDraft& draft) {
    const QString program = tool();
    if (program.isEmpty()) return false;
    // Each part is its own argument: nothing passes through a shell.
    QStringList arguments{QStringLiteral("--utf8")};
    if (!draft.subject.empty()) arguments << QStringLiteral("--subject") << QString::fromStdString(draft.subject);
    if (!draft.body.empty()) arguments << QStringLiteral("--body") << QString::fromStdString(draft.body);
    for (const auto& file : draft.attachments) arguments << QStringLiteral("--attach") << QString::fromStdString(file.string());
    if (!draft.to.empty()) arguments << QString::fromStdString(draft.to);
    return QProcess::startDetached(program, arguments);
}

} // namespace orvan
