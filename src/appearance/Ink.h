#pragma once
// The colours of the present look, by name, for code that draws without a store at hand (the
// tray icon, a picture made on the fly). Each call reads the shared store, so the answer follows
// the scheme, the palette choice and the system's setting as they are at that moment.

#include "appearance/Colour.h"

namespace orvan::Ink {

Colour bg();
Colour card();
Colour ink();
Colour dim();
Colour line();
Colour accent();
Colour well();
Colour steel();
Colour good();
Colour danger();
Colour onAccent();
Colour shadow();

} // namespace orvan::Ink
