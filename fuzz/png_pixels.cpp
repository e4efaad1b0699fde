// Any bytes as a PNG, then as a code to draw: no crash, and whatever is read keeps its shape.
#include "ui/HalfBlocks.h"
#include "ui/PngPixels.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace orvan::ui;
    const auto pixels = readPngDarkness(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!pixels) return 0;
    if (pixels->width <= 0 || pixels->height <= 0 || pixels->width > maxPngSide || pixels->height > maxPngSide ||
        pixels->dark.size() != static_cast<std::size_t>(pixels->width) * static_cast<std::size_t>(pixels->height))
        std::abort();
    const auto modules = modulesOf(*pixels);
    if (!modules) return 0;
    const auto lines = halfBlocks(*modules, quietModules, false);
    if (lines.size() != static_cast<std::size_t>((modules->rows + 2 * quietModules + 1) / 2)) std::abort();
    return 0;
}
