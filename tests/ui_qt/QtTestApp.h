#pragma once
// One QApplication for the whole test program, made on first use. The tests run on the
// offscreen platform (set by the test runner), so real windows exist without a display.

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace orvan::testing {

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

inline void typeText(QWidget* target, const QString& text) {
    for (const QChar c : text) {
        QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
        QCoreApplication::sendEvent(target, &press);
        QKeyEvent release(QEvent::KeyRelease, 0, Qt::NoModifier, QString(c));
        QCoreApplication::sendEvent(target, &release);
    }
}

inline void pressKey(QWidget* target, Qt::Key key) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &release);
}

// A folder of the running test's own, empty at the start and gone at the end.
struct TestFolder {
    std::filesystem::path path = std::filesystem::temp_directory_path() /
                                 ("orvan-ui-qt-" + std::to_string(::getpid()) + "-" +
                                  ::testing::UnitTest::GetInstance()->current_test_info()->name());
    TestFolder() { std::filesystem::remove_all(path), std::filesystem::create_directories(path); }
    ~TestFolder() { std::filesystem::remove_all(path); }
};

} // namespace orvan::testing
