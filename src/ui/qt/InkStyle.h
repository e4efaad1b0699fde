#pragma once
// Puts the theme store's ink set on screen with Qt: the application's palette, a style that
// draws cards, wells, lines and the filled primary button in the palette's colours, and the tone
// colours the renderer gives text and symbols. It also tells the store whether the desktop is dark, at
// install and whenever the desktop's theme changes.
//
//     auto* style = InkStyle::install(ThemeStore::shared());   // after QApplication exists
//     auto sub = ThemeStore::shared().observe([&] { host.setTonePalette(InkStyle::tones(ThemeStore::shared())); });
//
// Qt 6.4 has no colour-scheme hint, so the desktop's setting is read from the platform's own
// palette: the application's palette is cleared for a moment, and a window colour lighter than
// its text means light. Qt 6.5 and later answer through QStyleHints directly.

#include "appearance/InkSet.h"
#include "appearance/ThemeStore.h"
#include "ui/qt/TonePalette.h"

#include <QObject>
#include <QPalette>
#include <QString>

#include <functional>

namespace orvan::ui::qt {

class InkStyle : public QObject {
public:
    // Whether the desktop is dark; replaceable so that tests can play a desktop that changes.
    using DesktopReader = std::function<bool()>;

    // Makes the store put its look on this application, tells it the desktop's setting, applies
    // the look at once, and follows the desktop from then on. Owned by the application; delete it
    // to stop following (the store must outlive it).
    static InkStyle* install(ThemeStore& store, DesktopReader desktopIsDark = &InkStyle::desktopIsDark);

    static QColor colour(Colour c);
    static QPalette palette(const InkSet& ink);
    // The renderer's tones for the present look. Warning is the side's terminal yellow, the one
    // tone the ink set has no name for.
    static TonePalette tones(const ThemeStore& store);
    // Sets the application's palette (and, the first time, its style) from the store's present ink.
    static void apply(const ThemeStore& store);

    static bool desktopIsDark();

    ~InkStyle() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    InkStyle(ThemeStore& store, DesktopReader reader);
    void recheckSoon();
    void recheck();

    ThemeStore& store_;
    DesktopReader reader_;
    bool pending_ = false;
};

} // namespace orvan::ui::qt
