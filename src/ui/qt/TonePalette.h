#pragma once
// The colours the renderer gives each tone. Taken from the application's palette by default so
// that light and dark desktops both read well; the theme's ink set replaces it once themes
// arrive, through `ViewRenderer::setTonePalette`.

#include "ui/Node.h"

#include <QColor>
#include <QPalette>

namespace orvan::ui::qt {

struct TonePalette {
    QColor normal;
    QColor dim;
    QColor accent;
    QColor good;
    QColor warning;
    QColor danger;

    QColor color(Tone tone) const;
    bool operator==(const TonePalette&) const = default;

    static TonePalette fromPalette(const QPalette& palette);
};

} // namespace orvan::ui::qt
