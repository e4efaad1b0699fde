#include "ui/HalfBlocks.h"

#include <algorithm>
#include <numeric>

namespace orvan::ui {

namespace {
constexpr int maxModules = 256;
} // namespace

std::optional<Modules> modulesOf(const DarkPixels& pixels) {
    if (pixels.width <= 0 || pixels.height <= 0 ||
        pixels.dark.size() != static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height))
        return std::nullopt;
    int left = pixels.width, right = -1, top = pixels.height, bottom = -1;
    for (int y = 0; y < pixels.height; ++y)
        for (int x = 0; x < pixels.width; ++x)
            if (pixels.at(x, y)) {
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
    if (right < 0) return std::nullopt;

    // Every run of one colour inside the dark bounds spans whole modules, so the module size is
    // the greatest common divisor of the run lengths across and down.
    int scale = 0;
    for (int y = top; y <= bottom; ++y) {
        int run = 1;
        for (int x = left + 1; x <= right + 1; ++x) {
            if (x <= right && pixels.at(x, y) == pixels.at(x - 1, y)) {
                ++run;
                continue;
            }
            scale = std::gcd(scale, run);
            run = 1;
        }
    }
    for (int x = left; x <= right; ++x) {
        int run = 1;
        for (int y = top + 1; y <= bottom + 1; ++y) {
            if (y <= bottom && pixels.at(x, y) == pixels.at(x, y - 1)) {
                ++run;
                continue;
            }
            scale = std::gcd(scale, run);
            run = 1;
        }
    }
    const int spanX = right - left + 1, spanY = bottom - top + 1;
    if (scale <= 0 || spanX % scale != 0 || spanY % scale != 0) return std::nullopt;
    Modules modules;
    modules.columns = spanX / scale;
    modules.rows = spanY / scale;
    if (modules.columns > maxModules || modules.rows > maxModules) return std::nullopt;
    modules.dark.resize(static_cast<std::size_t>(modules.columns) * static_cast<std::size_t>(modules.rows));
    for (int row = 0; row < modules.rows; ++row)
        for (int column = 0; column < modules.columns; ++column)
            modules.dark[static_cast<std::size_t>(row) * static_cast<std::size_t>(modules.columns) +
                         static_cast<std::size_t>(column)] = pixels.at(left + column * scale, top + row * scale);
    return modules;
}

std::vector<std::string> halfBlocks(const Modules& modules, int quiet, bool invert) {
    const int columns = modules.columns + 2 * quiet;
    const int rows = modules.rows + 2 * quiet;
    auto dark = [&](int x, int y) {
        const int mx = x - quiet, my = y - quiet;
        const bool inside = mx >= 0 && my >= 0 && mx < modules.columns && my < modules.rows;
        return (inside && modules.at(mx, my)) != invert;
    };
    std::vector<std::string> lines;
    for (int y = 0; y < rows; y += 2) {
        std::string line;
        for (int x = 0; x < columns; ++x) {
            const bool upper = dark(x, y);
            // An odd count of rows leaves the last line's lower half as quiet zone.
            const bool lower = y + 1 < rows ? dark(x, y + 1) : invert;
            line += upper && lower ? "\u2588" : upper ? "\u2580" : lower ? "\u2584" : " ";
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

} // namespace orvan::ui
