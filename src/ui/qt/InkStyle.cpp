#include "ui/qt/InkStyle.h"

#include <QApplication>
#include <QEvent>
#include <QLabel>
#include <QStyle>
#include <QStyleHints>
#include <QTimer>
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

QString InkStyle::styleSheet(const InkSet& ink) {
    QString sheet = QStringLiteral(
        "QFrame#section { background-color: @card; border: 1px solid @line; border-radius: 10px; }\n"
        "QFrame[frameShape=\"4\"] { border: none; background-color: @line; min-height: 1px; max-height: 1px; }\n"
        "QFrame[frameShape=\"5\"] { border: none; background-color: @line; min-width: 1px; max-width: 1px; }\n"
        "QLineEdit { background-color: @well; color: @ink; border: 1px solid @line; border-radius: 5px;"
        " padding: 3px 6px; selection-background-color: @accent; selection-color: @onAccent; }\n"
        "QLineEdit:focus { border-color: @accent; }\n"
        "QLineEdit:disabled { color: @dim; }\n"
        "QPushButton[role=\"primary\"] { background-color: @accent; color: @onAccent; border: 1px solid @accent;"
        " border-radius: 6px; padding: 4px 14px; }\n"
        "QPushButton[role=\"primary\"]:disabled { background-color: @line; color: @dim; border-color: @line; }\n"
        "QPushButton[role=\"destructive\"] { color: @danger; }\n"
        "QProgressBar::chunk { background-color: @accent; }\n"
        "QToolTip { background-color: @card; color: @ink; border: 1px solid @line; }\n");
    const std::pair<const char*, Colour> names[] = {
        {"@onAccent", ink.onAccent}, {"@accent", ink.accent}, {"@card", ink.card}, {"@line", ink.line},
        {"@well", ink.well},         {"@ink", ink.ink},       {"@dim", ink.dim},   {"@danger", ink.danger},
    };
    for (const auto& [name, c] : names) sheet.replace(QLatin1String(name), QString::fromStdString(c.hex()));
    return sheet;
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
    QApplication::setPalette(palette(ink));
    const QString sheet = styleSheet(ink);
    if (qApp->styleSheet() != sheet) qApp->setStyleSheet(sheet);
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
    // A style sheet reads a widget's properties when it polishes the widget, and a button may be
    // given its role after that: polish it again so a primary button is filled from the start.
    if (event->type() == QEvent::DynamicPropertyChange &&
        static_cast<QDynamicPropertyChangeEvent*>(event)->propertyName() == "role") {
        if (auto* widget = qobject_cast<QWidget*>(watched); widget && widget->testAttribute(Qt::WA_WState_Polished)) {
            widget->style()->unpolish(widget);
            widget->style()->polish(widget);
        }
    }
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
