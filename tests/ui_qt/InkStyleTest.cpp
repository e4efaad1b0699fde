// The theme on real Qt widgets (offscreen): the application's palette and drawing follow the
// store and the desktop, and a drawn window shows the palette's ground and cards. With
// ORVAN_SCREENSHOTS set to a folder, the pictures are saved there for people to look at.

#include "QtTestApp.h"

#include "appearance/AppearanceSection.h"
#include "appearance/Swatch.h"
#include "appearance/ThemeCatalog.h"
#include "appearance/ThemeStore.h"
#include "fakes/TempFolder.h"
#include "foundation/UserDefaults.h"
#include "ui/qt/InkStyle.h"
#include "ui/qt/WindowHost.h"

#include <QApplication>
#include <QFrame>
#include <QImage>
#include <QLabel>
#include <QPixmap>
#include <QToolTip>
#include <QWidget>

#include <gtest/gtest.h>


using namespace orvan;
using orvan::testing::settle;
using ui::qt::InkStyle;

namespace {

QRgb rgbOf(Rgb value) { return qRgb((value >> 16) & 0xff, (value >> 8) & 0xff, value & 0xff); }

class Ink : public ::testing::Test {
protected:
    void SetUp() override { orvan::testing::qtApp(); }
    void TearDown() override {
        delete style;
        // Other tests in this program draw with the platform's colours.
        QApplication::setPalette(QPalette());
        settle();
    }
    void install() { style = InkStyle::install(*store, [this] { return desktopDark; }); }
    static QRgb app(QPalette::ColorRole role) { return QApplication::palette().color(role).rgb(); }

    test::TempFolder folder;
    std::unique_ptr<ThemeStore> store = std::make_unique<ThemeStore>(UserDefaults::at(folder.path() / "defaults.json"));
    InkStyle* style = nullptr;
    bool desktopDark = false;
};

TEST_F(Ink, TheApplicationPaletteFollowsSchemeChoiceAndDesktop) {
    desktopDark = true;
    install();
    EXPECT_TRUE(store->systemDark()) << "the desktop is read at install";

    EXPECT_EQ(app(QPalette::Window), rgbOf(ThemeCatalog::palette("orvan").dark.bg)) << "applied at install";
    const struct {
        const char* what;
        std::function<void()> act;
        const char* id;
        bool dark;
    } steps[] = {
        {"nord for both", [&] { store->setChoice(ThemeChoice::both("nord")); }, "nord", true},
        {"forced light", [&] { store->setScheme(Appearance::light); }, "nord", false},
        {"github for light", [&] { store->setChoice(store->choice().withLight("github")); }, "github", false},
        {"back to the system", [&] { store->setScheme(Appearance::system); }, "nord", true},
    };
    for (const auto& step : steps) {
        step.act();
        const ThemeTones& tones = ThemeCatalog::palette(step.id).side(step.dark);
        EXPECT_EQ(app(QPalette::Window), rgbOf(tones.bg)) << step.what;
        EXPECT_EQ(app(QPalette::WindowText), rgbOf(tones.ink)) << step.what;
        EXPECT_EQ(app(QPalette::Highlight), rgbOf(tones.accent)) << step.what;
    }
    EXPECT_EQ(QToolTip::palette().color(QPalette::ToolTipBase), QApplication::palette().color(QPalette::ToolTipBase))
        << "tool tips take the cards' colours";
}

TEST_F(Ink, ADesktopThemeChangeIsNoticedOnceAndFollowed) {
    install();
    store->setChoice(ThemeChoice("grove", "ember"));
    QWidget a, b;
    a.show(), b.show();
    settle();
    ASSERT_EQ(app(QPalette::Window), rgbOf(ThemeCatalog::palette("grove").light.bg));
    int reads = 0;
    delete style;
    style = InkStyle::install(*store, [&] { return ++reads, desktopDark; });
    reads = 0;
    desktopDark = true;
    QEvent change(QEvent::ThemeChange);
    QCoreApplication::sendEvent(&a, &change);
    QCoreApplication::sendEvent(&b, &change);
    EXPECT_FALSE(store->systemDark()) << "read once the event loop turns, not inside every window's event";
    settle();
    EXPECT_EQ(reads, 1);
    EXPECT_TRUE(store->systemDark());
    EXPECT_EQ(app(QPalette::Window), rgbOf(ThemeCatalog::palette("ember").dark.bg));

    store->setScheme(Appearance::light);
    desktopDark = false;
    QCoreApplication::sendEvent(&a, &change);
    settle();
    EXPECT_EQ(app(QPalette::Window), rgbOf(ThemeCatalog::palette("grove").light.bg)) << "a forced scheme ignores the desktop";
}

TEST_F(Ink, ReadingTheDesktopLeavesOurPaletteInPlace) {
    install();
    store->setScheme(Appearance::dark);
    const QPalette ours = QApplication::palette();
    // The offscreen platform's own palette is light.
    EXPECT_FALSE(InkStyle::desktopIsDark());
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), ours.color(QPalette::Window));
    EXPECT_EQ(QApplication::palette().color(QPalette::Base), ours.color(QPalette::Base));
}

TEST_F(Ink, SwatchesDecodeToTheirPalettesBands) {
    // Twice each, the second from the cache; then a palette that keeps its id but not its colours.
    std::vector<ThemePalette> palettes = ThemeCatalog::all();
    palettes.insert(palettes.end(), palettes.begin(), palettes.end());
    palettes.push_back(palettes.front());
    palettes.back().dark.ink ^= 0x00ff00;
    for (const auto& palette : palettes) {
        const std::string png = *Swatch::png(palette);
        QImage image;
        ASSERT_TRUE(image.loadFromData(reinterpret_cast<const uchar*>(png.data()), static_cast<int>(png.size()), "PNG"))
            << palette.id;
        ASSERT_EQ(image.size(), QSize(Swatch::width, Swatch::height));
        const Rgb bands[] = {palette.light.bg, palette.light.card, palette.light.accent, palette.light.ink,
                             palette.dark.bg, palette.dark.card, palette.dark.accent, palette.dark.ink};
        const int band = Swatch::width / 8;
        for (int i = 0; i < 8; ++i)
            for (int x : {i * band, i * band + band - 1})
                EXPECT_EQ(image.pixel(x, Swatch::height - 1), rgbOf(bands[i])) << palette.id << " band " << i;
    }
}

// Something of the main window around the Appearance section: rows, tones, a field, roles.
ui::Node sample(ThemeStore& store) {
    return ui::vstack({
        ui::section("", {
            ui::row("Studio Mac", {ui::button("Rename", [] {}).help("The name your iPhone shows for this Mac.")}),
            ui::text("Your iPhone uses this name.").tone(ui::Tone::Dim),
            ui::hstack({ui::symbol("circle.fill", ui::Tone::Good), ui::text("Running")}),
            ui::toggle("Remote control", true, [](bool) {}),
        }).key("first"),
        ui::section("Phones", {
            ui::row("Ann's iPhone", "Owner", {ui::button("Remove", [] {}).role(ui::Role::Destructive)}),
            ui::hstack({ui::field("name", "", "Studio Mac", [](const std::string&) {}).placeholder("Name this Mac"),
                        ui::button("Save", [] {}).role(ui::Role::Primary).key("save")}),
            ui::text("That name was not saved.").tone(ui::Tone::Danger),
            ui::separator(),
            ui::progress(0.6, "Downloading the image"),
        }),
        AppearanceSection::build(store),
    });
}

TEST_F(Ink, WindowsShowTheGroundAndTheCardsOfEverySideDrawn) {
    install();
    ui::qt::WindowHost host({.id = "themes", .title = "Appearance", .minimumSize = {640, 400}, .defaultSize = {760, 1900}, .defaults = nullptr},
                            [this] { return sample(*store); });
    auto following = store->observe([&] {
        host.setTonePalette(InkStyle::tones(*store));
        host.requestRender();
    });
    host.show();
    host.window()->resize(760, 1900);

    for (const char* id : {"orvan", "solarized", "tokyo-night"}) {
        for (bool dark : {false, true}) {
            store->setChoice(ThemeChoice::both(id));
            store->setScheme(dark ? Appearance::dark : Appearance::light);
            settle();
            host.renderNow();
            const ThemeTones& tones = ThemeCatalog::palette(id).side(dark);
            const std::string what = std::string(id) + (dark ? " dark" : " light");

            QWidget* section = host.renderer().widgetForKey("first");
            QWidget* save = host.renderer().widgetForKey("save");
            ASSERT_TRUE(section && save);
            const QImage card = section->grab().toImage(), button = save->grab().toImage();
            EXPECT_EQ(card.pixel(8, card.height() / 2), rgbOf(tones.card)) << what << ": the card";
            EXPECT_EQ(card.pixel(card.width() / 2, 0), rgbOf(tones.line)) << what << ": the card's edge";
            EXPECT_EQ(button.pixel(button.width() / 2, 3), rgbOf(tones.accent)) << what << ": a primary button is filled";

            QFrame* rule = nullptr;
            for (auto* frame : host.window()->findChildren<QFrame*>())
                if (frame->frameShape() == QFrame::HLine) rule = frame;
            ASSERT_NE(rule, nullptr);
            EXPECT_EQ(rule->height(), 1) << what << ": a separator is a hairline";
            EXPECT_EQ(rule->grab().toImage().pixel(rule->width() / 2, 0), rgbOf(tones.line)) << what << ": in the line colour";

            // The palette's name is a link; its underline is drawn in the accent of the present side.
            QWidget* name = nullptr;
            for (auto* label : host.window()->findChildren<QLabel*>())
                if (label->text().contains(QStringLiteral(">Ember</a>"))) name = label;
            ASSERT_NE(name, nullptr);
            const QImage link = name->grab().toImage();
            bool accented = false;
            for (int y = 0; y < link.height() && !accented; ++y)
                for (int x = 0; x < link.width() && !accented; ++x) accented = link.pixel(x, y) == rgbOf(tones.accent);
            EXPECT_TRUE(accented) << what << ": a link in the accent";

            const QImage window = host.window()->grab().toImage();
            const QPoint outside = section->mapTo(host.window(), QPoint(0, 0)) - QPoint(3, 3);
            ASSERT_TRUE(window.rect().contains(outside));
            EXPECT_EQ(window.pixel(outside), rgbOf(tones.bg)) << what << ": the ground";

            if (const char* out = std::getenv("ORVAN_SCREENSHOTS"))
                EXPECT_TRUE(window.save(QStringLiteral("%1/themes-%2-%3.png").arg(out, id, dark ? "dark" : "light"), "PNG"));
        }
    }
}

} // namespace
