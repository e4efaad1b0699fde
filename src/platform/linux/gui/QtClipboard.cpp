#include "platform/linux/gui/QtClipboard.h"

#include <QBuffer>
#include <QClipboard>
#include <QImage>
#include <QUrl>
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

bool QtClipboard::putTextAndImages(const std::string& text, const std::vector<std::filesystem::path>& pictures) {
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (!clipboard) return false;
    clipboard->clear();
    auto* data = new QMimeData;
    data->setText(QString::fromStdString(text));
    QList<QUrl> files;
    for (const auto& picture : pictures) files.push_back(QUrl::fromLocalFile(QString::fromStdString(picture.string())));
    if (!files.isEmpty()) data->setUrls(files);
    // A mail program pastes files; an image editor or chat pastes the picture itself.
    if (!pictures.empty()) {
        QImage first(QString::fromStdString(pictures.front().string()));
        if (!first.isNull()) data->setImageData(first);
    }
    clipboard->setMimeData(data);
    return true;
}

std::optional<std::string> QtClipboard::image() const {
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (!clipboard) return std::nullopt;
    const QImage picture = clipboard->image();
    if (picture.isNull()) return std::nullopt;
    QByteArray out;
    QBuffer buffer(&out);
    buffer.open(QIODevice::WriteOnly);
    // Lossless here; the redraw decides the size.
    if (!picture.save(&buffer, "PNG")) return std::nullopt;
    return out.toStdString();
}

} // namespace orvan
