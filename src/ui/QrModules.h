#pragma once
// A QR code's module grid for a text, for the codes the program draws itself rather than
// receiving as a picture from the bridge. The grid goes to the text view as half blocks and to
// a window as a pixelated picture.

#include "ui/HalfBlocks.h"

#include <optional>
#include <string_view>

namespace orvan::ui {

// Medium error correction, the smallest version that holds the text; nothing when none does.
std::optional<Modules> qrModules(std::string_view text);

} // namespace orvan::ui
