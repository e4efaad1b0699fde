#include "platform/linux/gui/QtClipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace orvan {

bool QtClipboard::putText(const std::string& text, bool concealed) {
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (!clipboard) return false;
    clipboard->clear();
    auto* data = new QMimeData;
    data->setText(QString::fromStdString(text));
    if (concealed) {
        data->setData(QStringLiteral("x-kde-passwordManagerHint"), QByteArrayLiteral("secret"));
        data->setData(QStringLiteral("org.nspasteboard.ConcealedType"), QByteArray());
    }
    clipboard->setMimeData(data); // the clipboard takes the data over
    return true;
}

} // namespace orvan
