#include "appearance/Ink.h"

#include "appearance/ThemeStore.h"

namespace orvan::Ink {

namespace {
const InkSet& present() { return ThemeStore::shared().ink(); }
} // namespace

Colour bg() { return present().bg; }
Colour card() { return present().card; }
Colour ink() { return present().ink; }
Colour dim() { return present().dim; }
Colour line() { return present().line; }
Colour accent() { return present().accent; }
Colour well() { return present().well; }
Colour steel() { return present().steel; }
Colour good() { return present().good; }
Colour danger() { return present().danger; }
Colour onAccent() { return present().onAccent; }
Colour shadow() { return present().shadow; }

} // namespace orvan::Ink
