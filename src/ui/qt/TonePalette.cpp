#include "ui/qt/TonePalette.h"

namespace orvan::ui::qt {

namespace {

QColor mix(const QColor& a, const QColor& b, double share) {
    return QColor::fromRgbF(static_cast<float>(a.redF() * (1 - share) + b.redF() * share),
                            static_cast<float>(a.greenF() * (1 - share) + b.greenF() * share),
                            static_cast<float>(a.blueF() * (1 - share) + b.blueF() * share));
}

} // namespace

QColor TonePalette::color(Tone tone) const {
    switch (tone) {
    case Tone::Normal: return normal;
    case Tone::Dim: return dim;
    case Tone::Accent: return accent;
    case Tone::Good: return good;
    case Tone::Warning: return warning;
    case Tone::Danger: return danger;
    }
    return normal;
}

TonePalette TonePalette::fromPalette(const QPalette& palette) {
    const QColor text = palette.color(QPalette::WindowText);
    const QColor window = palette.color(QPalette::Window);
    const bool dark = window.lightnessF() < 0.5;
    TonePalette tones;
    tones.normal = text;
    // Dim text must stay readable on both backgrounds: part way from the text to the window.
    tones.dim = mix(text, window, 0.42);
    tones.accent = palette.color(QPalette::Highlight);
    tones.good = dark ? QColor(0x7c, 0xd0, 0x92) : QColor(0x1f, 0x8a, 0x4c);
    tones.warning = dark ? QColor(0xf0, 0xc0, 0x5a) : QColor(0xa8, 0x64, 0x00);
    tones.danger = dark ? QColor(0xff, 0x8a, 0x80) : QColor(0xc0, 0x2b, 0x2b);
    return tones;
}

} // namespace orvan::ui::qt
