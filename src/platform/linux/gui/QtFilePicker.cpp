#include "platform/linux/gui/QtFilePicker.h"

#include <QDir>
#include <QFileDialog>
#include <QPointer>

namespace orvan {

Task<std::optional<std::filesystem::path>> QtFilePicker::choose(FileChoice choice) {
    std::error_code error;
    const bool startExists = !choice.start.empty() && std::filesystem::is_directory(choice.start, error);
    // No parent: the chooser must not vanish with a sheet that closes under it, and the main
    // window keeps answering while it is up.
    QPointer<QFileDialog> dialog = new QFileDialog(nullptr, QString::fromStdString(choice.message),
                                                   startExists ? QString::fromStdString(choice.start.string()) : QDir::homePath());
    dialog->setFileMode(choice.kind == FileChoice::Kind::folder ? QFileDialog::Directory : QFileDialog::ExistingFile);
    if (choice.kind == FileChoice::Kind::folder) dialog->setOption(QFileDialog::ShowDirsOnly);
    if (choice.showHidden) dialog->setFilter(dialog->filter() | QDir::Hidden);

    Wakeup done;
    int answer = QDialog::Rejected;
    // The connections die with this frame's guard, so a dialog outliving the wait calls nothing.
    QObject guard;
    QObject::connect(dialog, &QDialog::finished, &guard, [&](int result) {
        answer = result;
        done.fire(true);
    });
    QObject::connect(dialog, &QObject::destroyed, &guard, [&] { done.fire(false); });
    dialog->open();
    const bool finished = co_await done;
    if (!finished || !dialog) co_return std::nullopt;
    const QStringList chosen = dialog->selectedFiles();
    dialog->deleteLater();
    if (answer != QDialog::Accepted || chosen.isEmpty()) co_return std::nullopt;
    co_return std::filesystem::path(chosen.front().toStdString());
}

} // namespace orvan
