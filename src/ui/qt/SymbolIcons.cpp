#include "ui/qt/SymbolIcons.h"

#include "ui/SymbolTable.h"

#include <QFileInfo>
#include <QPainter>
#include <QPainterPath>

namespace orvan::ui::qt::SymbolIcons {

namespace {

void exclamation(QPainter& p, const QColor& color, qreal cx, qreal top, qreal bottom, qreal width) {
    p.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(cx, top), QPointF(cx, bottom - width * 1.8));
    p.drawPoint(QPointF(cx, bottom));
}

void check(QPainter& p, qreal s, qreal width, const QColor& color) {
    p.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::NoBrush);
    const QPointF points[] = {{s * 0.30, s * 0.52}, {s * 0.45, s * 0.66}, {s * 0.71, s * 0.36}};
    p.drawPolyline(points, 3);
}

void draw(QPainter& p, SymbolShape shape, const QColor& color, qreal s) {
    const qreal line = std::max<qreal>(1.0, s / 11.0);
    const QRectF ring(line / 2 + s * 0.06, line / 2 + s * 0.06, s * 0.88 - line, s * 0.88 - line);
    const QPen pen(color, line, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    p.setPen(pen);
    p.setBrush(Qt::NoBrush);
    switch (shape) {
    case SymbolShape::Dot:
        p.setPen(Qt::NoPen);
        p.setBrush(color);
        p.drawEllipse(QPointF(s / 2, s / 2), s * 0.22, s * 0.22);
        break;
    case SymbolShape::Circle: p.drawEllipse(ring); break;
    case SymbolShape::FilledCircle:
        p.setPen(Qt::NoPen);
        p.setBrush(color);
        p.drawEllipse(ring.adjusted(-line / 2, -line / 2, line / 2, line / 2));
        break;
    case SymbolShape::EyeCircle: {
        p.setPen(Qt::NoPen);
        p.setBrush(color);
        p.drawEllipse(ring.adjusted(-line / 2, -line / 2, line / 2, line / 2));
        // The eye is cut out of the disc so it shows whatever lies behind the icon.
        QPainterPath eye;
        eye.moveTo(s * 0.20, s * 0.5);
        eye.quadTo(s * 0.5, s * 0.22, s * 0.80, s * 0.5);
        eye.quadTo(s * 0.5, s * 0.78, s * 0.20, s * 0.5);
        p.setCompositionMode(QPainter::CompositionMode_Clear);
        p.drawPath(eye);
        p.setCompositionMode(QPainter::CompositionMode_SourceOver);
        p.drawEllipse(QPointF(s * 0.5, s * 0.5), s * 0.10, s * 0.10);
        break;
    }
    case SymbolShape::Check:
        p.drawEllipse(ring);
        check(p, s, line, color);
        break;
    case SymbolShape::CheckFilled:
        p.setPen(Qt::NoPen);
        p.setBrush(color);
        p.drawEllipse(ring.adjusted(-line / 2, -line / 2, line / 2, line / 2));
        p.setCompositionMode(QPainter::CompositionMode_Clear);
        check(p, s, line * 1.3, Qt::black);
        p.setCompositionMode(QPainter::CompositionMode_SourceOver);
        break;
    case SymbolShape::Warning: {
        const QPointF triangle[] = {{s * 0.5, s * 0.1}, {s * 0.92, s * 0.86}, {s * 0.08, s * 0.86}};
        p.drawPolygon(triangle, 3);
        exclamation(p, color, s * 0.5, s * 0.38, s * 0.72, line);
        break;
    }
    case SymbolShape::Alert:
        p.drawEllipse(ring);
        exclamation(p, color, s * 0.5, s * 0.28, s * 0.70, line);
        break;
    case SymbolShape::Phone:
        p.drawRoundedRect(QRectF(s * 0.28, s * 0.06, s * 0.44, s * 0.88), s * 0.08, s * 0.08);
        p.drawLine(QPointF(s * 0.44, s * 0.82), QPointF(s * 0.56, s * 0.82));
        break;
    case SymbolShape::Computer:
        p.drawRoundedRect(QRectF(s * 0.08, s * 0.14, s * 0.84, s * 0.56), s * 0.05, s * 0.05);
        p.drawLine(QPointF(s * 0.5, s * 0.70), QPointF(s * 0.5, s * 0.86));
        p.drawLine(QPointF(s * 0.3, s * 0.86), QPointF(s * 0.7, s * 0.86));
        break;
    case SymbolShape::Waves:
        p.setBrush(color);
        p.drawEllipse(QPointF(s * 0.5, s * 0.5), s * 0.07, s * 0.07);
        p.setBrush(Qt::NoBrush);
        for (qreal r : {0.22, 0.38}) {
            const QRectF arc(s * (0.5 - r), s * (0.5 - r), s * 2 * r, s * 2 * r);
            p.drawArc(arc, -40 * 16, 80 * 16);
            p.drawArc(arc, 140 * 16, 80 * 16);
        }
        break;
    case SymbolShape::Bubble: {
        QPainterPath bubble;
        bubble.addRoundedRect(QRectF(s * 0.08, s * 0.12, s * 0.84, s * 0.56), s * 0.12, s * 0.12);
        p.drawPath(bubble);
        const QPointF tail[] = {{s * 0.28, s * 0.68}, {s * 0.22, s * 0.88}, {s * 0.44, s * 0.68}};
        p.drawPolyline(tail, 3);
        break;
    }
    case SymbolShape::Bolt: {
        const QPointF bolt[] = {{s * 0.08, s * 0.5}, {s * 0.4, s * 0.3}, {s * 0.6, s * 0.7}, {s * 0.92, s * 0.5}};
        p.drawPolyline(bolt, 4);
        break;
    }
    case SymbolShape::Pointer: {
        const QPointF arrow[] = {{s * 0.3, s * 0.18}, {s * 0.3, s * 0.78}, {s * 0.44, s * 0.64},
                                 {s * 0.56, s * 0.88}, {s * 0.64, s * 0.84}, {s * 0.52, s * 0.6}, {s * 0.72, s * 0.6}};
        p.drawPolygon(arrow, 7);
        break;
    }
    case SymbolShape::Code: {
        const QPointF left[] = {{s * 0.30, s * 0.28}, {s * 0.10, s * 0.5}, {s * 0.30, s * 0.72}};
        const QPointF right[] = {{s * 0.70, s * 0.28}, {s * 0.90, s * 0.5}, {s * 0.70, s * 0.72}};
        p.drawPolyline(left, 3);
        p.drawPolyline(right, 3);
        p.drawLine(QPointF(s * 0.58, s * 0.2), QPointF(s * 0.42, s * 0.8));
        break;
    }
    }
}

} // namespace

QPixmap pixmap(std::string_view name, const QColor& color, int size, qreal devicePixelRatio) {
    size = std::clamp(size, 1, 1024);
    const SymbolEntry entry = SymbolTable::find(name);
    if (!entry.themeIcon.empty()) {
        const QIcon themed = QIcon::fromTheme(QString::fromUtf8(entry.themeIcon.data(), static_cast<int>(entry.themeIcon.size())));
        if (!themed.isNull()) return themed.pixmap(QSize(size, size), devicePixelRatio);
    }
    const int device = static_cast<int>(std::ceil(size * devicePixelRatio));
    QPixmap picture(device, device);
    picture.setDevicePixelRatio(devicePixelRatio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    draw(painter, entry.shape, color, size);
    return picture;
}

QIcon icon(std::string_view name, const QColor& color) {
    QIcon result;
    for (int size : {16, 22, 24, 32, 48, 64}) result.addPixmap(pixmap(name, color, size));
    return result;
}

namespace {
constexpr int traySizes[] = {16, 22, 24, 32, 48, 64};

// The PNG copies in the bundle, one per size that exists.
QIcon bundled(const QString& share, const QString& name, std::initializer_list<int> sizes) {
    QIcon found;
    for (int size : sizes) {
        const QString file = QStringLiteral("%1/icons/hicolor/%2x%2/apps/%3.png").arg(share).arg(size).arg(name);
        if (QFileInfo::exists(file)) found.addFile(file, QSize(size, size));
    }
    return found;
}

QString iconName(std::string_view suffix) {
    return QStringLiteral(ORVAN_BUNDLE_ID) + QString::fromUtf8(suffix.data(), static_cast<int>(suffix.size()));
}
} // namespace

QIcon appIcon(const QString& share) {
    const QString name = iconName("");
    return QIcon::fromTheme(name, bundled(share, name, {16, 22, 24, 32, 48, 64, 128, 256}));
}

QIcon trayIcon(std::string_view state, std::string_view drawn, const QColor& color, const QString& share) {
    const QString name = iconName("-" + std::string(state) + "-symbolic");
    const QIcon source = QIcon::fromTheme(name, bundled(share, name, {16, 22, 24, 32, 48, 64}));
    if (source.isNull()) return icon(drawn, color);
    QIcon result;
    for (int size : traySizes) {
        // Only the shape of a symbolic icon counts; its colour is the tone's, so the tray tells the
        // state the way the window's own symbols do.
        QImage image = source.pixmap(QSize(size, size)).toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
        if (image.isNull()) continue;
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), color);
        painter.end();
        result.addPixmap(QPixmap::fromImage(image));
    }
    return result.isNull() ? icon(drawn, color) : result;
}

} // namespace orvan::ui::qt::SymbolIcons
