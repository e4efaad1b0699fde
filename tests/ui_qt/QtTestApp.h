#pragma once
// One QApplication for the whole test program, made on first use. The tests run on the
// offscreen platform (set by the test runner), so real windows exist without a display.

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

#include <gtest/gtest.h>
#include <map>
#include <string>

// Qt's own route for a key press to the shortcuts (QShortcut, a button's shortcut) before the
// focused widget sees it; exported by QtGui for its test library.
Q_GUI_EXPORT bool qt_sendShortcutOverrideEvent(QObject* o, ulong timestamp, int k, Qt::KeyboardModifiers mods,
                                               const QString& text = QString(), bool autorep = false,
                                               ushort count = 1);

namespace orvan::testing {

// Names a parameterised case by its `name` field.
template <class Case> std::string byName(const ::testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

inline QApplication& qtApp() {
    static int argc = 1;
    static char name[] = "ui_qt_tests";
    static char* argv[] = {name, nullptr};
    static QApplication* app = [] {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
        return new QApplication(argc, argv);
    }();
    return *app;
}

// Everything posted so far, including deferred deletions, is handled.
inline void settle() {
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }
}

// One key as a keyboard gives it: shortcuts first, then the target.
inline void keyClick(QWidget* target, int key, const QString& text = {}) {
    if (qt_sendShortcutOverrideEvent(target, 0, key, Qt::NoModifier, text)) return;
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(target, &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(target, &release);
}

// A space is Key_Space, which a focused check box takes as a click.
inline void typeText(QWidget* target, const QString& text) {
    for (const QChar c : text) {
        int key = 0;
        if (c == QLatin1Char(' ')) key = Qt::Key_Space;
        else if (c.toUpper() >= QLatin1Char('A') && c.toUpper() <= QLatin1Char('Z')) key = c.toUpper().unicode();
        else if (c.isDigit()) key = c.unicode();
        keyClick(target, key, QString(c));
    }
}

inline void pressKey(QWidget* target, Qt::Key key) { keyClick(target, key); }

// Counts, while it lives, what tells widgets they changed or asks for a layout or a paint.
class WidgetChanges : public QObject {
public:
    WidgetChanges() { qApp->installEventFilter(this); }
    ~WidgetChanges() override { qApp->removeEventFilter(this); }
    // "type×count" for each kind of event seen, or "" for none.
    std::string seen() const {
        std::string out;
        for (auto [type, count] : counts_) out += std::to_string(type) + "x" + std::to_string(count) + " ";
        return out;
    }
    bool eventFilter(QObject*, QEvent* event) override {
        switch (event->type()) {
        case QEvent::LayoutRequest:
        case QEvent::PaletteChange:
        case QEvent::FontChange:
        case QEvent::EnabledChange:
        case QEvent::ToolTipChange:
        case QEvent::Show:
        case QEvent::Hide:
        case QEvent::UpdateRequest:
        case QEvent::StyleChange: ++counts_[event->type()]; break;
        default: break;
        }
        return false;
    }

private:
    std::map<int, int> counts_;
};

} // namespace orvan::testing
