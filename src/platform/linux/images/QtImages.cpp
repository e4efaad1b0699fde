#include "platform/linux/images/QtImages.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace orvan {

namespace {

// Larger than any photo a phone or camera makes; a picture claiming more is refused unread.
constexpr qint64 maxPixels = 200'000'000;

QImage read(std::string_view bytes) {
    QByteArray data = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    // A photo's orientation tag is honoured while reading, since the tag itself does not survive.
    reader.setAutoTransform(true);
    const QSize claimed = reader.size();
    if (claimed.isValid() && static_cast<qint64>(claimed.width()) * claimed.height() > maxPixels) return {};
    return reader.read();
}

QSize fitted(QSize size, int longestSide) {
    const int longest = std::max(size.width(), size.height());
    if (longest <= longestSide || longestSide < 1) return size;
    const double scale = static_cast<double>(longestSide) / longest;
    return QSize(std::max(1, static_cast<int>(std::lround(size.width() * scale))),
                 std::max(1, static_cast<int>(std::lround(size.height() * scale))));
}

QImage drawnOnWhite(const QImage& source, QSize size) {
    QImage canvas(size, QImage::Format_RGB32);
    canvas.fill(Qt::white);
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRect(QPoint(0, 0), size), source);
    painter.end();
    return canvas;
}

std::string encoded(const QImage& image, const char* format, int quality) {
    QByteArray out;
    QBuffer buffer(&out);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setQuality(quality);
    if (!writer.write(image)) return {};
    return out.toStdString();
}

} // namespace

std::optional<Images::Size> QtImages::size(std::string_view bytes) const {
    // The header's word is enough when the format tells it; the redraw still refuses what doesn't decode.
    QByteArray data = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    if (reader.canRead()) {
        const QSize claimed = reader.size();
        if (claimed.isValid() && !claimed.isEmpty()) return Size{claimed.width(), claimed.height()};
    }
    const QImage image = read(bytes);
    if (image.isNull()) return std::nullopt;
    return Size{image.width(), image.height()};
}

std::string QtImages::redrawJpeg(std::string_view bytes, int longestSide, double quality) const {
    const QImage source = read(bytes);
    if (source.isNull() || source.width() < 1 || source.height() < 1) return {};
    const int q = std::clamp(static_cast<int>(std::lround(quality * 100)), 0, 100);
    return encoded(drawnOnWhite(source, fitted(source.size(), longestSide)), "jpeg", q);
}

} // namespace orvan
