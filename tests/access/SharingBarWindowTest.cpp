// The sharing bar as a real window on the offscreen platform: where it stands, that it never
// takes the focus, what it says, and its button.
#include "ui/qt/SharingBarWindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QWidget>
#include <gtest/gtest.h>

namespace orvan {
namespace {

QApplication& app() {
    static int argc = 1;
    static char name[] = "access_tests";
    static char* argv[] = {name, nullptr};
    static QApplication* instance = new QApplication(argc, argv);
    return *instance;
}

QStringList labels(QWidget* window) {
    QStringList out;
    for (auto* label : window->findChildren<QLabel*>())
        if (label->isVisibleTo(window)) out << label->text();
    return out;
}

TEST(SharingBarWindowTest, FloatsAtTheBottomCentreSaysWhoAndStops) {
    app();
    ui::qt::SharingBarWindow bar;
    int stops = 0;
    bar.present({"Mara’s iPhone is controlling this Mac.",
                 "Phone first: this Mac's own mouse and keyboard give way to Mara’s iPhone.", [&] { ++stops; }});
    QWidget* window = bar.window();
    ASSERT_TRUE(window->isVisible());
    const Qt::WindowFlags flags = window->windowFlags();
    for (auto flag : {Qt::FramelessWindowHint, Qt::WindowStaysOnTopHint, Qt::WindowDoesNotAcceptFocus})
        EXPECT_TRUE(flags.testFlag(flag)) << flag;
    EXPECT_EQ(flags & Qt::WindowType_Mask, Qt::Tool);
    EXPECT_TRUE(window->testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_FALSE(window->isActiveWindow());

    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    const QRect frame = window->geometry();
    EXPECT_GE(frame.width(), 460);
    EXPECT_GE(frame.height(), 52);
    EXPECT_LE(std::abs(frame.center().x() - area.center().x()), 1);
    EXPECT_EQ(area.bottom() - frame.bottom(), 18);

    EXPECT_TRUE(labels(window).contains(QStringLiteral("Mara’s iPhone is controlling this Mac.")));
    EXPECT_TRUE(labels(window).join('\n').contains(QStringLiteral("Phone first:")));
    QAbstractButton* stop = nullptr;
    for (auto* button : window->findChildren<QAbstractButton*>())
        if (button->text() == QStringLiteral("Stop sharing")) stop = button;
    ASSERT_TRUE(stop);
    stop->click();
    QCoreApplication::processEvents();
    EXPECT_EQ(stops, 1);

    // A new model replaces the words; the second line goes when there is none.
    bar.present({"Your screen is shared with Theo’s iPad.", std::nullopt, [] {}});
    EXPECT_TRUE(labels(window).contains(QStringLiteral("Your screen is shared with Theo’s iPad.")));
    EXPECT_FALSE(labels(window).join('\n').contains(QStringLiteral("Phone first:")));
    bar.dismiss();
    EXPECT_FALSE(window->isVisible());
}

} // namespace
} // namespace orvan
