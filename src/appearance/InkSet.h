#pragma once
// The working set of colours that views read: one side of one palette, plus a shadow.

#include "appearance/Colour.h"
#include "appearance/ThemeTones.h"

namespace orvan {

struct InkSet {
    Colour bg;
    Colour card;
    Colour ink;
    Colour dim;
    Colour line;
    Colour accent;
    Colour well;
    Colour steel;
    Colour good;
    Colour danger;
    Colour onAccent;
    Colour shadow;

    // The tones' equal names carry over. A shadow is black: faint on a light side, where it only
    // has to lift a card, and deeper on a dark one, where the cards are already near the ground.
    static InkSet from(const ThemeTones& tones, bool isDark);

    bool operator==(const InkSet&) const = default;
};

} // namespace orvan
