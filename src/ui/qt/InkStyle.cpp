#include "ui/qt/InkStyle.h"

#include <QApplication>
#include <QEvent>
#include <QFrame>
#include <QLabel>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleHints>
#include <QStyleOption>
#include <QTimer>
#include <QToolTip>
#include <QWidget>

namespace orvan::ui::qt {

namespace {

QColor withAlpha(QColor c, int alpha) {
    c.setAlpha(alpha);
    return c;
}

bool looksDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightnessF() < palette.color(QPalette::WindowText).lightnessF();
}

bool isPrimary(const QWidget* widget) {
    return widget && widget->property("role").toString() == QLatin1String("primary");
}

void rounded(QPainter* painter, const QRect& rect, const QColor& fill, const QColor& edge, qreal radius) {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(edge, 1));
    painter->setBrush(fill);
    painter->drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter->restore();
}

// Draws what a palette alone can't say: the cards, the hairlines, the wells of text fields and the
// filled primary button, all in the palette's own colours. A style sheet did this once, but it
// keeps rules of its own for every widget it polishes: megabytes for a window this size, and a
// second pass over every widget whenever a button changes its role.
class InkDrawing : public QProxyStyle {
public:
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        if (element == PE_PanelLineEdit) {
            const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
            if (frame && frame->lineWidth > 0) {
                const QPalette& p = option->palette;
                rounded(painter, option->rect, p.color(QPalette::Base),
                        p.color((option->state & State_HasFocus) ? QPalette::Highlight : QPalette::Mid), 5);
                return;
            }
        }
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
        const QPalette& p = option->palette;
        if (element == CE_ShapedFrame) {
            if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option)) {
                if (frame->frameShape == QFrame::HLine || frame->frameShape == QFrame::VLine) {
                    painter->fillRect(option->rect, p.color(QPalette::Mid));
                    return;
                }
                if (widget && widget->objectName() == QLatin1String("section")) {
                    rounded(painter, option->rect, p.color(QPalette::AlternateBase), p.color(QPalette::Mid), 10);
                    return;
                }
            }
        }
        if (element == CE_PushButtonBevel && isPrimary(widget)) {
            // The disabled group's highlight is the line colour, so a primary out of reach greys.
            const QColor fill = p.color(QPalette::Highlight);
            rounded(painter, option->rect, fill, fill, 6);
            return;
        }
        if (element == CE_PushButtonLabel && isPrimary(widget)) {
            if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option)) {
                QStyleOptionButton onFill = *button;
                onFill.palette.setColor(QPalette::ButtonText, (option->state & State_Enabled)
                                                                  ? p.color(QPalette::HighlightedText)
                                                                  : p.color(QPalette::PlaceholderText));
                QProxyStyle::drawControl(element, &onFill, painter, widget);
                return;
            }
        }
        QProxyStyle::drawControl(element, option, painter, widget);
    }
};

} // namespace

InkStyle::InkStyle(ThemeStore& store, DesktopReader reader)
    : QObject(QCoreApplication::instance()), store_(store), reader_(std::move(reader)) {}

InkStyle::~InkStyle() {
    if (auto* app = QCoreApplication::instance()) app->removeEventFilter(this);
    store_.setApplier({});
}

InkStyle* InkStyle::install(ThemeStore& store, DesktopReader desktopIsDark) {
    auto* style = new InkStyle(store, std::move(desktopIsDark));
    store.setApplier([](const ThemeStore& s) { apply(s); });
    store.setSystemDark(style->reader_());
    store.applyToApp();
    QCoreApplication::instance()->installEventFilter(style);
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    QObject::connect(QGuiApplication::styleHints(), &QStyleHints::colorSchemeChanged, style,
                     [style](Qt::ColorScheme) { style->recheckSoon(); });
#endif
    return style;
}

QColor InkStyle::colour(Colour c) { return QColor(c.red(), c.green(), c.blue(), c.alpha); }

QPalette InkStyle::palette(const InkSet& ink) {
    const QColor bg = colour(ink.bg), card = colour(ink.card), well = colour(ink.well), line = colour(ink.line),
                 text = colour(ink.ink), dim = colour(ink.dim), accent = colour(ink.accent),
                 onAccent = colour(ink.onAccent);
    QPalette p;
    // Every role is set, so a later change of the desktop's theme cannot show through ours.
    p.setColor(QPalette::Window, bg);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, well);
    p.setColor(QPalette::AlternateBase, card);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, well);
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, onAccent);
    p.setColor(QPalette::Highlight, accent);
    p.setColor(QPalette::HighlightedText, onAccent);
    p.setColor(QPalette::Link, accent);
    p.setColor(QPalette::LinkVisited, accent);
    p.setColor(QPalette::ToolTipBase, card);
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, dim);
    p.setColor(QPalette::Light, card);
    p.setColor(QPalette::Midlight, well);
    p.setColor(QPalette::Mid, line);
    p.setColor(QPalette::Dark, line.darker(130));
    p.setColor(QPalette::Shadow, withAlpha(colour(ink.shadow), 255));
    // Disabled words in the dim tone, half way to the ground, so they read as out of reach.
    const QColor faded = QColor::fromRgbF((dim.redF() + bg.redF()) / 2, (dim.greenF() + bg.greenF()) / 2,
                                          (dim.blueF() + bg.blueF()) / 2);
    for (auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) p.setColor(QPalette::Disabled, role, faded);
    p.setColor(QPalette::Disabled, QPalette::Highlight, line);
    return p;
}

TonePalette InkStyle::tones(const ThemeStore& store) {
    const InkSet& ink = store.ink();
    const ThemeTones& side = store.choice().tones(store.isDark());
    TonePalette t;
    t.normal = colour(ink.ink);
    t.dim = colour(ink.dim);
    t.accent = colour(ink.accent);
    t.good = colour(ink.good);
    t.warning = colour(Colour{side.ansi[3]});
    t.danger = colour(ink.danger);
    return t;
}

void InkStyle::apply(const ThemeStore& store) {
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) return;
    const InkSet& ink = store.ink();
    if (!dynamic_cast<InkDrawing*>(QApplication::style())) QApplication::setStyle(new InkDrawing);
    const QPalette colours = palette(ink);
    QApplication::setPalette(colours);
    QToolTip::setPalette(colours);
}

bool InkStyle::desktopIsDark() {
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    switch (QGuiApplication::styleHints()->colorScheme()) {
    case Qt::ColorScheme::Dark: return true;
    case Qt::ColorScheme::Light: return false;
    default: break;
    }
#endif
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) return false;
    const bool ownPalette = QCoreApplication::testAttribute(Qt::AA_SetPalette);
    const QPalette ours = QApplication::palette();
    // An empty palette resolves to the platform's own.
    QApplication::setPalette(QPalette());
    const bool dark = looksDark(QApplication::palette());
    if (ownPalette) QApplication::setPalette(ours);
    return dark;
}

bool InkStyle::eventFilter(QObject* watched, QEvent* event) {
    // Every window hears of a theme change; one look at the desktop is enough.
    if (event->type() == QEvent::ThemeChange) recheckSoon();
    // A label's rich text takes its link colour from the palette when the text is set, so a link
    // drawn before a change of palette keeps the old accent until its text is set again.
    if (event->type() == QEvent::PaletteChange) {
        if (auto* label = qobject_cast<QLabel*>(watched);
            label && label->textFormat() == Qt::RichText && label->text().contains(QLatin1String("<a "))) {
            const QString text = label->text();
            label->clear();
            label->setText(text);
        }
    }
    return QObject::eventFilter(watched, event);
}

void InkStyle::recheckSoon() {
    if (pending_) return;
    pending_ = true;
    QTimer::singleShot(0, this, [this] { recheck(); });
}

void InkStyle::recheck() {
    pending_ = false;
    store_.setSystemDark(reader_());
}

} // namespace orvan::ui::qt
